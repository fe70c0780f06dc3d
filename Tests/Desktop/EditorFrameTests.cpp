#include "Desktop/ProgramDriver.h"
#include "Support/UiDriver.h"

#include "Companions/TemporaryProject.h"
#include "Framework/Docking/TabManager.h"
#include "Framework/Notifications/NotificationManager.h"
#include "Host/CodeIndexControl.h"
#include "Host/HostLevelEditor.h"
#include "Host/HostLog.h"
#include "Host/HostModules.h"
#include "Host/HostNotifications.h"
#include "Host/HostTasks.h"
#include "Logging/LogMacros.h"
#include "Modules/ModuleManager.h"
#include "OpenChat.h"
#include "OutputLog.h"
#include "SEditorFrame.h"
#include "SOutputLog.h"
#include "SSourceViewer.h"
#include "ToastRoom.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SFileSearchItem.h"
#include "Widgets/Views/SListView.h"

#include <algorithm>
#include <chrono>
#include <fstream>

DEFINE_LOG_CATEGORY_STATIC(LogFrameTest, Log, All);

/** The frame with the module in it, in a window of the test's own. */
class FEditorFrameTest : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostLevelEditor::Install();
		Log = MakeShared<FOutputLog>();
		Frame = SNew(SEditorFrame, Log.ToSharedRef());
		FGlobalTabmanager::Get()->SetDockArea(Frame->GetDockArea());
		ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr);
		Velmora::CodeIntel::FCodeIndexOptions Options;
		Options.ProjectFolder = UTF8_TO_TCHAR(Project.Root.c_str());
		Options.ProjectIndexPath = UTF8_TO_TCHAR((Project.Root.native() + "-index.db").c_str());
		Options.EngineIndexPath = UTF8_TO_TCHAR((Project.Root.native() + "-engine.db").c_str());
		Velmora::CodeIntel::FCodeIndexControl::Initialize(Options);
		EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
		Show(Frame.ToSharedRef());
	}

	void TearDown() override
	{
		App().DismissAllMenus();
		Velmora::CodeIntel::FCodeIndexControl::Shutdown();
		FGlobalTabmanager::Get()->CloseAllTabs();
		FGlobalTabmanager::Get()->SetDockArea(nullptr);
		App().SetRootContent(SNullWidget::NullWidget);
		Frame.Reset();
		for (const char* Name : { "VelmoraUI", "LevelEditor" })
		{
			FModuleManager::Get().UnloadModule(Name);
		}
		FHostModules::Unregister("LevelEditor");
		FHostTasks::WaitForBackground(30.0);
		FHostTasks::RunGameThreadTasks();
		FWidgetTest::TearDown();
	}

	void Choose(const char* Menu, const char* Entry)
	{
		Click(FindByText(Menu));
		Click(FindByText(Entry));
		PumpFrame();
	}

	TSharedRef<SEditableTextBox> OpenConsole()
	{
		FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SEditorFrame::GetLogTabName()));
		PumpFrame();
		const TSharedRef<SEditableTextBox> Box = StaticCastSharedRef<SEditableTextBox>(FindByTag("ConsoleInput"));
		App().SetKeyboardFocus(Box);
		return Box;
	}

	/** The colour in which the words of a widget are painted, as RRGGBB. */
	static std::string PaintedColor(const std::string& Text)
	{
		const FSlateRect Place = GetRect(*FindByText(Text));
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			const FVector2D Pen(Element.Rect.Left + 1.0, Element.Rect.Top - 1.0);
			if (Element.Type == ESlateDrawType::Glyphs && Place.ContainsPoint(Pen))
			{
				return Utf8(Element.Color.ToHex()).substr(0, 6);
			}
		}
		return "";
	}

	FTemporaryProject Project;
	TSharedPtr<FOutputLog> Log;
	TSharedPtr<SEditorFrame> Frame;
};

