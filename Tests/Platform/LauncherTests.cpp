#include "HAL/PlatformProcess.h"
#include "Host/HostServices.h"
#include "Host/HostTasks.h"
#include "Host/Platform.h"
#include "Open/EditorLine.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <chrono>
#include <sys/stat.h>
#include <thread>

class Launcher : public testing::Test
{
protected:
	virtual void SetUp() override
	{
		FHostTasks::SetGameThread();
		FHostPlatform::ClearRecordedTargets();
		FHostPlatform::SetProblemHandler([this](const FString& Sentence) { Problems.Add(Sentence); });
		FHostServices::SetMessageDialogHook(
			[this](const FHostMessageDialog& Dialog)
			{
				Asked.Add(Dialog.Message.ToString());
				EXPECT_EQ(Dialog.DefaultAnswer, EAppReturnType::No);
				return Answer;
			});
	}
	virtual void TearDown() override
	{
		FHostServices::SetLaunchHook(nullptr);
		FHostServices::SetMessageDialogHook(nullptr);
		FHostPlatform::SetProblemHandler(nullptr);
	}
	static std::string Targets() { return Utf8(FHostPlatform::GetRecordedTargets()); }

	TArray<FString> Problems;
	TArray<FString> Asked;
	EAppReturnType::Type Answer = EAppReturnType::No;
	FString Error;
};

TEST_F(Launcher, HarmlessAddressesAreRecordedAtOnce)
{
	FHostPlatform::InstallLauncher(true);
	FPlatformProcess::LaunchURL(TEXT("https://example.org/"), nullptr, &Error);
	EXPECT_EQ(Utf8(Error), "");
	EXPECT_EQ(Targets(), "\"https://example.org/\"");
	EXPECT_EQ(Asked.Num(), 0);
}

TEST_F(Launcher, OtherAddressesAreAskedForWithTheWholeTarget)
{
	FHostPlatform::InstallLauncher(true);
	FPlatformProcess::LaunchURL(TEXT("tel:12345?x=y"), nullptr, &Error);
	ASSERT_EQ(Asked.Num(), 1);
	EXPECT_TRUE(Asked[0].Contains(TEXT("tel:12345?x=y")));
	EXPECT_EQ(Targets(), "") << "No means no";
	EXPECT_NE(Utf8(Error), "");
	Answer = EAppReturnType::Cancel;
	FPlatformProcess::LaunchURL(TEXT("tel:1"), nullptr, &Error);
	EXPECT_EQ(Targets(), "");
	Answer = EAppReturnType::Yes;
	FPlatformProcess::LaunchURL(TEXT("tel:1"), nullptr, &Error);
	EXPECT_EQ(Targets(), "\"tel:1\"");
}

TEST_F(Launcher, OptionsAreRefusedInWords)
{
	FHostPlatform::InstallLauncher(true);
	Answer = EAppReturnType::Yes;
	FPlatformProcess::LaunchURL(TEXT("--manual"), nullptr, &Error);
	EXPECT_TRUE(Error.Contains(TEXT("hyphen")));
	ASSERT_EQ(Problems.Num(), 1);
	EXPECT_EQ(Utf8(Problems[0]), Utf8(Error));
	EXPECT_EQ(Targets(), "");
	EXPECT_EQ(Asked.Num(), 0);
}

TEST_F(Launcher, ExecutableFilesAreAskedFor)
{
	FHostPlatform::InstallLauncher(true);
	const FTempFolder Folder;
	Folder.Write("plain.txt", "x");
	Folder.Write("tool", "x");
	chmod(Folder.AtBytes("tool").c_str(), 0755);
	EXPECT_TRUE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Folder.At(TEXT("plain.txt"))));
	EXPECT_EQ(Asked.Num(), 0);
	EXPECT_FALSE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Folder.At(TEXT("tool"))));
	EXPECT_EQ(Asked.Num(), 1);
	EXPECT_FALSE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Folder.At(TEXT("missing.txt"))));
	EXPECT_EQ(Targets(), "\"" + Folder.AtBytes("plain.txt") + "\"");
}

TEST_F(Launcher, QuestionsAreNotAskedFromOtherThreads)
{
	FHostPlatform::InstallLauncher(true);
	Answer = EAppReturnType::Yes;
	std::thread([] { FPlatformProcess::LaunchURL(TEXT("tel:1"), nullptr, nullptr); }).join();
	EXPECT_EQ(Asked.Num(), 0);
	EXPECT_EQ(Targets(), "");
}

