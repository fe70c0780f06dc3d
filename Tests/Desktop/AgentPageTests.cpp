#include "ActivityText.h"
#include "AgentChoice.h"
#include "AgentPages.h"
#include "ConnectionFields.h"
#include "Framework/Docking/TabManager.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/AgentPermissions.h"
#include "Host/HostPaths.h"
#include "Host/HostSettings.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFolder.h"
#include "Host/SDockArea.h"
#include "Modules/ModuleManager.h"
#include "SAgentActivity.h"
#include "Support/Peer/ScriptedPeer.h"
#include "Support/UiDriver.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sys/stat.h>
#include <thread>

namespace fs = std::filesystem;
using Velmora::FAgentConnection;
using Velmora::FAgentConnections;

/** The pages and the tab of the agent, with a user's folder and a project of their own. */
class FAgentPageTest : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		std::string Pattern = fs::temp_directory_path() / "velmora-pages-XXXXXX";
		Folder = mkdtemp(Pattern.data());
		const char* const Before = getenv("XDG_CONFIG_HOME");
		ConfigBefore = Before ? Before : "";
		setenv("XDG_CONFIG_HOME", (Folder / "config").c_str(), 1);
		// The user's own keyring is none of the test's business.
		unsetenv("DBUS_SESSION_BUS_ADDRESS");
		setenv("XDG_RUNTIME_DIR", (Folder / "run").c_str(), 1);
		fs::create_directories(Folder / "project");
		FHostPaths::SetEngineSavedDir(UTF8_TO_TCHAR((Folder / "data").c_str()));
		Velmora::SetProjectFolder(UTF8_TO_TCHAR((Folder / "project").c_str()));
		const TSharedRef<SDockArea> Area = SNew(SDockArea);
		FGlobalTabmanager::Get()->SetDockArea(Area);
		Show(Area);
		FHostSettings::Install();
		Pages = MakeUnique<FAgentPages>();
	}
	void TearDown() override
	{
		FAgentConnections::Select(NullOpt);
		FGlobalTabmanager::Get()->CloseAllTabs();
		Pages.Reset();
		FModuleManager::Get().UnloadModule("Settings");
		FGlobalTabmanager::Get()->SetDockArea(nullptr);
		FWidgetTest::TearDown();
		ConfigBefore.empty() ? unsetenv("XDG_CONFIG_HOME") : setenv("XDG_CONFIG_HOME", ConfigBefore.c_str(), 1);
		fs::remove_all(Folder);
	}

	void Open(FName Page)
	{
		FAgentPages::Show(Page);
		PumpFrame();
		PumpFrame();
	}
	void Enter(const char* Tag, const std::string& Text)
	{
		Click(FindByTag(Tag));
		PressKey("CTRL+A");
		PressKey("Delete");
		TypeText(Text);
	}
	/** Frames until the test holds, as long as other threads may take; real time. */
	bool WaitUntil(const std::function<bool()>& Test)
	{
		for (int32 Try = 0; Try < 500 && !Test(); ++Try)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(10));
			FHostTasks::RunGameThreadTasks();
			PumpFrame();
		}
		return Test();
	}
	static bool IsOnScreen(const std::string& Part)
	{
		const FTextList Texts = VisibleTexts();
		return std::any_of(Texts.begin(), Texts.end(), [&Part](const std::string& Text) { return Text.find(Part) != std::string::npos; });
	}
	static std::vector<std::string> ListStored()
	{
		FString Problem;
		std::vector<std::string> Lines;
		for (const FAgentConnection& Connection : FAgentConnections::List(Problem))
		{
			Lines.push_back(Utf8(Connection.Name + TEXT(" ") + Connection.Url + TEXT(" ") + Connection.Model));
		}
		return Lines;
	}

	fs::path Folder;
	std::string ConfigBefore;
	TUniquePtr<FAgentPages> Pages;
};

