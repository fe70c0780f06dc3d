#include "ProgramDriver.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>
#include <unistd.h>

// What other modules of the editor may link against: the marker of the module, and every operation and static that the
// public headers declare. The list comes from the headers, so that nothing can be forgotten.

namespace
{
	namespace fs = std::filesystem;

	const fs::path SourceFolder = fs::path(VELMORA_SOURCE_DIR) / "Source/VelmoraUI/Public";

	/** Lines that a command prints. */
	std::vector<std::string> RunForLines(const std::string& Command)
	{
		std::vector<std::string> Lines;
		FILE* const Pipe = popen(Command.c_str(), "r");
		for (char Line[8192]; Pipe && fgets(Line, sizeof(Line), Pipe);)
		{
			Lines.emplace_back(Line, strcspn(Line, "\n"));
		}
		if (Pipe)
		{
			pclose(Pipe);
		}
		return Lines;
	}

	/** "FClass::Operation(", "FClass::Static" and "Free(": what is declared for export and not defined in the header itself. */
	std::set<std::string> ListDeclared()
	{
		std::string Headers;
		for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(SourceFolder))
		{
			Headers += Entry.path().extension() == ".h" ? ReadFile(Entry.path()) : std::string();
		}
		std::set<std::string> Exported;
		const std::regex Mark(R"((?:class|struct) VELMORAUI_API (\w+)|VELMORAUI_API [^;{}]*?(\w+\())");
		for (std::sregex_iterator Match(Headers.begin(), Headers.end(), Mark), End; Match != End; ++Match)
		{
			Exported.insert((*Match)[1].str() + (*Match)[2].str());
		}
		std::set<std::string> Names;
		for (const std::string& Line :
			RunForLines("ctags -x --_xformat='%N %K %{C++.properties}, %{scope}' --language-force=C++ --kinds-C++=pm "
						"--fields-C++=+'{properties}' -I VELMORAUI_API -D 'SLATE_BEGIN_ARGS(x)=void Skip()' -D 'SLATE_END_ARGS()=;' -R '" +
				SourceFolder.native() + "'"))
		{
			std::istringstream Fields(Line);
			std::string Name, Kind, Properties, Scope;
			Fields >> Name >> Kind >> Properties >> Scope;
			const std::string Class = Scope.substr(Scope.rfind(':') + 1);
			// "SLATE_ATTRIBUTE" is a macro and "MAX_DEPTH" a constant of the compiler: neither has a symbol.
			const std::string Begin = Name.substr(0, Name.find('_'));
			if (Begin.size() > 1 && Begin.size() < Name.size() && std::all_of(Begin.begin(), Begin.end(), isupper))
			{
				continue;
			}
			const bool bHasSymbol = Kind == "prototype"
				? !Contains(Properties, "default") && !Contains(Properties, "delete") && !Contains(Properties, "pure") && Name != "Skip"
				: Contains(Properties, "static");
			Name += Kind == "prototype" ? "(" : "";
			if (bHasSymbol && (Exported.count(Class) || Exported.count(Name)))
			{
				Names.insert(Exported.count(Class) ? Class + "::" + Name : Name);
			}
		}
		return Names;
	}

	/** Demangled names of the module's dynamic symbols. */
	std::vector<std::string> ListExported()
	{
		const std::string Library = fs::path(VELMORA_PROGRAM).parent_path() / "libVelmoraUI.so";
		std::vector<std::string> Names;
		for (const std::string& Line : RunForLines("nm -D -C --defined-only '" + Library + "'"))
		{
			if (Line.size() > 19)
			{
				Names.push_back(Line.substr(19));
			}
		}
		return Names;
	}

	/** Whether a demangled symbol is that name, in whatever namespace. */
	bool Names(const std::string& Symbol, const std::string& Name)
	{
		const size_t At = Symbol.find(Name);
		const bool bStarts = At == 0 || (At != std::string::npos && At >= 2 && Symbol.compare(At - 2, 2, "::") == 0) ||
			(At != std::string::npos && Symbol[At - 1] == ' ');
		return bStarts && (Name.back() == '(' || At + Name.size() == Symbol.size() || Symbol[At + Name.size()] == '[');
	}
}

TEST(PluginFace, EveryDeclaredOperationIsExported)
{
	const std::set<std::string> Declared = ListDeclared();
	// The reader of the headers must see the likes of these, or the test proves nothing.
	for (const char* Known : { "SChatWindow::Construct(", "SChatWindow::OnSendButtonClicked(", "FChatViewModel::~FChatViewModel(",
			 "FVelmoraUIStyles::FromHexSRGB(", "SChatWindow::ColorTransitionDuration", "TokenizeCode(" })
	{
		EXPECT_EQ(Declared.count(Known), 1u) << Known;
	}
	EXPECT_GT(Declared.size(), 300u);

	const std::vector<std::string> Exported = ListExported();
	ASSERT_GT(Exported.size(), 300u);
	std::string Missing;
	for (const std::string& Name : Declared)
	{
		if (std::none_of(Exported.begin(), Exported.end(), [&Name](const std::string& Symbol) { return Names(Symbol, Name); }))
		{
			Missing += Name + "\n";
		}
	}
	EXPECT_EQ(Missing, "");
}

