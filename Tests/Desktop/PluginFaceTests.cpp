#include "ProgramDriver.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <unistd.h>

// What other modules of the editor may link against: the marker of the module, and every operation and static that the
// public headers declare. The list comes from the headers, so that nothing can be forgotten.

namespace
{
	namespace fs = std::filesystem;

	const fs::path SourceFolder = fs::path(VELMORA_SOURCE_DIR) / "Source/VelmoraUI/Public";

	/** Without comments, lines of the preprocessor and the contents of literals. */
	std::string Bare(const std::string& Text)
	{
		std::string Out;
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			const bool bAtLineStart = Out.empty() || Out.back() == '\n';
			if (Text.compare(Index, 2, "//") == 0 || (bAtLineStart && Text[Index] == '#'))
			{
				while (Index < Text.size() && (Text[Index] != '\n' || Text[Index - 1] == '\\'))
				{
					++Index;
				}
				Out += '\n';
			}
			else if (Text.compare(Index, 2, "/*") == 0)
			{
				Index = Text.find("*/", Index) + 1;
			}
			else if (Text[Index] == '"')
			{
				do
				{
					Index += Text[Index] == '\\' ? 2 : 1;
				} while (Text[Index] != '"');
				Out += "\"\"";
			}
			else if (!(bAtLineStart && (Text[Index] == '\t' || Text[Index] == ' ')))
			{
				Out += Text[Index];
			}
		}
		return Out;
	}

	bool IsWord(char Letter)
	{
		return isalnum(static_cast<unsigned char>(Letter)) || Letter == '_' || Letter == '~';
	}

	bool HasWord(const std::string& Text, const std::string& Word)
	{
		for (size_t At = Text.find(Word); At != std::string::npos; At = Text.find(Word, At + 1))
		{
			if ((At == 0 || !IsWord(Text[At - 1])) && (At + Word.size() == Text.size() || !IsWord(Text[At + Word.size()])))
			{
				return true;
			}
		}
		return false;
	}

	/** The word in front of Position, blanks skipped. */
	std::string WordBefore(const std::string& Text, size_t Position)
	{
		while (Position > 0 && isspace(static_cast<unsigned char>(Text[Position - 1])))
		{
			--Position;
		}
		size_t Start = Position;
		while (Start > 0 && IsWord(Text[Start - 1]))
		{
			--Start;
		}
		return Text.substr(Start, Position - Start);
	}

	/** What a declaration names, with "(" behind an operation: empty when the library has no symbol for it. */
	std::string NameOf(const std::string& Declaration, bool bInClass)
	{
		for (const char* Word :
			{ "using", "friend", "typedef", "template", "enum", "static_assert", "default", "delete", "constexpr", "operator" })
		{
			if (HasWord(Declaration, Word))
			{
				return "";
			}
		}
		if (Declaration.find("= 0") != std::string::npos || Declaration.find("SLATE_") != std::string::npos ||
			Declaration.find("DECLARE_") != std::string::npos)
		{
			return "";
		}
		int Angles = 0;
		for (size_t Index = 0; Index < Declaration.size(); ++Index)
		{
			Angles += Declaration[Index] == '<' ? 1 : Declaration[Index] == '>' ? -1 : 0;
			if (Declaration[Index] == '=' && Angles == 0)
			{
				return ""; // A member with its start value.
			}
			if (Declaration[Index] == '(' && Angles == 0)
			{
				const std::string Name = WordBefore(Declaration, Index);
				return Name.empty() ? "" : Name + '(';
			}
		}
		if (bInClass && HasWord(Declaration, "static") && Declaration.find('=') == std::string::npos)
		{
			return WordBefore(Declaration, Declaration.size());
		}
		return "";
	}

	/** Behind the brace that closes the one at Open. */
	size_t SkipBraces(const std::string& Text, size_t Open)
	{
		int Depth = 0;
		for (size_t Index = Open; Index < Text.size(); ++Index)
		{
			Depth += Text[Index] == '{' ? 1 : Text[Index] == '}' ? -1 : 0;
			if (Depth == 0)
			{
				return Index + 1;
			}
		}
		return Text.size();
	}

	/** Collects "FClass::Operation(" and "Free(" of one scope. A body in the header needs no symbol. */
	void Collect(const std::string& Text, const std::string& Class, std::set<std::string>& OutNames)
	{
		std::string Statement;
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			const char Letter = Text[Index];
			if (Letter == ':' && Index > 0 && Text[Index + 1] != ':' && Text[Index - 1] != ':')
			{
				const std::string Word = WordBefore(Text, Index);
				if (Word == "public" || Word == "private" || Word == "protected")
				{
					Statement.clear();
					continue;
				}
			}
			if (Letter == '{')
			{
				const size_t End = SkipBraces(Text, Index);
				const std::string Body = Text.substr(Index + 1, End - Index - 2);
				const bool bIsType =
					(HasWord(Statement, "class") || HasWord(Statement, "struct")) && Statement.find('(') == std::string::npos;
				if (HasWord(Statement, "namespace"))
				{
					Collect(Body, "", OutNames);
				}
				else if (bIsType && Statement.find("VELMORAUI_API") != std::string::npos)
				{
					const std::string Head = Statement.substr(Statement.find("VELMORAUI_API") + 13);
					const size_t Start = Head.find_first_not_of(" \n");
					size_t Stop = Start;
					while (Stop < Head.size() && IsWord(Head[Stop]))
					{
						++Stop;
					}
					Collect(Body, Head.substr(Start, Stop - Start), OutNames);
				}
				Statement.clear();
				Index = End - 1;
				// A type ends with a semicolon, a body in the header does not.
				continue;
			}
			if (Letter == ';')
			{
				const bool bCounts = !Class.empty() || Statement.find("VELMORAUI_API") != std::string::npos;
				const std::string Name = bCounts ? NameOf(Statement, !Class.empty()) : "";
				if (!Name.empty())
				{
					OutNames.insert(Class.empty() ? Name : Class + "::" + Name);
				}
				Statement.clear();
				continue;
			}
			Statement += Letter;
		}
	}

	std::set<std::string> ListDeclared()
	{
		std::set<std::string> Names;
		for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(SourceFolder))
		{
			if (Entry.path().extension() == ".h")
			{
				std::string Text = Bare(ReadFile(Entry.path()));
				// The macro's arguments end without a semicolon and stand in nobody's way otherwise.
				for (size_t At = Text.find("SLATE_BEGIN_ARGS"); At != std::string::npos; At = Text.find("SLATE_BEGIN_ARGS", At))
				{
					const size_t End = Text.find("SLATE_END_ARGS()", At);
					Text.erase(At, End + 16 - At);
				}
				Collect(Text, "", Names);
			}
		}
		return Names;
	}

	/** Demangled names of the module's dynamic symbols. */
	std::vector<std::string> ListExported()
	{
		const std::string Library = fs::path(VELMORA_PROGRAM).parent_path() / "libVelmoraUI.so";
		std::vector<std::string> Names;
		FILE* Pipe = popen(("nm -D -C --defined-only '" + Library + "'").c_str(), "r");
		char Line[8192];
		while (Pipe && fgets(Line, sizeof(Line), Pipe))
		{
			const std::string Text(Line);
			if (Text.size() > 19)
			{
				Names.push_back(Text.substr(19, Text.find('\n') - 19));
			}
		}
		if (Pipe)
		{
			pclose(Pipe);
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
	std::set<std::string> Packed;
	FILE* const Pipe = popen(("cmake -E tar tf '" + Archive.native() + "'").c_str(), "r");
	ASSERT_NE(Pipe, nullptr);
	for (char Line[1024]; fgets(Line, sizeof(Line), Pipe);)
	{
		Packed.insert(std::string(Line, strcspn(Line, "\n")));
	}
	pclose(Pipe);
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