namespace
{
	/** Puts a script in place of the desktop's opener. */
	class FFakeOpener
	{
	public:
		explicit FFakeOpener(int ExitCode)
		{
			const std::string Log = Folder.AtBytes("log");
			Folder.Write("xdg-open",
				"#!/bin/sh\nfor a in \"$@\"; do echo \"<$a>\" >> '" + Log + ".part'; done\nmv '" + Log + ".part' '" + Log + "'\nexit " +
					std::to_string(ExitCode) + "\n");
			chmod(Folder.AtBytes("xdg-open").c_str(), 0755);
			const char* const Path = std::getenv("PATH");
			OldPath = Path ? Path : "";
			setenv("PATH", (Folder.AtBytes() + ":" + OldPath).c_str(), 1);
		}
		~FFakeOpener() { setenv("PATH", OldPath.c_str(), 1); }
		std::string WaitForArguments() const
		{
			for (int Try = 0; Try < 500; ++Try)
			{
				if (Folder.Read("log") != "<missing>")
				{
					break;
				}
				std::this_thread::sleep_for(std::chrono::milliseconds(10));
			}
			return Folder.Read("log");
		}
		FTempFolder Folder;

	private:
		std::string OldPath;
	};
}

TEST_F(Launcher, TheOpenerGetsOneArgumentAndNoShell)
{
	FHostPlatform::InstallLauncher(false);
	const FFakeOpener Opener(0);
	FPlatformProcess::LaunchURL(TEXT("https://example.org/?a=$(touch x)&b=`id`;'\" \u00E4 c"), nullptr, &Error);
	EXPECT_EQ(Utf8(Error), "");
	EXPECT_EQ(Opener.WaitForArguments(), "<https://example.org/?a=$(touch x)&b=`id`;'\" \u00E4 c>\n");
}

namespace
{
	/** VISUAL and EDITOR for the time of a test; null takes one away. */
	class FEditorVariables
	{
	public:
		FEditorVariables(const char* Visual, const char* Editor)
		{
			Set("VISUAL", Visual);
			Set("EDITOR", Editor);
		}
		~FEditorVariables()
		{
			Set("VISUAL", nullptr);
			Set("EDITOR", nullptr);
		}
		static void Set(const char* Name, const char* Value) { Value ? setenv(Name, Value, 1) : unsetenv(Name); }
	};

	bool OpenSource(const FString& Path, FString& OutError)
	{
		return FHostServices::Launch(FHostLaunchRequest{ FHostLaunchRequest::EKind::Source, Path, FString() }, OutError);
	}
}

TEST_F(Launcher, SourcesOpenInTheEditorOfTheUser)
{
	FHostPlatform::InstallLauncher(false);
	const FTempFolder Project;
	Project.Write("tool $(x).py", "");
	const std::string File = "<" + Project.AtBytes("tool $(x).py") + ">\n";
	// The script that stands in for the opener writes its arguments down under any name.
	const std::tuple<const char*, const char*, std::string> Cases[] = {
		{ "xdg-open --wait", "missing-editor", "<--wait>\n" + File },
		{ nullptr, "xdg-open -a 'b c' \"d;e\" f\\ g $HOME", "<-a>\n<b c>\n<d;e>\n<f g>\n<$HOME>\n" + File },
		{ "  ", "xdg-open", File },
	};
	for (const auto& [Visual, Editor, Arguments] : Cases)
	{
		const FEditorVariables Variables(Visual, Editor);
		const FFakeOpener Opener(0);
		EXPECT_TRUE(OpenSource(Project.At(TEXT("tool $(x).py")), Error)) << Utf8(Error);
		EXPECT_EQ(Opener.WaitForArguments(), Arguments);
	}
	EXPECT_EQ(Asked.Num(), 0) << "an editor runs nothing";
	const FEditorVariables NoVariables(nullptr, nullptr);
	const FFakeOpener Opener(0);
	EXPECT_FALSE(OpenSource(Project.At(TEXT("tool $(x).py")), Error));
	EXPECT_EQ(Asked.Num(), 1) << "the desktop's program might";
	Answer = EAppReturnType::Yes;
	EXPECT_TRUE(OpenSource(Project.At(TEXT("tool $(x).py")), Error));
	EXPECT_EQ(Opener.WaitForArguments(), File);
}