TEST(PluginFace, TheModuleCarriesItsMarker)
{
	const std::vector<std::string> Exported = ListExported();
	for (const char* Marker : { "ThisIsAnUnrealEngineModule", "InitializeModule" })
	{
		EXPECT_EQ(std::count(Exported.begin(), Exported.end(), Marker), 1) << Marker;
	}
}

TEST(PluginFace, DescriptorAndBuildFileNameRealModules)
{
	const std::string Descriptor = ReadFile(fs::path(VELMORA_SOURCE_DIR) / "Velmora.uplugin");
	for (const char* Part : { "\"FileVersion\": 3", "\"Name\": \"VelmoraUI\"", "\"Type\": \"Editor\"", "\"EngineVersion\": \"5.7.0\"" })
	{
		EXPECT_TRUE(Contains(Descriptor, Part)) << Part;
	}
	// The engine's and the companions' own names. A module that the engine does not have would stop its build.
	const std::set<std::string> Known = { "ApplicationCore", "Core", "CoreUObject", "DesktopPlatform", "Engine", "InputCore", "Json",
		"LevelEditor", "Projects", "Settings", "Slate", "SlateCore", "UnrealEd", "VelmoraAutoDownloadFramework", "VelmoraCore",
		"VelmoraToolkit", "WorkspaceMenuStructure" };
	std::istringstream Rules(ReadFile(SourceFolder.parent_path() / "VelmoraUI.Build.cs"));
	int Count = 0;
	for (std::string Line; std::getline(Rules, Line);)
	{
		const size_t Start = Line.find('"');
		if (Start != std::string::npos && Line.back() == ',')
		{
			const std::string Name = Line.substr(Start + 1, Line.rfind('"') - Start - 1);
			EXPECT_EQ(Known.count(Name), 1u) << Name;
			++Count;
		}
	}
	EXPECT_GE(Count, 12);
}

TEST(PluginFace, TheCompanionsStartBeforeTheModule)
{
	const std::string Descriptor = ReadFile(fs::path(VELMORA_SOURCE_DIR) / "Velmora.uplugin");
	const size_t Module = Descriptor.find("\"Name\": \"VelmoraUI\"");
	for (const char* Name : { "VelmoraToolkit", "VelmoraAutoDownloadFramework", "VelmoraCore" })
	{
		const size_t Start = Descriptor.find("\"Name\": \"" + std::string(Name) + "\"");
		ASSERT_LT(Start, Module) << Name;
		const std::string Entry = Descriptor.substr(Start, Descriptor.find('}', Start) - Start);
		EXPECT_TRUE(Contains(Entry, "\"Type\": \"Editor\"") && Contains(Entry, "\"LoadingPhase\": \"PreDefault\"")) << Entry;
		EXPECT_TRUE(fs::exists(fs::path(VELMORA_SOURCE_DIR) / "Host/Companions" / Name / "Public")) << Name;
	}
}

TEST(PluginFace, ThePackageHoldsWhatTheEditorReads)
{
	const fs::path Root = VELMORA_SOURCE_DIR;
	const fs::path Archive = fs::temp_directory_path() / ("velmora-plugin-" + std::to_string(getpid()) + ".zip");
	ASSERT_EQ(std::system(("'" + (Root / "Scripts/make-plugin").native() + "' '" + Archive.native() + "' >/dev/null").c_str()), 0);
	const std::vector<std::string> Listed = RunForLines("cmake -E tar tf '" + Archive.native() + "'");
	const std::set<std::string> Packed(Listed.begin(), Listed.end());
	fs::remove(Archive);

	// Every file of the module, the description, and each icon in the form that is drawn.
	std::set<std::string> Expected = { "Velmora/Velmora.uplugin" };
	for (const char* Folder : { "Source", "Resources" })
	{
		for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(Root / Folder))
		{
			if (Entry.is_regular_file() && Entry.path().extension() != ".svg")
			{
				Expected.insert("Velmora/" + fs::relative(Entry.path(), Root).native());
			}
		}
	}
	EXPECT_EQ(Packed, Expected);
	for (const char* File : { "Velmora/Source/VelmoraUI/VelmoraUI.Build.cs", "Velmora/Resources/Icons/App/Icon40.png" })
	{
		EXPECT_EQ(Packed.count(File), 1u) << File;
	}
	EXPECT_EQ(Packed.count("Velmora/Source/VelmoraUI/CMakeLists.txt"), 0u);
}
