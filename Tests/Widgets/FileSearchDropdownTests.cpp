#include "FileSearchProject.h"
#include "VelmoraWidgetTest.h"

#include "FileSearch/FileSearchViewModel.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SFileSearchDropdown.h"
#include "Widgets/SFileSearchItem.h"
#include "Widgets/Views/SListView.h"

using Velmora::UI::EFileType;
using Velmora::UI::FFileIndexEntry;

class FFileSearchDropdownTest : public FVelmoraWidgetTest
{
protected:
	void ShowDropdown(const TCHAR* Query = TEXT(""))
	{
		// clang-format off
		Show(
			SNew(SBox)
			.HAlign(HAlign_Left)
			.VAlign(VAlign_Top)
			[
				SAssignNew(Dropdown, SFileSearchDropdown)
				.InitialQuery(Query)
				.OnFileSelected_Lambda([this](const FFileIndexEntry& Entry)
				{
					Picked.push_back(Utf8(FPaths::GetCleanFilename(Entry.FilePath)));
				})
				.OnCancelled_Lambda([this]() { Picked.push_back("cancelled"); })
			]);
		// clang-format on
	}

	using FResultList = SListView<TSharedPtr<Velmora::UI::FFileSearchResult>>;
	TSharedRef<FResultList> ListView() const { return StaticCastSharedPtr<FResultList>(FindInside(*Dropdown, "SListView")).ToSharedRef(); }

	/** Names of the items, the selected one in brackets. */
	std::string DumpItems() const
	{
		std::string Names;
		for (const TSharedPtr<Velmora::UI::FFileSearchResult>& Item : ListView()->GetItems())
		{
			const std::string Name = Utf8(FPaths::GetCleanFilename(Item->Entry.FilePath));
			const bool bSelected = ListView()->IsItemSelected(Item);
			Names += (Names.empty() ? "" : " ") + (bSelected ? "[" + Name + "]" : Name);
		}
		return Names;
	}

	FTextList TakePicked()
	{
		FTextList Taken;
		Taken.swap(Picked);
		return Taken;
	}

	TSharedPtr<SFileSearchDropdown> Dropdown;
	FTextList Picked;
};

TEST_F(FFileSearchDropdownTest, ShowsTheBestMatchesAndSelectsTheFirst)
{
	const FFileSearchProject Project({ "src/wolf.h", "src/wolf2.cpp", "src/sub/wolf33.ini", "other.txt" });
	ShowDropdown();
	EXPECT_EQ(VisibleTexts(), FTextList()) << "no query, no words";
	EXPECT_EQ(GetRect(*Dropdown).Width(), 408.0f);
	Dropdown->SetSearchQuery(TEXT("wolf"));
	PumpFrame();
	EXPECT_EQ(DumpItems(), "[wolf.h] wolf2.cpp wolf33.ini");
	Dropdown->NavigateNext();
	EXPECT_EQ(DumpItems(), "wolf.h [wolf2.cpp] wolf33.ini");
	Dropdown->SetSearchQuery(TEXT("wolf"));
	EXPECT_EQ(DumpItems(), "wolf.h [wolf2.cpp] wolf33.ini") << "the query is the same";
	Dropdown->SetSearchQuery(TEXT("Wolf"));
	EXPECT_EQ(DumpItems(), "[wolf.h] wolf2.cpp wolf33.ini");
	EXPECT_EQ(Utf8(Dropdown->GetSearchQuery()), "Wolf");
	Dropdown->SetSearchQuery(TEXT("qqq"));
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "No files found" }));
}

TEST_F(FFileSearchDropdownTest, AnInitialQueryIsSearchedForAtOnce)
{
	const FFileSearchProject Project({ "wolf.h", "wolf2.h" });
	ShowDropdown(TEXT("wolf"));
	EXPECT_EQ(DumpItems(), "[wolf.h] wolf2.h");
	Dropdown->SelectCurrentItem();
	EXPECT_EQ(TakePicked(), (FTextList{ "wolf.h" }));
}