TEST_F(FEditorFrameTest, TheIndexMenuIsOpenedWithTheMouseAndPaintsWhatCanBeDone)
{
	Click(FindByText("Tools"));
	Hover(FindByText("Code Index"));
	PumpSeconds(0.3);
	MoveMouse(FVector2D(900, 700));
	const std::pair<const char*, const char*> Painted[] = {
		{ "PROJECT INDEX", "808896" },
		{ "Rebuild Project Index", "E6E6E6" },
		{ "Compact Project Index", "E6E6E6" },
		{ "Reconcile Project Index", "6B7280" },
		{ "Rebuild Engine Index", "6B7280" },
		{ "Clear Engine Index", "6B7280" },
		{ "View Index Status", "E6E6E6" },
		{ "Code Index Settings...", "E6E6E6" },
	};
	for (const auto& [Label, Color] : Painted)
	{
		EXPECT_EQ(PaintedColor(Label), Color) << Label;
	}
	Hover(FindByText("View Index Status"));
	EXPECT_EQ(PaintedColor("View Index Status"), "FFFFFF");
	// The index of the settings can be used no more, and the open menu says so.
	Velmora::CodeIntel::FCodeIndexControl::Shutdown();
	PumpFrame();
	EXPECT_EQ(PaintedColor("Rebuild Project Index"), "6B7280");
}

TEST_F(FEditorFrameTest, TabsAreClosedAndOpenedAgainByTheMenu)
{
	Choose("Window", "Output Log");
	EXPECT_TRUE(IsShown(FindByTag("LogList")));
	Choose("Window", "Velmora AI");
	EXPECT_EQ(Frame->GetDockArea()->GetTabs().Num(), 2);
	EXPECT_TRUE(IsShown(FindByTag("InputTextBox")));
	for (int32 Left = 1; Left >= 0; --Left)
	{
		Choose("Window", "Close Tab");
		EXPECT_EQ(Frame->GetDockArea()->GetTabs().Num(), Left);
	}
	Click(FindByText("Window"));
	EXPECT_FALSE(FWidgetFinder::IsEnabledInTree(*FindByText("Close Tab")));
	PressKey("Escape");
	Choose("Tools", "Velmora AI");
	EXPECT_TRUE(IsShown(FindByTag("InputTextBox")));
}

TEST_F(FEditorFrameTest, TheFindStripHasOneLineWhereThereIsRoomForIt)
{
	Choose("Window", "Velmora AI");
	App().SetKeyboardFocus(FindByTag("InputTextBox"));
	PressKey("CTRL+F");
	const std::pair<int32, bool> Widths[] = { { 1280, true }, { 720, true }, { 360, false } };
	for (const auto& [Width, bHasOneLine] : Widths)
	{
		Resize(Width, 600);
		PumpFrame();
		PumpFrame();
		const FSlateRect First = GetRect(*FindByTag("FindBox"));
		const FSlateRect Last = GetRect(*FindByTag("CloseFind"));
		EXPECT_EQ(Last.Top < First.Bottom, bHasOneLine) << Width;
		EXPECT_LE(Last.Right, static_cast<float>(Width)) << Width;
		EXPECT_GT(First.Right - First.Left, 100.0f) << Width;
	}
}

TEST_F(FEditorFrameTest, ToastsLeaveThePromptAndItsButtonsFree)
{
	FToastRoom::Install();
	Choose("Window", "Velmora AI");
	const auto Tell = [](const char* Text)
	{
		FNotificationInfo Info(FText::FromString(UTF8_TO_TCHAR(Text)));
		Info.bFireAndForget = false;
		return FSlateNotificationManager::Get().AddNotification(Info).ToSharedRef();
	};
	const TSharedRef<SNotificationItem> First = Tell("One");
	const TSharedRef<SNotificationItem> Second = Tell("Two");
	for (const FIntPoint& Size : { FIntPoint(1280, 800), FIntPoint(720, 500), FIntPoint(360, 700), FIntPoint(360, 400) })
	{
		SCOPED_TRACE(::testing::Message() << Size.X << " by " << Size.Y);
		Resize(Size.X, Size.Y);
		PumpFrame();
		for (const char* const Tag : { "InputTextBox", "SendButton" })
		{
			EXPECT_FALSE(FSlateRect::DoRectanglesIntersect(GetRect(*Second), GetRect(*FindByTag(Tag)))) << Tag;
			EXPECT_FALSE(FSlateRect::DoRectanglesIntersect(GetRect(*First), GetRect(*FindByTag(Tag)))) << Tag;
		}
		EXPECT_GE(GetRect(*First).Top, 0.0f);
	}
	// Another tab has no prompt.
	Choose("Window", "Output Log");
	EXPECT_GT(GetRect(*Second).Bottom, 370.0f);
	FToastRoom::Uninstall();
	FHostNotifications::Clear();
}