TEST_F(Launcher, ALinkWithALineOpensTheEditorThere)
{
	FHostPlatform::InstallLauncher(false);
	const FTempFolder Project;
	Project.Write("a b.cpp", "");
	const std::string File = Project.AtBytes("a b.cpp");
	const FString Link = FString(TEXT("file:")) + Project.At(TEXT("a b.cpp")) + TEXT("#L67");
	{
		// Named as an editor that knows a way to say it.
		const FFakeOpener Opener(0);
		std::filesystem::rename(Opener.Folder.AtBytes("xdg-open"), Opener.Folder.AtBytes("codium"));
		const FEditorVariables Variables("codium --wait", nullptr);
		FPlatformProcess::LaunchURL(*Link, nullptr, &Error);
		EXPECT_EQ(Opener.WaitForArguments(), "<--wait>\n<--goto>\n<" + File + ":67>\n");
	}
	const FEditorVariables NoVariables(nullptr, nullptr);
	const FFakeOpener Opener(0);
	FPlatformProcess::LaunchURL(*Link, nullptr, &Error);
	EXPECT_EQ(Opener.WaitForArguments(), "<" + File + ">\n") << "the desktop's program knows of no lines";
	EXPECT_EQ(Utf8(Error), "");
	FPlatformProcess::LaunchURL(TEXT("file:/nowhere/at/all.cpp#L1"), nullptr, &Error);
	EXPECT_TRUE(Utf8(Error).find("does not exist") != std::string::npos) << Utf8(Error);
}

TEST_F(Launcher, OtherTextsGoToAnEditorThatHasAWindow)
{
	FHostPlatform::InstallLauncher(false);
	const FTempFolder Project;
	Project.Write("notes.txt", "x");
	Project.Write("picture.png", std::string("\x89PNG\0", 5));
	Project.Write("sheet.csv", "a,b");
	const std::tuple<const char*, const char*, const char*, bool> Rows[] = {
		{ "gedit -x", nullptr, "notes.txt", true },
		{ "gedit -x", nullptr, "picture.png", false },
		{ "gedit -x", nullptr, "sheet.csv", false },
		{ "vim -x", nullptr, "notes.txt", false },
		{ nullptr, "gedit -x", "notes.txt", false },
		{ "gedit \"x", nullptr, "notes.txt", false },
	};
	for (const auto& [Visual, Editor, File, bIsEdited] : Rows)
	{
		const FEditorVariables Variables(Visual, Editor);
		const FFakeOpener Opener(0);
		for (const char* const Name : { "gedit", "vim" })
		{
			std::filesystem::copy_file(Opener.Folder.AtBytes("xdg-open"), Opener.Folder.AtBytes(Name));
		}
		EXPECT_TRUE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Project.At(UTF8_TO_TCHAR(File))));
		EXPECT_EQ(Opener.WaitForArguments(), (bIsEdited ? "<-x>\n<" : "<") + Project.AtBytes(File) + ">\n") << File;
	}
	EXPECT_EQ(Asked.Num(), 0);
}

TEST_F(Launcher, WithoutEditorAndOpenerTheProgramShowsTexts)
{
	const FTempFolder Project;
	Project.Write("run.py", "print()");
	Project.Write("tool.bin",
		std::string("\x7F"
					"ELF\0",
			5));
	std::vector<std::string> Shown;
	FHostPlatform::SetSourceViewer([&Shown](const FString& Path, int32 Line) { Shown.push_back(Utf8(Path) + ":" + std::to_string(Line)); });
	const std::string OldPath = std::getenv("PATH");
	setenv("PATH", "/nowhere", 1);
	{
		FHostPlatform::InstallLauncher(false);
		const FEditorVariables Variables(nullptr, nullptr);
		FPlatformProcess::LaunchURL(*(FString(TEXT("file:")) + Project.At(TEXT("run.py")) + TEXT("#L7")), nullptr, &Error);
		EXPECT_TRUE(OpenSource(Project.At(TEXT("run.py")), Error));
		EXPECT_TRUE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Project.At(TEXT("run.py"))));
		EXPECT_EQ(Asked.Num(), 0) << "nothing is run";
		// What is no text is for nobody here.
		EXPECT_FALSE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Project.At(TEXT("tool.bin"))));
		EXPECT_FALSE(FPlatformProcess::LaunchFileInDefaultExternalApplication(*Project.At(TEXT("gone.py"))));
	}
	{
		// Who names an editor wants that one, and is told why it does not come.
		const FEditorVariables Variables("no-such-editor", nullptr);
		EXPECT_FALSE(OpenSource(Project.At(TEXT("run.py")), Error));
	}
	{
		FHostPlatform::InstallLauncher(true);
		const FEditorVariables Variables(nullptr, nullptr);
		Answer = EAppReturnType::Yes;
		EXPECT_TRUE(OpenSource(Project.At(TEXT("run.py")), Error)) << "a run without a user shows nothing";
	}
	setenv("PATH", OldPath.c_str(), 1);
	FHostPlatform::SetSourceViewer(nullptr);
	const std::string File = Project.AtBytes("run.py");
	EXPECT_EQ(Shown, (std::vector<std::string>{ File + ":7", File + ":0", File + ":0" }));
}

