#include "VelmoraWidgetTest.h"

#include "History/AssetHistoryTracker.h"
#include "History/FileHistoryTracker.h"
#include "Host/HostClock.h"
#include "Misc/Timespan.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SChangedFilesList.h"

class FChangedFilesListTest : public FVelmoraWidgetTest
{
protected:
	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		ClearTrackers();
		Now = FDateTime::Now();
		// clang-format off
		Show(
			SNew(SBox)
			.HAlign(HAlign_Left)
			.VAlign(VAlign_Top)
			[
				SAssignNew(List, SChangedFilesList)
				.ConversationId_Lambda([this]() { return Conversation; })
				.OnFileClicked_Lambda([this](const FString& Path) { Clicked.push_back(Utf8(Path)); })
			]);
		// clang-format on
	}

	void TearDown() override
	{
		ClearTrackers();
		FVelmoraWidgetTest::TearDown();
	}

	static void ClearTrackers()
	{
		for (const TCHAR* Id : { TEXT("c1"), TEXT("c2") })
		{
			for (const TCHAR* Group : { TEXT("g"), TEXT("h"), TEXT("z") })
			{
				FFileHistoryTracker::Get().RemoveGroup(Id, Group);
				FAssetHistoryTracker::Get().RemoveGroup(Id, Group);
			}
		}
	}

	void AddFile(const TCHAR* Group, const TCHAR* Path, uint8 Action, double SecondsAgo, const TCHAR* Id = TEXT("c1"))
	{
		FFileHistoryTracker::Get().AddOperation(Id, Group, { Path, Action, Now - FTimespan::FromSeconds(SecondsAgo) });
	}

	void AddAsset(const TCHAR* Path, uint8 Action, double SecondsAgo)
	{
		FAssetHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { Path, Action, Now - FTimespan::FromSeconds(SecondsAgo) });
	}

	FChildren* GetRows() { return FindInside(*FindInside(*List, "SScrollBox"), "SVerticalBox")->GetChildren(); }

	/** The rows from above: tooltip's first line. */
	FTextList DumpRows()
	{
		List->UpdateFileList();
		FTextList Rows;
		FChildren* Children = GetRows();
		for (int32 Index = 0; Index < Children->Num(); ++Index)
		{
			const std::string ToolTip = Utf8(Children->GetChildAt(Index)->GetToolTipText().ToString());
			EXPECT_TRUE(ToolTip.ends_with("\n\nClick to open in editor"));
			Rows.push_back(ToolTip.substr(0, ToolTip.find('\n')));
		}
		return Rows;
	}

	static FText GetHeader() { return FindByTag("ChangedFilesHeader")->GetDisplayedText(); }

	void Expand()
	{
		FindOne<SExpandableArea>("SExpandableArea")->SetExpanded(true);
		PumpFrame();
	}

	FDateTime Now;
	FString Conversation = TEXT("c1");
	TSharedPtr<SChangedFilesList> List;
	FTextList Clicked;
};

TEST_F(FChangedFilesListTest, StartsClosedAndSaysWhenNothingWasChanged)
{
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Changed Files" }));
	EXPECT_EQ(DumpKey(GetHeader()), "VelmoraUI,ChangedFilesHeader: Changed Files");
	Click(FindByText("Changed Files"));
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Changed Files", "No files changed yet" }));
	EXPECT_EQ(GetRect(*List).Width(), 600.0f);
}

TEST_F(FChangedFilesListTest, OneRowAPathWithWhatHappenedLast)
{
	const std::tuple<const char*, std::function<void()>, FTextList> Steps[] = {
		{ "newest first",
			[this]()
			{
				AddFile(TEXT("g"), TEXT("A.h"), 1, 50);
				AddFile(TEXT("g"), TEXT("B.h"), 3, 20);
				AddFile(TEXT("g"), TEXT("C.h"), 2, 90);
			},
			{ "Deleted: B.h", "Created: A.h", "Modified: C.h" } },
		{ "a later one in the same list", [this]() { AddFile(TEXT("g"), TEXT("A.h"), 2, 10); },
			{ "Modified: A.h", "Deleted: B.h", "Modified: C.h" } },
		{ "an earlier one in another list", [this]() { AddFile(TEXT("h"), TEXT("B.h"), 1, 60); },
			{ "Modified: A.h", "Deleted: B.h", "Modified: C.h" } },
		{ "a later one in another list", [this]() { AddFile(TEXT("h"), TEXT("C.h"), 3, 5); },
			{ "Deleted: C.h", "Modified: A.h", "Deleted: B.h" } },
		{ "another conversation", [this]() { AddFile(TEXT("g"), TEXT("D.h"), 1, 1, TEXT("c2")); },
			{ "Deleted: C.h", "Modified: A.h", "Deleted: B.h" } },
		{ "of two spellings the newer one's", [this]() { AddFile(TEXT("g"), TEXT("a.H"), 3, 4); },
			{ "Deleted: a.H", "Deleted: C.h", "Deleted: B.h" } },
		{ "an older spelling", [this]() { AddFile(TEXT("g"), TEXT("C.H"), 1, 70); }, { "Deleted: a.H", "Deleted: C.h", "Deleted: B.h" } },
		{ "assets, too", [this]() { AddAsset(TEXT("/Game/X"), 2, 2); },
			{ "Modified: /Game/X", "Deleted: a.H", "Deleted: C.h", "Deleted: B.h" } },
		{ "at equal times the file stays", [this]() { AddAsset(TEXT("B.h"), 1, 20); },
			{ "Modified: /Game/X", "Deleted: a.H", "Deleted: C.h", "Deleted: B.h" } },
		{ "a later asset", [this]() { AddAsset(TEXT("b.h"), 1, 19.9); },
			{ "Modified: /Game/X", "Deleted: a.H", "Deleted: C.h", "Created: b.h" } },
		{ "of equal times the first stays", [this]() { AddFile(TEXT("z"), TEXT("C.h"), 1, 5); },
			{ "Modified: /Game/X", "Deleted: a.H", "Deleted: C.h", "Created: b.h" } },
	};
	for (const auto& [Why, Add, Rows] : Steps)
	{
		Add();
		EXPECT_EQ(DumpRows(), Rows) << Why;
	}
	EXPECT_EQ(Utf8(GetHeader().ToString()), "Changed Files (4)");
}