TEST_F(FEditorFrameTest, FramesOfFindEndAtTheEdgeOfTheList)
{
	Choose("Window", "Velmora AI");
	FString Text;
	for (int32 Line = 0; Line < 60; ++Line)
	{
		Text += TEXT("a needle in the hay\n\n");
	}
	ASSERT_TRUE(FOpenChat::GetViewModel()->SendMessage(Text));
	PumpSeconds(1.0);
	App().SetKeyboardFocus(FindByTag("InputTextBox"));
	PressKey("CTRL+F");
	TypeText("needle");
	PumpSeconds(1.0);
	const TSharedRef<SWidget> List = FindByTag("MessageList");
	bool bAnyCrosses = false;
	for (int32 Notch = 0; Notch < 20 && !bAnyCrosses; ++Notch)
	{
		Scroll(List, 1.0f);
		PumpSeconds(0.5);
		const FSlateRect Edge = GetRect(*List);
		int32 Count = 0;
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			if (Element.Color == FColor(0xF2, 0xB8, 0x3C, 0x30) || Element.Color == FColor(0xFF, 0xD1, 0x5C, 0x60))
			{
				++Count;
				const FSlateRect Painted = Element.Rect.IntersectionWith(Element.Clip);
				bAnyCrosses = bAnyCrosses || Element.Rect.Top < Edge.Top || Element.Rect.Bottom > Edge.Bottom;
				EXPECT_GE(Painted.Top, Edge.Top);
				EXPECT_LE(Painted.Bottom, Edge.Bottom);
			}
		}
		EXPECT_GT(Count, 3);
	}
	EXPECT_TRUE(bAnyCrosses) << "no frame has reached an edge";
}

TEST_F(FEditorFrameTest, ANameThatIsCutIsToldWholeByATooltip)
{
	using Velmora::UI::FFileIndexEntry;
	const FString Long(TEXT("Source/AnotherFolder/AVeryLongNameOfAFileThatNobodyWouldType.cpp"));
	const TSharedRef<SVerticalBox> Rows = SNew(SVerticalBox);
	for (const FString& Path : { FString(TEXT("A.cpp")), Long })
	{
		FFileIndexEntry Entry;
		Entry.FilePath = Entry.DisplayPath = Path;
		Rows->AddSlot().AutoHeight()[SNew(SFileSearchItem).FileEntry(Entry)];
	}
	float Width = 200.0f;
	const TSharedRef<SWidget> Menu = SNew(SBox).WidthOverride_Lambda([&Width] { return FOptionalSize(Width); })[Rows];
	App().PushMenu(Frame.ToSharedRef(), Menu, FSlateRect(20.0f, 100.0f, 21.0f, 101.0f), MenuPlacement_BelowAnchor, false);
	const auto GetTips = [&Rows]
	{
		FTextList Tips;
		for (int32 Index = 0; Index < 2; ++Index)
		{
			Tips.push_back(Utf8(Rows->GetSlot(Index).GetWidget()->GetToolTipText()));
		}
		return Tips;
	};
	const auto GetPainted = [&Rows]() -> TSharedPtr<const FGlyphRun>
	{
		const FSlateRect Place = GetRect(*Rows->GetSlot(1).GetWidget());
		for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
		{
			if (Element.Type == ESlateDrawType::Glyphs && Place.ContainsPoint(FVector2D(Element.Rect.Left + 1.0, Element.Rect.Top - 1.0)))
			{
				return Element.Glyphs;
			}
		}
		return nullptr;
	};
	PumpSeconds(0.2);
	EXPECT_EQ(GetTips(), (FTextList{ "", Utf8(Long) }));
	const TSharedPtr<const FGlyphRun> Cut = GetPainted();
	ASSERT_TRUE(Cut);
	Width = 700.0f;
	PumpSeconds(0.2);
	EXPECT_EQ(GetTips(), (FTextList{ "", "" })) << "with room for it nothing is to be told";
	EXPECT_NE(GetPainted(), Cut) << "what is cut ends with an ellipsis";
}