TEST_F(FFileSearchDropdownTest, TheMousePicksAndTheKeyboardSelectionStaysInView)
{
	std::vector<std::string> Files;
	for (int Index = 10; Index < 90; ++Index)
	{
		Files.push_back("wolf" + std::to_string(Index) + ".h");
	}
	const FFileSearchProject Project(Files);
	ShowDropdown(TEXT("wolf"));
	EXPECT_EQ(static_cast<int32>(ListView()->GetItems().Num()), 50);
	EXPECT_EQ(GetRect(*Dropdown).Height(), 408.0f);
	EXPECT_LT(ListView()->GetNumGeneratedChildren(), 20) << "rows are made for what is in view";
	Dropdown->NavigatePrevious();
	PumpFrame();
	EXPECT_EQ(DumpItems().find("[wolf59.h]"), DumpItems().size() - 10);
	Click(FindByText(Project.PathOf("wolf58.h")));
	EXPECT_EQ(TakePicked(), (FTextList{ "wolf58.h" }));
	Dropdown->SetSearchQuery(TEXT("wol"));
	PumpFrame();
	PumpFrame();
	EXPECT_TRUE(IsShown(FindByText(Project.PathOf("wolf10.h")))) << "new results stand at their best";
}

/** Alone in its process when the suites run one by one: the index is ready from the first scan on. */
using FFileSearchFirstScan = FFileSearchDropdownTest;

TEST_F(FFileSearchFirstScan, SaysThatThereIsNoIndexYet)
{
	if (Velmora::FProjectFileCache::Get().IsReady())
	{
		GTEST_SKIP() << "another test has scanned already";
	}
	ShowDropdown();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "File index not ready" })) << "whatever the query";
	Dropdown->SetSearchQuery(TEXT("wolf"));
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "File index not ready" }));

	const FFileSearchProject Project({ "d/wolf1.h", "d/wolf3999.h" });
	Project.Rescan();
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "No files found" })) << "until a different query comes";
	Dropdown->SetSearchQuery(TEXT("wolf3999"));
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ Project.PathOf("wolf3999.h") }));
}

using FFileSearchItemTest = FVelmoraWidgetTest;

TEST_F(FFileSearchItemTest, LooksFollowKindAndSelection)
{
	const std::tuple<bool, EFileType, const char*> Cases[] = {
		{ false, EFileType::Code, "ClassIcon.C" },
		{ false, EFileType::Asset, "ClassIcon.BlueprintCore" },
		{ false, EFileType::Config, "Icons.Settings" },
		{ false, EFileType::Other, "Icons.GenericFile" },
		{ false, static_cast<EFileType>(9), "Icons.GenericFile" },
		{ true, EFileType::Code, "Icons.FolderClosed" },
	};
	TSharedPtr<SFileSearchItem> Item;
	for (const auto& [bIsDirectory, Type, Icon] : Cases)
	{
		FFileIndexEntry Entry;
		Entry.DisplayPath = TEXT("Source/Shown");
		Entry.FilePath = TEXT("Source/Shown.x");
		Entry.bIsDirectory = bIsDirectory;
		Entry.FileType = Type;
		// clang-format off
		Show(
			SNew(SBox)
			.HAlign(HAlign_Left)
			.VAlign(VAlign_Top)
			[
				SAssignNew(Item, SFileSearchItem)
				.FileEntry(Entry)
				.SearchQuery(TEXT("own"))
			]);
		// clang-format on
		EXPECT_TRUE(PaintedIn(*Item, ESlateDrawType::Image).at(0).starts_with(std::string(Icon) + " "))
			<< PaintedIn(*Item, ESlateDrawType::Image).at(0);
		EXPECT_EQ(VisibleTexts(), (FTextList{ "Source/Shown" }));
	}
	const auto Back = [&Item]() -> std::string
	{
		FTextList Boxes = PaintedIn(*Item, ESlateDrawType::Box);
		for (const std::string& Card : PaintedIn(*Item, ESlateDrawType::RoundedBox))
		{
			Boxes.push_back(Card);
		}
		return Boxes.empty() ? "none" : Boxes[0];
	};
	EXPECT_EQ(Back(), "none");
	const FTextList Plain = PaintedIn(*FindByText("Source/Shown"), ESlateDrawType::Glyphs);
	Hover(Item.ToSharedRef());
	EXPECT_EQ(Back(), Hex(FVelmoraUIStyles::FromHexSRGB(TEXT("2B2A2A")).CopyWithNewOpacity(0.5f)));
	Item->SetIsSelected(true);
	PumpFrame();
	EXPECT_EQ(Back(), Hex(FVelmoraUIStyles::FromHexSRGB(TEXT("95E7FFFF")) * 0.6f)) << "selected goes before hovered";
	EXPECT_EQ(PaintedIn(*FindByText("Source/Shown"), ESlateDrawType::Glyphs), (FTextList{ "FFFFFFFF" }));
	EXPECT_NE(Plain, (FTextList{ "FFFFFFFF" }));
}
