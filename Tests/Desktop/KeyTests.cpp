#include "Desktop/ProgramDriver.h"
#include "EditorFrameCommands.h"
#include "KeyBindings.h"
#include "SKeysPage.h"
#include "Support/Base/TempFolder.h"
#include "Support/UiDriver.h"

#include <filesystem>
#include <fstream>
#include <set>

namespace fs = std::filesystem;

TEST(KeyBindings, AreReadCheckedAndKept)
{
	const std::pair<const char*, bool> Texts[] = { { "Ctrl+F", true }, { "Ctrl+Alt+Shift+F3", true }, { "Escape", true }, { "", true },
		{ "Ctrl+", false }, { "Strg+F", false }, { "Ctrl+Nothing", false }, { "Ctrl", false } };
	for (const auto& [Text, bIsKey] : Texts)
	{
		FInputChord Chord;
		EXPECT_EQ(FKeyBindings::Parse(UTF8_TO_TCHAR(Text), Chord), bIsKey) << Text;
		EXPECT_EQ(Utf8(FKeyBindings::Print(Chord)), bIsKey ? Text : "") << Text;
	}
	// Menus have the sign that is printed on the key, the file has its name.
	const std::pair<const char*, const char*> Signs[] = { { "Ctrl+Equals", "Ctrl+=" }, { "Ctrl+Hyphen", "Ctrl+-" },
		{ "Ctrl+Zero", "Ctrl+0" }, { "Ctrl+Shift+F3", "Ctrl+Shift+F3" }, { "Ctrl+Add", "Ctrl+Num +" } };
	for (const auto& [Text, Sign] : Signs)
	{
		FInputChord Chord;
		ASSERT_TRUE(FKeyBindings::Parse(UTF8_TO_TCHAR(Text), Chord));
		EXPECT_EQ(Utf8(Chord.GetInputText()), Sign);
		EXPECT_EQ(Utf8(FKeyBindings::Print(Chord)), Text);
	}
	const std::pair<const char*, const char*> Checks[] = { { "Ctrl+J", "" }, { "F5", "" }, { "Escape", "" },
		{ "Ctrl+Enter", "sends the prompt" }, { "Ctrl+Left", "moves in texts" }, { "Shift+J", "types something" },
		{ "J", "types something" }, { "Alt+F", "for the menus" }, { "Ctrl+C", "copies text" },
		{ "Shift+Hyphen", "Shift+- types something" } };
	for (const auto& [Text, Expected] : Checks)
	{
		FInputChord Chord;
		ASSERT_TRUE(FKeyBindings::Parse(UTF8_TO_TCHAR(Text), Chord));
		const std::string Complaint = Utf8(FKeyBindings::CheckKey(Chord));
		EXPECT_EQ(Complaint.empty(), std::string(Expected).empty()) << Text << ": " << Complaint;
		EXPECT_TRUE(Contains(Complaint, Expected)) << Complaint;
	}

	const FTempFolder Folder;
	const std::string Path = Folder.AtBytes("Keys.txt");
	std::ofstream(Path) << "Find=Ctrl+J\nnonsense\nPause=Strg+P\nStop=\n";
	FKeyBindings::Load(UTF8_TO_TCHAR(Path.c_str()));
	const FInputChord Default(EKeys::F, false, true);
	EXPECT_EQ(Utf8(FKeyBindings::Print(FKeyBindings::Get(TEXT("Find"), Default))), "Ctrl+J");
	EXPECT_EQ(Utf8(FKeyBindings::Print(FKeyBindings::Get(TEXT("Pause"), Default))), "Ctrl+F") << "a line that names no key";
	EXPECT_EQ(Utf8(FKeyBindings::Print(FKeyBindings::Get(TEXT("Stop"), Default))), "") << "none was wanted";
	EXPECT_FALSE(FKeyBindings::Change(FName("Find"), FInputChord(EKeys::C, false, true)).IsEmpty());
	EXPECT_TRUE(FKeyBindings::Change(FName("Stop"), FInputChord(EKeys::F5)).IsEmpty());
	EXPECT_TRUE(FKeyBindings::Change(FName("Find"), Default).IsEmpty());
	EXPECT_EQ(ReadFile(Path), "Stop=F5\n") << "what is as by default needs no line";
	FKeyBindings::Load(FString());
}