TEST(EditorLine, KnowsWhichEditorsHaveAWindow)
{
	const std::pair<std::vector<std::string>, bool> Rows[] = { { { "/usr/bin/gvim" }, true }, { { "vim" }, false },
		{ { "code", "-n" }, true }, { { "emacs" }, true }, { { "emacs", "-nw" }, false }, { { "my-editor" }, false }, { {}, false } };
	for (const auto& [Command, bHasWindow] : Rows)
	{
		EXPECT_EQ(EditorLine::HasWindow(Command), bHasWindow) << testing::PrintToString(Command);
	}
}

TEST(EditorLine, IsSaidAsEachEditorWantsIt)
{
	const std::tuple<std::vector<std::string>, int, std::vector<std::string>> Rows[] = {
		{ { "/usr/bin/vim", "-R" }, 7, { "/usr/bin/vim", "-R", "+7", "/p/a.cpp" } },
		{ { "code", "-n" }, 7, { "code", "-n", "--goto", "/p/a.cpp:7" } },
		{ { "subl" }, 7, { "subl", "/p/a.cpp:7" } },
		{ { "kate" }, 7, { "kate", "--line=7", "/p/a.cpp" } },
		{ { "scite" }, 7, { "scite", "-open:/p/a.cpp", "-goto:7" } },
		{ { "vim" }, 0, { "vim", "/p/a.cpp" } },
		{ { "my-editor" }, 7, { "my-editor", "/p/a.cpp" } },
		{ { "notvim" }, 7, { "notvim", "/p/a.cpp" } },
	};
	for (const auto& [Input, Line, Whole] : Rows)
	{
		std::vector<std::string> Command = Input;
		EditorLine::Append(Command, "/p/a.cpp", Line);
		EXPECT_EQ(Command, Whole);
	}
}

TEST_F(Launcher, AnEditorThatCannotStartIsToldInWords)
{
	FHostPlatform::InstallLauncher(false);
	const FTempFolder Project;
	Project.Write("a.txt", "");
	const std::tuple<const char*, const TCHAR*, const TCHAR*> Cases[] = {
		{ "no-such-editor -x", TEXT("a.txt"), TEXT("\"no-such-editor\", named by EDITOR") },
		{ "edit \"x", TEXT("a.txt"), TEXT("in EDITOR a quotation mark is not closed") },
		{ "xdg-open", TEXT("b.txt"), TEXT("does not exist") },
	};
	for (const auto& [Editor, File, Words] : Cases)
	{
		const FEditorVariables Variables(nullptr, Editor);
		Problems.Reset();
		EXPECT_FALSE(OpenSource(Project.At(File), Error));
		EXPECT_TRUE(Error.Contains(Words)) << Utf8(Error);
		EXPECT_EQ(Problems.Num(), 1);
	}
}

TEST_F(Launcher, AFailedOpenerIsReported)
{
	FHostPlatform::InstallLauncher(false);
	const FFakeOpener Opener(3);
	FPlatformProcess::LaunchURL(TEXT("https://example.org/"), nullptr, &Error);
	Opener.WaitForArguments();
	for (int Try = 0; Try < 500 && Problems.Num() == 0; ++Try)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(10));
		FHostTasks::RunGameThreadTasks();
	}
	ASSERT_EQ(Problems.Num(), 1);
	EXPECT_TRUE(Problems[0].Contains(TEXT("no program is set up")));
}

TEST_F(Launcher, AMissingOpenerNamesItsPackage)
{
	FHostPlatform::InstallLauncher(false);
	const std::string OldPath = std::getenv("PATH");
	setenv("PATH", "/nowhere", 1);
	FPlatformProcess::LaunchURL(TEXT("https://example.org/"), nullptr, &Error);
	setenv("PATH", OldPath.c_str(), 1);
	EXPECT_TRUE(Error.Contains(TEXT("xdg-utils")));
	EXPECT_EQ(Problems.Num(), 1);
}