TEST_F(FAgentPageTest, AConnectionIsAddedChosenAndRemoved)
{
	using FLines = std::vector<std::string>;
	Open(FAgentPages::GetConnectionsName());
	EXPECT_TRUE(IsOnScreen("The built-in agent answers."));
	Click(FindByTag("AddConnection"));
	EXPECT_TRUE(IsOnScreen("Not stored yet. It needs an address"));
	TypeText("local"); // The keyboard is in the box of the name.
	Enter("ConnectionUrl", "  http://127.0.0.1:8080 ");
	Enter("ConnectionModel", "tiny");
	Enter("ConnectionRounds", "7");
	EXPECT_TRUE(WaitUntil([] { return ListStored() == FLines{ "local http://127.0.0.1:8080 tiny" }; }));
	struct stat Info = {};
	ASSERT_EQ(stat((Folder / "config/velmora-ui/connections.json").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0600u);

	// What cannot be used leaves the stored one as it was, and the reason stands beside the box.
	Enter("ConnectionUrl", "ftp://elsewhere");
	EXPECT_TRUE(IsOnScreen("Not stored yet. "));
	Enter("ConnectionRounds", "many");
	EXPECT_TRUE(IsOnScreen("This wants a whole number from 1 to 1000."));
	Enter("ConnectionUrl", "http://127.0.0.1:9090");
	EXPECT_TRUE(WaitUntil([] { return ListStored() == FLines{ "local http://127.0.0.1:9090 tiny" }; }));
	FString Problem;
	EXPECT_EQ(FAgentConnections::List(Problem)[0].MaxRounds, 7);

	Click(FindByTag("UseConnection"));
	EXPECT_EQ(Utf8(FAgentChoice::GetName()), "local");
	Click(FindByTag("DefaultConnection"));
	EXPECT_TRUE(WaitUntil([] { return Utf8(FAgentConnections::GetDefault()) == "local"; }));
	Enter("ConnectionName", "home");
	EXPECT_TRUE(WaitUntil([] { return Utf8(FAgentConnections::GetDefault()) == "home"; })) << "the default under its new name";

	Click(FindByTag("RemoveConnection"));
	EXPECT_TRUE(WaitUntil([] { return ListStored().empty(); }));
	EXPECT_TRUE(IsOnScreen("The built-in agent answers."));
}

TEST_F(FAgentPageTest, PagesScrollNotSidewaysInANarrowWindow)
{
	using Velmora::FAgentPermissions;
	EXPECT_EQ(Utf8(FAgentPermissions::Add({ true, TEXT("edit_file"), TEXT(".vscode/a/folder/of/a/long/name/") })), "");
	Resize(360, 700);
	const auto Check = [](const char* Type)
	{
		const std::vector<TSharedRef<SWidget>> Found = FindByType(Type);
		EXPECT_GT(Found.size(), 0u) << Type;
		for (const TSharedRef<SWidget>& Widget : Found)
		{
			const FSlateRect Rect = GetRect(*Widget);
			EXPECT_TRUE(Rect.Left >= 0.0f && Rect.Right <= 360.0f) << Type << ", to " << Rect.Right;
		}
	};
	Open(FAgentPages::GetConnectionsName());
	Click(FindByTag("AddConnection"));
	PumpSeconds(1.0);
	Check("SEditableTextBox");
	Check("SButton");
	// The label of a row stands above its field.
	EXPECT_LE(GetRect(*FindByText("Base URL")).Bottom, GetRect(*FindByTag("ConnectionUrl")).Top);
	EXPECT_EQ(GetRect(*FindByText("Base URL")).Left, GetRect(*FindByTag("ConnectionUrl")).Left);
	Open(FAgentPages::GetPermissionsName());
	PumpSeconds(1.0);
	Check("SButton");
}

TEST_F(FAgentPageTest, TwoConnectionsCannotHaveOneName)
{
	Open(FAgentPages::GetConnectionsName());
	for (int32 Count = 0; Count < 2; ++Count)
	{
		Click(FindByTag("AddConnection"));
		Enter("ConnectionUrl", "http://127.0.0.1:1");
	}
	Enter("ConnectionName", "New connection");
	EXPECT_TRUE(IsOnScreen("Not stored yet. Another connection has this name."));
	EXPECT_TRUE(WaitUntil([] { return ListStored().size() == 2; })) << "under the name that it had";
}

TEST_F(FAgentPageTest, AFileThatCannotBeReadIsLeftAlone)
{
	fs::create_directories(Folder / "config/velmora-ui");
	std::ofstream(Folder / "config/velmora-ui/connections.json") << "{ not json";
	chmod((Folder / "config/velmora-ui/connections.json").c_str(), 0600);
	Pages.Reset();
	Pages = MakeUnique<FAgentPages>();
	Open(FAgentPages::GetConnectionsName());
	EXPECT_TRUE(IsOnScreen("is no list of connections"));
	Click(FindByTag("AddConnection"));
	Enter("ConnectionUrl", "http://127.0.0.1:1");
	EXPECT_TRUE(IsOnScreen("Not stored. "));
	Pages.Reset();
	std::ifstream File(Folder / "config/velmora-ui/connections.json");
	std::string Text;
	std::getline(File, Text);
	EXPECT_EQ(Text, "{ not json");
}

TEST_F(FAgentPageTest, ATestSaysInOneSentenceWhatItFound)
{
	using namespace PeerText;
	// While it is held, the server keeps its answers back.
	std::mutex Thinking;
	std::unique_lock Thinks(Thinking);
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[&Thinking](const FPeerConnection::FRequest& Request, int)
		{
			const std::scoped_lock Lock(Thinking);
			return Request.Method == "GET"
				? Answer("200 OK", "application/json", R"({"data":[{"id":"tiny","meta":{"n_ctx":8192}},{"id":"huge"}]})")
				: Stream({ Say("Yes."), Chunk("{}", "stop"), "[DONE]" });
		}));
	Open(FAgentPages::GetConnectionsName());
	Click(FindByTag("AddConnection"));
	Enter("ConnectionUrl", Peer.GetUrl());
	// The list takes over what comes while it is open.
	Click(FindByTag("ConnectionModelList"));
	EXPECT_TRUE(IsOnScreen("Asking the server"));
	Thinks.unlock();
	EXPECT_TRUE(WaitUntil([] { return IsOnScreen("huge"); }));
	PressKey("Escape");
	EXPECT_FALSE(IsOnScreen("huge"));
	Thinks.lock();
	Click(FindByTag("TestConnection"));
	EXPECT_TRUE(IsOnScreen("Asking the server"));
	Thinks.unlock();
	EXPECT_TRUE(WaitUntil([] { return IsOnScreen("tiny"); }));
	Click(FindByTag("ConnectionModelList"));
	EXPECT_TRUE(IsOnScreen("huge"));
	Click(FindByText("huge"));
	EXPECT_EQ(Utf8(FindByTag("ConnectionModel")->GetDisplayedText().ToString()), "huge");
	// It begins at the name that the box has, also when that was typed.
	Enter("ConnectionModel", "tiny");
	Click(FindByTag("ConnectionModelList"));
	PressKey("Down");
	PressKey("Enter");
	EXPECT_EQ(Utf8(FindByTag("ConnectionModel")->GetDisplayedText().ToString()), "huge");
}