TEST_F(FEditorFrameTest, TheFindStripLooksThroughASourceToo)
{
	std::ofstream(Project.Root / "a.cpp") << "int First;\nint Needle;\n// needle\n";
	SSourceViewer::ShowFile(UTF8_TO_TCHAR((Project.Root / "a.cpp").c_str()), 2);
	ASSERT_TRUE(FHostTasks::WaitForBackground(30.0));
	FHostTasks::RunGameThreadTasks();
	PumpFrame();
	EXPECT_TRUE(IsShown(FindByTag("SourceLines")));
	PressKey("CTRL+F");
	TypeText("needle");
	PumpFrame();
	EXPECT_EQ(Utf8(FindByTag("FindCount")->GetDisplayedText()), "1 of 2");
	PressKey("Enter");
	EXPECT_EQ(Utf8(FindByTag("FindCount")->GetDisplayedText()), "2 of 2");
	PressKey("Escape");
	PumpFrame();
	EXPECT_FALSE(FWidgetFinder::FindByTag("FindStrip"));
	EXPECT_TRUE(FindByTag("SourceLines")->HasKeyboardFocus());
	// It is in no menu, and the strip is none of the log's.
	Click(FindByText("Window"));
	EXPECT_EQ(FWidgetFinder::FindByText(TEXT("Source")).Num(), 1) << "its tab alone";
	Click(FindByText("Output Log"));
	PumpFrame();
	PressKey("CTRL+F");
	EXPECT_FALSE(FWidgetFinder::FindByTag("FindStrip"));
}

TEST_F(FEditorFrameTest, TheEditMenuWorksOnTheTextBefore)
{
	const TSharedRef<SEditableTextBox> Box = OpenConsole();
	TypeText("some words");
	Click(FindByText("Edit"));
	EXPECT_FALSE(FWidgetFinder::IsEnabledInTree(*FindByText("Copy"))) << "nothing is selected";
	Click(FindByText("Select All"));
	EXPECT_TRUE(Box->HasKeyboardFocus());
	Choose("Edit", "Cut");
	EXPECT_EQ(Utf8(Box->GetText()), "");
	Choose("Edit", "Paste");
	Choose("Edit", "Paste");
	EXPECT_EQ(Utf8(Box->GetText()), "some wordssome words");
	Choose("Edit", "Undo");
	EXPECT_EQ(Utf8(Box->GetText()), "some words");
}

TEST_F(FEditorFrameTest, TheConsoleReadsSetsAndCompletes)
{
	const TSharedRef<SEditableTextBox> Box = OpenConsole();
	Log->Clear();
	TypeText("velmora.Conv");
	PressKey("Tab");
	EXPECT_EQ(Utf8(Box->GetText()), "velmora.ConversationHistoryRefresh.ForceSync ");
	TypeText("maybe\n");
	TypeText("nothing.there\n");
	PressKey("Up");
	PressKey("Up");
	EXPECT_EQ(Utf8(Box->GetText()), "velmora.ConversationHistoryRefresh.ForceSync maybe");
	PressKey("Down");
	PressKey("Down");
	EXPECT_EQ(Utf8(Box->GetText()), "");
	std::vector<std::string> Lines;
	for (const TSharedPtr<const FOutputLogLine>& Line : Log->GetLines())
	{
		Lines.push_back((Line->Verbosity == ELogVerbosity::Error ? "! " : "") + Utf8(Line->Text));
	}
	EXPECT_EQ(Lines,
		(std::vector<std::string>{ "> velmora.ConversationHistoryRefresh.ForceSync maybe",
			"! velmora.ConversationHistoryRefresh.ForceSync takes a whole number, not \"maybe\".", "> nothing.there",
			"! There is no console variable or command \"nothing.there\"." }));
}