TEST(FrameCommands, HaveWordsAndKeysOfTheirOwn)
{
	FKeyBindings::Load(FString());
	FEditorFrameCommands::Register();
	std::set<std::string> Keys;
	for (const TSharedRef<FUICommandInfo>& Command : FEditorFrameCommands::Get().GetBindingContext()->GetCommands())
	{
		const std::string Name = Utf8(Command->GetCommandName().ToString());
		EXPECT_FALSE(Command->GetLabel().IsEmpty() || Command->GetDescription().IsEmpty()) << Name;
		const std::string Key = Utf8(FKeyBindings::Print(Command->GetDefaultChord()));
		EXPECT_TRUE(Key.empty() || Keys.insert(Key).second) << Name << " has the key of another one: " << Key;
	}
	FEditorFrameCommands::Unregister();
}

namespace
{
	class FKeysPageTest : public FWidgetTest
	{
	protected:
		void SetUp() override
		{
			FWidgetTest::SetUp();
			FKeyBindings::Load(UTF8_TO_TCHAR(Folder.AtBytes("Keys.txt").c_str()));
			FEditorFrameCommands::Register();
			FKeyBindings::SetOnChanged(FSimpleDelegate::CreateLambda(
				[]
				{
					FEditorFrameCommands::Unregister();
					FEditorFrameCommands::Register();
				}));
			Show(SNew(SKeysPage));
			Resize(900, 3000);
			PumpFrame();
		}
		void TearDown() override
		{
			App().SetRootContent(SNullWidget::NullWidget);
			FKeyBindings::SetOnChanged(FSimpleDelegate());
			FKeyBindings::Load(FString());
			FEditorFrameCommands::Unregister();
			FWidgetTest::TearDown();
		}
		std::string KeyOf(const char* Command) { return Utf8(FindByTag((std::string("Key.") + Command).c_str())->GetDisplayedText()); }
		void Change(const char* Command, const char* Key)
		{
			Click(FindByTag((std::string("ChangeKey.") + Command).c_str()));
			PressKey(Key);
			PumpFrame();
		}

		FTempFolder Folder;
	};
}

TEST_F(FKeysPageTest, AKeyIsChangedRefusedAndGivenBack)
{
	EXPECT_EQ(KeyOf("Find"), "Ctrl+F");
	EXPECT_EQ(KeyOf("Permissions"), "none");
	Change("Find", "CTRL+J");
	EXPECT_EQ(KeyOf("Find"), "Ctrl+J");
	EXPECT_EQ(ReadFile(Folder.AtBytes("Keys.txt")), "Find=Ctrl+J\n");
	EXPECT_EQ(Utf8(FEditorFrameCommands::Get().Find->GetInputText()), "Ctrl+J") << "menus show it";

	Change("Pause", "CTRL+J");
	EXPECT_EQ(KeyOf("Pause"), "F9");
	EXPECT_TRUE(IsShown(FindByText("Ctrl+J is the key of \xE2\x80\x9C"
								   "Find\xE2\x80\x9D. Take it from that one first. Nothing was changed.")));
	Change("Pause", "CTRL+Z");
	EXPECT_TRUE(IsShown(FindByText("Ctrl+Z is the key of \xE2\x80\x9CUndo\xE2\x80\x9D in text boxes. Nothing was changed.")))
		<< "nobody is sent to take what cannot be taken";
	Change("Pause", "Escape");
	EXPECT_EQ(KeyOf("Pause"), "F9") << "Escape takes nothing";
	Click(FindByTag("ChangeKey.Pause"));
	EXPECT_EQ(KeyOf("Pause"), "Press the new key\xE2\x80\xA6");
	PressKey("CTRL+ENTER");
	PumpFrame();
	EXPECT_TRUE(IsShown(FindByText("Ctrl+Enter sends the prompt. Nothing was changed.")));

	Click(FindByTag("DefaultKey.Find"));
	PumpFrame();
	EXPECT_EQ(KeyOf("Find"), "Ctrl+F");
	Click(FindByTag("RemoveKey.Find"));
	PumpFrame();
	EXPECT_EQ(KeyOf("Find"), "none");
	EXPECT_EQ(ReadFile(Folder.AtBytes("Keys.txt")), "Find=\n");
}

TEST_F(FKeysPageTest, BothButtonsStandInOneLineAtTheWidthOfASettingsPage)
{
	// Of a window of 720 units, beside the list of pages.
	Resize(476, 3000);
	PumpSeconds(0.1);
	const FSlateRect Change = GetRect(*FindByTag("ChangeKey.Conversations"));
	const FSlateRect Remove = GetRect(*FindByTag("RemoveKey.Conversations"));
	EXPECT_EQ(Change.Top, Remove.Top);
	EXPECT_LE(Remove.Right, 476.0f - 16.0f);
	const SWidget& Key = *FindByTag("Key.Conversations");
	EXPECT_LE(GetRect(Key).Right, Change.Left);
	EXPECT_LT(GetRect(Key).Height(), 20.0f) << "the key is one line";
}