TEST_F(FAgentPageTest, AKeyIsTakenFromTheClipboardAndNeverShown)
{
	Open(FAgentPages::GetConnectionsName());
	Click(FindByTag("AddConnection"));
	Enter("ConnectionUrl", "https://models.invalid/v1");
	PressKey("Enter");
	EXPECT_TRUE(WaitUntil([] { return IsOnScreen("No key."); }));
	FPlatformApplicationMisc::ClipboardCopy(TEXT("two\nlines"));
	Click(FindByTag("PasteKey"));
	EXPECT_TRUE(IsOnScreen("The clipboard holds no key"));
	FPlatformApplicationMisc::ClipboardCopy(TEXT("secret-key-4711"));
	Click(FindByTag("PasteKey"));
	EXPECT_TRUE(WaitUntil([] { return IsOnScreen("\u2022\u2022\u2022\u2022\u2022\u2022\u2022\u2022  "); }));
	EXPECT_FALSE(IsOnScreen("4711"));
	Click(FindByTag("ForgetKey"));
	EXPECT_TRUE(WaitUntil([] { return IsOnScreen("No key."); }));
}

TEST_F(FAgentPageTest, RulesAreShownAndTakenBack)
{
	using Velmora::FAgentPermissions;
	EXPECT_EQ(Utf8(FAgentPermissions::Add({ true, TEXT("edit_file"), TEXT(".vscode/") })), "");
	EXPECT_EQ(Utf8(FAgentPermissions::Add({ false, TEXT("run_command"), TEXT("rm") })), "");
	Open(FAgentPages::GetPermissionsName());
	for (const char* Text : { "Allow", "edit_file", ".vscode/\u2026", "Refuse", "run_command" })
	{
		EXPECT_TRUE(IsOnScreen(Text)) << Text;
	}
	Click(FindByToolTip("Ask again about edit_file .vscode/\u2026"));
	EXPECT_EQ(FAgentPermissions::List().Num(), 1);
	EXPECT_FALSE(IsOnScreen("edit_file"));
	// One that is made meanwhile appears.
	EXPECT_EQ(Utf8(FAgentPermissions::Add({ true, TEXT("connect"), TEXT("") })), "");
	PumpSeconds(1.2);
	EXPECT_TRUE(IsOnScreen("connect"));
	EXPECT_TRUE(IsOnScreen("whatever it is about"));
}

