#include "Desktop/WorkerTest.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFileChanges.h"
#include "PathText.h"
#include "SSourceViewer.h"
#include "Style/VelmoraUIStyles.h"
#include "Support/Base/TempFolder.h"
#include "Widgets/SBoxPanel.h"

#include <algorithm>
#include <filesystem>

namespace
{
	FTextList ListLines(const FSourceText& Text)
	{
		FTextList Lines;
		for (const TSharedPtr<const FSourceLine>& Line : Text.Lines)
		{
			Lines.push_back(std::to_string(Line->Number) + " " + Utf8(Line->Text));
		}
		return Lines;
	}
}

TEST(SourceText, KeepsTheLayoutOfLines)
{
	const std::tuple<const char*, FTextList, int32> Rows[] = {
		{ "", { "1 " }, 0 },
		{ "a\n", { "1 a" }, 1 },
		{ "a\r\n\r\nb", { "1 a", "2 ", "3 b" }, 1 },
		{ "\tif\n  \tx\ty", { "1     if", "2     x   y" }, 9 },
		{ "\n\n", { "1 ", "2 " }, 0 },
	};
	for (const auto& [Code, Lines, Widest] : Rows)
	{
		for (const TCHAR* const Language : { TEXT(""), TEXT("cpp") })
		{
			const FSourceText Text = SourceText::Make(UTF8_TO_TCHAR(Code), Language);
			EXPECT_EQ(ListLines(Text), Lines) << Code;
			EXPECT_EQ(Text.WidestCells, Widest) << Code;
		}
	}
	const FSourceText Long = SourceText::Make(FString::ChrN(SourceText::MaxLineLength + 7, TEXT('x')) + TEXT("\ny"), FString());
	ASSERT_EQ(Long.Lines.Num(), 2);
	EXPECT_TRUE(Long.Lines[0]->Text.EndsWith(TEXT("x\u2026 (7 more characters)")));
}

TEST(PathText, KeepsTheNameOfTheFile)
{
	const struct
	{
		const TCHAR* Path;
		int32 Width;
		const char* Shown;
	} Rows[] = {
		{ TEXT("/home/me/Garden/Thing.cpp"), 25, "/home/me/Garden/Thing.cpp" },
		{ TEXT("/home/me/Garden/Thing.cpp"), 24, "\xE2\x80\xA6/me/Garden/Thing.cpp" },
		{ TEXT("/home/me/Garden/Thing.cpp"), 20, "\xE2\x80\xA6/Garden/Thing.cpp" },
		{ TEXT("/home/me/Garden/Thing.cpp"), 11, "\xE2\x80\xA6/Thing.cpp" },
		{ TEXT("/home/me/Garden/Thing.cpp"), 8,
			"\xE2\x80\xA6"
			"ing.cpp" },
		{ TEXT("Thing.cpp"), 5, "\xE2\x80\xA6.cpp" },
		{ TEXT("/a/b/"), 3,
			"\xE2\x80\xA6"
			"b/" },
		{ TEXT("/a/x\U0001F600.md"), 4, "\xE2\x80\xA6.md" },
		{ TEXT(""), 0, "" },
		{ TEXT("ab"), 0,
			"\xE2\x80\xA6"
			"b" },
	};
	for (const auto& Row : Rows)
	{
		const FString Shown =
			PathText::Shorten(Row.Path, static_cast<float>(Row.Width), [](const FString& Text) { return static_cast<float>(Text.Len()); });
		EXPECT_EQ(Utf8(Shown), Row.Shown) << Row.Width;
	}
}

TEST(SourceText, HasTheColoursOfItsLanguage)
{
	const std::pair<const TCHAR*, const char*> Names[] = { { TEXT("/p/a.CPP"), "cpp" }, { TEXT("b.h"), "cpp" }, { TEXT("c.py"), "python" },
		{ TEXT("x.uproject"), "json" }, { TEXT("notes.txt"), "" }, { TEXT("Makefile"), "" } };
	for (const auto& [Name, Language] : Names)
	{
		EXPECT_EQ(Utf8(SourceText::FindLanguage(Name)), Language);
	}
	const FSourceText Text = SourceText::Make(TEXT("int Count; // one"), TEXT("cpp"));
	ASSERT_EQ(Text.Lines.Num(), 1);
	EXPECT_EQ(Text.Lines[0]->Pieces.Last().Type, Velmora::Markdown::ESyntaxTokenType::Comment);
	EXPECT_EQ(SourceText::Make(TEXT("int Count;"), FString()).Lines[0]->Pieces.Num(), 1);
}