namespace
{
	FRun RunKeys(const FRandomProject& Project, const std::string& Steps, const std::vector<std::string>& More = {})
	{
		const std::string Script = Project.Write("steps.txt", Steps);
		std::vector<std::string> Arguments = { "--headless", "--project", Project.Folder.string(), "--script", Script };
		Arguments.insert(Arguments.end(), More.begin(), More.end());
		return RunProgram(Arguments, "", Project.OutFolder.string(), { "XDG_DATA_HOME=" + Project.Path("data") });
	}

	const char* const AskOnce = "type create one.md with \"x\"\nkey CTRL+ENTER\nwait idle 30\n";
}

TEST(Keys, WorkOnTheChatAsItsOwnButtonsDo)
{
	const FRandomProject Project;
	const FRun Run = RunKeys(Project,
		std::string(AskOnce) +
			"key UP\ndump recalled.json\nkey UP\ntype !\ndump typed.json\n"
			"key CTRL+A\nkey DELETE\ntype draft\nkey UP\ndump draft.json\n"
			"key CTRL+SHIFT+C\nkey CTRL+A\nkey CTRL+V\ndump copied.json\n"
			"key CTRL+N\nwait idle 30\ndump new.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("recalled.json")), R"("promptText": "create one.md with \"x\"")"));
	EXPECT_TRUE(Contains(ReadFile(Project.Path("draft.json")), "\"promptText\": \"draft\"")) << "a draft is never replaced";
	EXPECT_FALSE(Contains(ReadFile(Project.Path("copied.json")), "\"promptText\": \"draft\""));
	EXPECT_TRUE(Contains(ReadFile(Project.Path("copied.json")), "\"promptText\": \"")) << "the answer stands in the box";
	const std::string New = ReadFile(Project.Path("new.json"));
	EXPECT_FALSE(Contains(New, "\"type\": \"User\"")) << New;
}

TEST(Keys, EscapeStopsATurnByTheWindowsOwnCancel)
{
	const FRandomProject Project;
	// The question of the agent holds the turn until somebody answers.
	const char* const Ask = "type create .vscode/tasks.json with \"x\"\nkey CTRL+ENTER\nwait state Paused 30\n";
	const FRun Run =
		RunKeys(Project, std::string(Ask) + "type @\ntick 20\nkey ESC\ntick 5\ndump list.json\nkey ESC\nwait idle 30\ndump stopped.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("list.json")), "\"state\": \"Paused\"")) << "the list took the key";
	const std::string Stopped = ReadFile(Project.Path("stopped.json"));
	EXPECT_TRUE(Contains(Stopped, "\"state\": \"Cancelled\"")) << Stopped;
	EXPECT_FALSE(std::filesystem::exists(Project.Folder / ".vscode/tasks.json"));
}

TEST(Keys, AnAnsweredQuestionHasNoButtonsAnyMore)
{
	// The second click comes while the toast still fades.
	for (const char* const Answer : { "click Refuse\n", "key CTRL+F8\n" })
	{
		const FRandomProject Project;
		const FRun Run = RunKeys(Project,
			std::string("type create .vscode/tasks.json with \"x\"\nkey CTRL+ENTER\nwait state Paused 30\ntick 60\n") + Answer +
				"click Refuse\n");
		EXPECT_EQ(Run.ExitCode, 2) << Answer;
		EXPECT_TRUE(Contains(Run.Error, "Nothing on screen is called \"Refuse\".")) << Run.Error;
	}
}

TEST(Keys, ZoomIsKeptForTheUser)
{
	const FRandomProject Project;
	const FRun Run = RunKeys(Project, "key CTRL+EQUALS\nkey CTRL+EQUALS\nkey CTRL+HYPHEN\ntick 5\n", { "--draft" });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_EQ(ReadFile(Project.Path("data/Velmora/Zoom.txt")), "110\n");
	ASSERT_EQ(RunKeys(Project, "key CTRL+ZERO\ntick 5\n", { "--draft" }).ExitCode, 0);
	EXPECT_EQ(ReadFile(Project.Path("data/Velmora/Zoom.txt")), "100\n") << "it began where it was left";
}