TEST_F(FEditorFrameTest, TheLogIsBoundedFilteredAndFollowed)
{
	using FLogList = SListView<TSharedPtr<const FOutputLogLine>>;
	const auto GetList = []
	{
		const TArray<TSharedRef<SWidget>> Lists =
			FWidgetFinder::FindAll([](SWidget& Widget) { return Utf8(Widget.GetType().ToString()).starts_with("SListView"); });
		EXPECT_EQ(Lists.Num(), 1);
		return StaticCastSharedRef<FLogList>(Lists[0]);
	};
	FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SEditorFrame::GetLogTabName()));
	PumpFrame();
	UE_LOG(LogFrameTest, Warning, TEXT("Look\nout"));
	UE_LOG(LogFrameTest, Display, TEXT("%s"), *FString::ChrN(5000, TEXT('x')));
	PumpFrame();
	PumpFrame();
	const FTextList Texts = VisibleTexts();
	const std::string Line = Utf8(FDateTime::Now().ToString(TEXT("%H:%M:"))) + "?? LogFrameTest: Warning: Look";
	EXPECT_TRUE(std::any_of(
		Texts.begin(), Texts.end(), [&Line](std::string Text) { return Text.size() == Line.size() && Text.replace(6, 2, "??") == Line; }))
		<< Line;
	EXPECT_EQ(PaintedColor("    out"), "F3DA7C");
	EXPECT_TRUE(Contains(Utf8(Log->GetLines().Last()->Text), "(1000 more characters)"));

	Log->Clear();
	for (int32 Number = 0; Number < FOutputLog::MaxLines + 5; ++Number)
	{
		Log->Add(FString::Printf(TEXT("Line %d"), Number), ELogVerbosity::Log);
	}
	EXPECT_LE(Log->GetLines().Num(), FOutputLog::MaxLines);
	EXPECT_GE(Log->GetLines().Num(), FOutputLog::MaxLines * 9 / 10);
	PumpFrame();
	const auto Begin = std::chrono::steady_clock::now();
	PumpFrame();
	const double Frame100000 = std::chrono::duration<double>(std::chrono::steady_clock::now() - Begin).count();
	EXPECT_LT(Frame100000, 1.0) << "a guard only";
	EXPECT_TRUE(IsShown(FindByText("Line 100004"))) << "the end is in view";
	EXPECT_LT(GetList()->GetNumGeneratedChildren(), 100);

	// Scrolled away, it stays where the user reads.
	Scroll(GetList(), 20.0f);
	PumpFrame();
	Log->Add(TEXT("One more"), ELogVerbosity::Log);
	PumpFrame();
	PumpFrame();
	EXPECT_TRUE(FWidgetFinder::FindByText(TEXT("One more")).IsEmpty());

	App().SetKeyboardFocus(FindByTag("LogFilter"));
	TypeText("LINE 99999");
	PumpSeconds(0.5);
	EXPECT_EQ(static_cast<int32>(GetList()->GetItems().Num()), 1) << "letter case does not matter";
	Log->Add(TEXT("another line 99999"), ELogVerbosity::Log);
	PumpFrame();
	PumpFrame();
	EXPECT_TRUE(IsShown(FindByText("another line 99999")));
	Click(FindByText("Clear Log"));
	PumpFrame();
	EXPECT_EQ(static_cast<int32>(GetList()->GetItems().Num()), 0);
	FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
}

TEST(EditorFrameRun, AScriptOpensMenusReadsThemAndBringsTheTabBack)
{
	const FRandomProject Project;
	Project.Write("run.txt",
		"wait idle 30\nclick Tools\nclick Code Index\ndump menu.json\nkey ESC\nkey ESC\nclose-tab\nclick Tools\nclick Velmora AI\ntick 5\n"
		"click #InputTextBox\ntype hello\nclick Window\nclick Output Log\nclick #ConsoleInput\ntype list\\n\ntick 5\nmove > list\ndump "
		"end.json\n");
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--now", "2026-01-31T12:00:00", "--script", "run.txt",
									"--set", "velmora.conversationhistoryrefresh.forcesync=1" },
		"", Project.OutFolder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	std::string Menu = ReadFile(Project.Path("menu.json"));
	std::erase_if(Menu, [](char Char) { return Char == '\n' || Char == '\r' || Char == '\t'; });
	EXPECT_TRUE(Contains(Menu, "{\"label\": \"Rebuild Project Index\",\"enabled\": true}")) << Menu;
	EXPECT_TRUE(Contains(Menu, "{\"label\": \"Clear Engine Index\",\"enabled\": false}")) << Menu;
}

TEST(EditorFrameRun, EndsSoonInTheMiddleOfAnything)
{
	const FRandomProject Project;
	// Enough files that a build and a scan are under way when the end comes.
	for (int Index = 0; Index < 3000; ++Index)
	{
		std::filesystem::create_directories(Project.Folder / ("Many" + std::to_string(Index % 50)));
		std::ofstream(Project.Folder / ("Many" + std::to_string(Index % 50)) / ("File" + std::to_string(Index) + ".cpp"))
			<< "int Value" << Index << ";\n";
	}
	const char* const Scripts[] = {
		"quit\n",
		"click Tools\nquit\n",
		"click Tools\nclick Code Index\nclick Rebuild Project Index\ntick 2\nquit\n",
		"click #InputTextBox\ntype find Value2999\nkey CTRL+ENTER\ntick 3\nquit\n",
	};
	for (const char* Script : Scripts)
	{
		SCOPED_TRACE(Script);
		Project.Write("run.txt", Script);
		const auto Begin = std::chrono::steady_clock::now();
		const FRun Run =
			RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", "run.txt" }, "", Project.OutFolder.string());
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		// Start, steps and end together; a build of all files alone would take longer than that on a slow machine.
		EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - Begin).count(), 10.0);
	}
}