TEST(SourceText, SaysWhyAFileIsNotShown)
{
	const FTempFolder Folder;
	Folder.Write("binary", std::string("a\0b", 3));
	Folder.Write("text", "a");
	std::filesystem::create_directory(Folder.AtBytes("sub"));
	const std::pair<const TCHAR*, const TCHAR*> Cases[] = { { TEXT("gone"), TEXT("does not exist any more.") },
		{ TEXT("sub"), TEXT("is no file.") }, { TEXT("binary"), TEXT("holds no text.") } };
	for (const auto& [Name, Words] : Cases)
	{
		const TOptional<FSourceText> Read = SourceText::Read(Folder.At(Name), FString());
		ASSERT_TRUE(Read.IsSet());
		EXPECT_EQ(Utf8(Read->Problem), Utf8(Folder.At(Name) + TEXT(" ") + Words));
		EXPECT_EQ(Read->Lines.Num(), 0);
	}
	const TOptional<FSourceText> Read = SourceText::Read(Folder.At(TEXT("text")), FString());
	ASSERT_TRUE(Read.IsSet());
	EXPECT_FALSE(SourceText::Read(Folder.At(TEXT("text")), Read->Stamp).IsSet()) << "nothing new";
}

namespace
{
	class FSourceViewerTest : public FWorkerTest
	{
	protected:
		void SetUp() override
		{
			FWidgetTest::SetUp();
			FVelmoraUIStyles::Initialize();
			Viewer = SNew(SSourceViewer, Find);
			Show(Viewer.ToSharedRef());
		}
		void TearDown() override
		{
			Viewer.Reset();
			EndWork();
			FVelmoraUIStyles::Shutdown();
			FWidgetTest::TearDown();
		}

		static bool Sees(const std::string& Text)
		{
			const FTextList Texts = VisibleTexts();
			return std::find(Texts.begin(), Texts.end(), Text) != Texts.end();
		}
		static std::string State() { return Utf8(FindByTag("SourceState")->GetDisplayedText()); }
		void WriteLines(int32 Count, const std::string& Word)
		{
			std::string Lines;
			for (int32 Number = 1; Number <= Count; ++Number)
			{
				Lines += Word + std::to_string(Number) + "\n";
			}
			Folder.Write("long.txt", Lines);
		}

		FTempFolder Folder;
		TSharedRef<FSourceFind> Find = MakeShared<FSourceFind>();
		TSharedPtr<SSourceViewer> Viewer;
	};
}

TEST_F(FSourceViewerTest, ShowsTheLineThatWasAskedForAndFollowsTheFile)
{
	WriteLines(2000, "line");
	Viewer->Open(Folder.At(TEXT("long.txt")), 1500);
	ASSERT_TRUE(Wait([] { return Sees("line1500"); }));
	EXPECT_TRUE(Sees("1500")) << "its number";
	EXPECT_FALSE(Sees("line1"));
	EXPECT_EQ(State(), "Line 1,500, 2,000 lines");
	EXPECT_EQ(Utf8(FindByTag("SourcePath")->GetDisplayedText()), Folder.AtBytes("long.txt"));
	const FIntPoint Wide = App().GetWindow().GetPixelSize();
	Resize(280, Wide.Y);
	EXPECT_TRUE(Wait([] { return Utf8(FindByTag("SourcePath")->GetDisplayedText()) == "\xE2\x80\xA6/long.txt"; }))
		<< Utf8(FindByTag("SourcePath")->GetDisplayedText());
	Resize(Wide.X, Wide.Y);
	PressKey("Down");
	EXPECT_EQ(State(), "Line 1,501, 2,000 lines");

	// Written anew: the text follows, and stays where it was.
	WriteLines(2500, "other");
	Velmora::FProjectFileListeners::Broadcast(Velmora::FProjectFileChanges());
	ASSERT_TRUE(Wait([] { return Sees("other1501"); }));
	EXPECT_EQ(State(), "Line 1,501, 2,500 lines");
	std::filesystem::remove(Folder.AtBytes("long.txt"));
	Velmora::FProjectFileListeners::Broadcast(Velmora::FProjectFileChanges());
	EXPECT_TRUE(Wait([this] { return Sees(Folder.AtBytes("long.txt") + " does not exist any more."); }));

	// Changed once it was read and before that was shown: it is read again.
	WriteLines(3, "early");
	Viewer->Open(Folder.At(TEXT("long.txt")), 1);
	FHostTasks::WaitForBackground(30.0);
	WriteLines(4, "late");
	Viewer->Open(Folder.At(TEXT("long.txt")), 1);
	EXPECT_TRUE(Wait([] { return Sees("late4"); }));

	// A line that the file has since it was shown.
	WriteLines(300, "grown");
	Viewer->Open(Folder.At(TEXT("long.txt")), 250);
	EXPECT_TRUE(Wait([] { return Sees("grown250"); }));
	EXPECT_EQ(State(), "Line 250, 300 lines");
	// It was gone to once.
	PressKey("Down");
	WriteLines(301, "again");
	Velmora::FProjectFileListeners::Broadcast(Velmora::FProjectFileChanges());
	EXPECT_TRUE(Wait([] { return Sees("again251"); }));
	EXPECT_EQ(State(), "Line 251, 301 lines");

	// A line behind the end is the last one.
	WriteLines(3, "short");
	Viewer->Open(Folder.At(TEXT("long.txt")), 99);
	ASSERT_TRUE(Wait([] { return Sees("short3"); }));
	EXPECT_EQ(State(), "Line 3, 3 lines");
}