TEST_F(FChangedFilesListTest, AgesAreToldInWordsAndBeyondAWeekAsADate)
{
	constexpr double Minute = 60.0;
	constexpr double Hour = 60.0 * Minute;
	constexpr double Day = 24.0 * Hour;
	FHostClock::UseSimulatedTime(FDateTime(2026, 3, 10, 0, 30, 0));
	const std::pair<double, const char*> Cases[] = {
		{ -Day, "just now" },
		{ 0.0, "just now" },
		{ 59.9, "just now" },
		{ 60.0, "1m ago" },
		{ 59 * Minute + 59.0, "59m ago" },
		{ Hour, "1h ago" },
		{ 23 * Hour + 59 * Minute, "23h ago" },
		{ Day, "1d ago" },
		{ 6 * Day + 23 * Hour, "6d ago" },
		{ 7 * Day, "3/3/26" },
		{ 7 * Day + 31 * Minute, "3/2/26" },
		{ 400 * Day, "2/3/25" },
	};
	// The stamp's own day, whatever the zone of the machine.
	for (const char* Zone : { "UTC0", "EST5EDT", "NZST-12" })
	{
		const char* const Before = getenv("TZ");
		const std::string Kept = Before ? Before : "";
		setenv("TZ", Zone, 1);
		tzset();
		FHostClock::UseSimulatedTime(FDateTime(2026, 3, 10, 0, 30, 0));
		Now = FDateTime::Now();
		for (const auto& [SecondsAgo, Text] : Cases)
		{
			ClearTrackers();
			AddFile(TEXT("g"), TEXT("F.txt"), 1, SecondsAgo);
			List->UpdateFileList();
			EXPECT_EQ(TextsIn(*GetRows()->GetChildAt(0)), (FTextList{ "F.txt", Text })) << Zone;
		}
		Before ? setenv("TZ", Kept.c_str(), 1) : unsetenv("TZ");
		tzset();
	}
}

TEST_F(FChangedFilesListTest, RowsAgeWhileTheyStandAndAMissingTimeIsNotShown)
{
	AddFile(TEXT("g"), TEXT("Source/A.h"), 1, 30.0);
	FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { TEXT("Old.txt"), 2, FDateTime(0) });
	List->UpdateFileList();
	Expand();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Changed Files (2)", "A.h", "just now", "Old.txt" }));
	EXPECT_EQ(GetRect(*FindByText("Old.txt")).Right, GetRect(*FindByText("just now")).Right) << "the name has the whole row";
	PumpFrame(60.0);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Changed Files (2)", "A.h", "1m ago", "Old.txt" }));
}

TEST_F(FChangedFilesListTest, ARowReportsItsPathByMouseAndByKey)
{
	AddFile(TEXT("g"), TEXT("Source/A.h"), 1, 2.0);
	AddFile(TEXT("g"), TEXT("/Game/Maps/Start"), 2, 1.0);
	List->UpdateFileList();
	Expand();
	Click(FindByText("A.h"));
	App().SetKeyboardFocus(GetRows()->GetChildAt(0));
	PressKey("Enter");
	EXPECT_EQ(Clicked, (FTextList{ "Source/A.h", "/Game/Maps/Start" }));
}

TEST_F(FChangedFilesListTest, ManyRowsScroll)
{
	for (int32 Index = 0; Index < 100; ++Index)
	{
		AddFile(TEXT("g"), *FString::Printf(TEXT("File%02d.txt"), Index), 1, Index);
	}
	List->UpdateFileList();
	Expand();
	EXPECT_LE(GetRect(*List).Height(), 300.0f);
	Scroll(FindByText("File03.txt"), -1000.0f);
	EXPECT_TRUE(IsShown(FindByText("File99.txt")));
	List->UpdateFileList();
	PumpFrame();
	EXPECT_TRUE(IsShown(FindByText("File99.txt"))) << "an update leaves the view where it was";
}

TEST_F(FChangedFilesListTest, TheConversationCanBeSetInPlaceOfTheBoundOne)
{
	AddFile(TEXT("g"), TEXT("A.h"), 1, 0);
	AddFile(TEXT("g"), TEXT("B.h"), 1, 0, TEXT("c2"));
	EXPECT_EQ(DumpRows(), (FTextList{ "Created: A.h" }));
	Conversation = TEXT("c2");
	EXPECT_EQ(DumpRows(), (FTextList{ "Created: B.h" }));
	List->SetConversationId(TEXT("c1"));
	EXPECT_EQ(DumpRows(), (FTextList{ "Created: A.h" })) << "the binding is gone";
	List->SetConversationId(FString());
	EXPECT_EQ(DumpRows(), FTextList());
	EXPECT_EQ(Utf8(GetHeader().ToString()), "Changed Files");
}