TEST_F(FAgentPageTest, ActivityHasItsControlsInViewInANarrowWindowToo)
{
	Show(SNew(SAgentActivity));
	for (const int32 Width : { 1200, 720, 360 })
	{
		Resize(Width, 600);
		PumpFrame();
		PumpFrame();
		const FSlateRect Figures = GetRect(*FindByTag("ActivityFigures"));
		const FSlateRect Follow = GetRect(*FindByTag("FollowActivity"));
		EXPECT_LE(GetRect(*FindByTag("ClearActivity")).Right, static_cast<float>(Width) - 7.0f) << Width;
		EXPECT_NEAR(GetRect(*FindByTag("ClearActivity")).Top, GetRect(*FindByTag("CopyActivity")).Top, 1.0f) << Width;
		EXPECT_EQ(Follow.Top > Figures.Bottom, Width == 360) << Width;
		EXPECT_GE(Figures.Right - Figures.Left, Width == 360 ? 340.0f : 240.0f) << Width;
	}
}

TEST(ActivityText, SaysWhatARequestTookAndUsed)
{
	Velmora::FAgentActivityEntry Entry;
	Entry.Kind = Velmora::EAgentActivityKind::Request;
	Entry.Title = TEXT("local, tiny");
	Entry.PieceCount = 1234;
	EXPECT_EQ(Utf8(ActivityText::DescribeEntry(Entry, 3.21)), "request  local, tiny  3.2 s so far, about 1,234 tokens");
	Entry.bIsDone = true;
	Entry.PromptTokens = 7000;
	Entry.CompletionTokens = 56;
	Entry.ContextTokens = 8192;
	Entry.FirstByteSeconds = 0.44;
	Entry.Cost = 0.01;
	Entry.Outcome = TEXT("It\nended.");
	EXPECT_EQ(Utf8(ActivityText::DescribeEntry(Entry, 3.21)),
		"request  local, tiny  3.2 s, 7,000 + 56 tokens, 7,056 of 8,192 used, 1,136 left, first byte after 0.4 s, cost 0.0100: It ended.");
	Entry.Text = TEXT("An answer.");
	Entry.Input = TEXT("{}");
	EXPECT_EQ(Utf8(ActivityText::MakeCopy(Entry, 3.21)),
		Utf8(Entry.StartedAt.ToString() + TEXT("  ") + ActivityText::DescribeEntry(Entry, 3.21)) + "\n\nAn answer.\n\n{}\n");
	const std::pair<double, const char*> Durations[] = { { -1.0, "0:00" }, { 17.9, "0:17" }, { 723.0, "12:03" }, { 3723.0, "1:02:03" } };
	for (const auto& [Seconds, Text] : Durations)
	{
		EXPECT_EQ(Utf8(ActivityText::MakeDuration(Seconds)), Text);
	}
	const std::pair<int64, const char*> Counts[] = { { 0, "0" }, { 999, "999" }, { 1000, "1,000" }, { -1234567, "-1,234,567" } };
	for (const auto& [Number, Text] : Counts)
	{
		EXPECT_EQ(Utf8(ActivityText::MakeCount(Number)), Text);
	}
	EXPECT_EQ(Utf8(ActivityText::CutForScreen(TEXT("abcdef"), 4)), "abcd\n\u2026 2 more characters; Copy takes all of them");
	Velmora::FAgentTurnStatus Turn;
	Turn.bIsRunning = true;
	Turn.Agent = TEXT("local, tiny");
	Turn.Seconds = 14.9;
	Turn.Tokens = 2000;
	EXPECT_EQ(Utf8(ActivityText::DescribeTurn(Turn, 15.0)), "");
	Turn.Seconds = 75.0;
	EXPECT_EQ(Utf8(ActivityText::DescribeTurn(Turn, 15.0)), "local, tiny: 1:15, 2,000 tokens");
}