TEST_F(FSourceViewerTest, FindCountsStepsAndScrolls)
{
	WriteLines(3000, "line");
	Folder.Write("wide.txt", std::string(600, ' ') + "needle\n");
	Viewer->Open(Folder.At(TEXT("long.txt")), 500);
	ASSERT_TRUE(Wait([] { return Sees("line500"); }));
	Find->SetQuery({ TEXT("line1999") });
	ASSERT_TRUE(Wait([this] { return Find->IsComplete() && Sees("line1999"); }));
	EXPECT_EQ(Find->GetCount(), 1);
	// From the line on that the user is at.
	Find->SetQuery({ TEXT("NE10") });
	ASSERT_TRUE(Wait([this] { return Find->IsComplete(); }));
	EXPECT_EQ(Find->GetCount(), 111) << "10, 100 to 109, 1000 to 1099";
	EXPECT_EQ(Find->GetCurrentNumber(), 12);
	EXPECT_TRUE(Wait([] { return Sees("line1000"); }));
	Find->Step(-1);
	EXPECT_TRUE(Wait([] { return Sees("line109"); }));
	Find->SetQuery({ TEXT("line299"), true });
	ASSERT_TRUE(Wait([this] { return Find->IsComplete(); }));
	ASSERT_EQ(Find->GetCount(), 11) << "299 and 2990 to 2999";
	while (Find->GetCurrentNumber() < 11)
	{
		Find->Step(1);
	}
	Find->Step(1);
	EXPECT_EQ(Find->GetCurrentNumber(), 1) << "around the end";
	Find->Step(-1);
	EXPECT_EQ(Find->GetCurrentNumber(), 11);

	Viewer->Open(Folder.At(TEXT("wide.txt")), 0);
	Find->SetQuery({ TEXT("needle") });
	ASSERT_TRUE(Wait([this] { return Find->GetCount() == 1; }));
	EXPECT_TRUE(Wait([this] { return CountByType("SFoundMarks") == 1; })) << "it is framed";
	Find->SetQuery(FFindQuery());
	EXPECT_EQ(Find->GetCount(), 0);
	PumpFrame();
	EXPECT_EQ(CountByType("SFoundMarks"), 0);
}

TEST_F(FSourceViewerTest, LongLinesMoveBelowAListThatStaysInView)
{
	const std::string Wide = std::string(600, 'x') + "end";
	std::string Lines = Wide + "\n";
	for (int32 Number = 2; Number <= 300; ++Number)
	{
		Lines += "short\n";
	}
	Folder.Write("wide.txt", Lines);
	Viewer->Open(Folder.At(TEXT("wide.txt")), 0);
	ASSERT_TRUE(Wait([] { return Sees("short"); }));
	const TSharedRef<SWidget> List = FindByTag("SourceLines");
	const auto Bounds = [](const SWidget& Widget) { return Widget.GetCachedGeometry().GetLayoutBoundingRect(); };
	EXPECT_LE(Bounds(*List).Right, Bounds(*Viewer).Right) << "its upright bar is in view";
	const auto WideLine = [&] { return Bounds(*FindByText(Wide)).Left; };
	const float AtRest = WideLine();
	PressKey("Right");
	PumpFrame();
	EXPECT_LT(WideLine(), AtRest);
	PressKey("Left");
	PumpFrame();
	EXPECT_EQ(WideLine(), AtRest);
	// A place far to the right is brought into view.
	Find->SetQuery({ TEXT("end") });
	ASSERT_TRUE(Wait([this] { return Find->GetCount() == 1 && CountByType("SFoundMarks") == 1; }));
	PumpFrame();
	EXPECT_LT(WideLine(), -600.0f);
	EXPECT_GT(Bounds(*FindByText(Wide)).Right, 0.0f);
	EXPECT_LE(Bounds(*List).Right, Bounds(*Viewer).Right);
	// Wide enough for all of it: nothing is moved any more.
	const FIntPoint Before = App().GetWindow().GetPixelSize();
	Resize(8000, Before.Y);
	PumpFrame();
	EXPECT_EQ(WideLine(), AtRest);
	Resize(Before.X, Before.Y);
}

TEST_F(FSourceViewerTest, ATextThatGoesTakesItsHitsAlong)
{
	Folder.Write("a.txt", "needle\n");
	Viewer->Open(Folder.At(TEXT("a.txt")), 0);
	Find->SetQuery({ TEXT("needle") });
	ASSERT_TRUE(Wait([this] { return Find->GetCount() == 1; }));
	// One that was attached later is not detached by the one before.
	const TSharedRef<SSourceViewer> Later = SNew(SSourceViewer, Find);
	App().SetRootContent(SNullWidget::NullWidget);
	Viewer.Reset();
	PumpFrame();
	EXPECT_EQ(Find->GetCount(), 0);
	Show(Later);
	WriteLines(900, "needle");
	Find->SetQuery({ TEXT("needle880") });
	Later->Open(Folder.At(TEXT("long.txt")), 0);
	EXPECT_TRUE(Wait([] { return Sees("needle880"); }));
	EXPECT_EQ(Find->GetCount(), 1);
}
