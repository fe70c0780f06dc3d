#include "ChatWindowTest.h"
#include "FileSearchProject.h"

#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/SFileSearchDropdown.h"
#include "Widgets/Views/SListView.h"

class FChatWindowFileSearchTest : public FChatWindowTest
{
protected:
	FChatWindowFileSearchTest()
		: Project({ "src/wolf.h", "src/wolf2.cpp", "src/wolf33.ini", "src/zebra.txt", "Content/wolf4444.uasset" })
	{
	}

	void SetUp() override
	{
		FChatWindowTest::SetUp();
		Connect();
		Click(InputBox());
	}

	/** Key by key, as hands do. */
	void TypeKeys(const std::string& Text)
	{
		for (const char Key : Text)
		{
			TypeText(std::string(1, Key));
		}
	}

	using FResultList = SListView<TSharedPtr<Velmora::UI::FFileSearchResult>>;
	static bool IsOpen() { return FWidgetFinder::FindByTag(FName("FileSearchDropdown")).IsValid(); }
	static TSharedRef<SFileSearchDropdown> Dropdown() { return StaticCastSharedRef<SFileSearchDropdown>(FindByTag("FileSearchDropdown")); }

	/** The text with the cursor in it, then what is open: "see @wo¦ {wo: [wolf.h] wolf2.cpp}". */
	std::string Dump() const
	{
		FString Text = InputBox()->GetText().ToString();
		Text.InsertAt(SChatWindow::TextLocationToLinearIndexForTests(Text, InputBox()->GetCursorLocation()), TEXT("¦"));
		std::string Result = Utf8(Text);
		EXPECT_EQ(InputBox()->HasKeyboardFocus(), true) << Result;
		if (!IsOpen())
		{
			return Result;
		}
		Result += " {" + Utf8(Dropdown()->GetSearchQuery()) + ":";
		const TSharedPtr<FResultList> List = StaticCastSharedPtr<FResultList>(FindInside(*Dropdown(), "SListView"));
		for (const TSharedPtr<Velmora::UI::FFileSearchResult>& Item : List->GetItems())
		{
			const std::string Name = Utf8(FPaths::GetCleanFilename(Item->Entry.FilePath));
			Result += List->IsItemSelected(Item) ? " [" + Name + "]" : " " + Name;
		}
		return Result + "}";
	}

	FTextList GetAttached() const
	{
		FTextList Names;
		for (const FString& File : ViewModel->GetContextFiles())
		{
			Names.push_back(Utf8(FPaths::GetCleanFilename(File)));
		}
		return Names;
	}

	FFileSearchProject Project;
};

TEST_F(FChatWindowFileSearchTest, ATokenOpensTheDropdownAndItsQueryFollowsTheKeys)
{
	const std::pair<const char*, const char*> Steps[] = {
		{ "see ", "see ¦" },
		{ "@", "see @¦ {:}" },
		{ "wo", "see @wo¦ {wo: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}" },
		{ "lf2", "see @wolf2¦ {wolf2: [wolf2.cpp]}" },
		{ "BackSpace!", "see @wolf¦ {wolf: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}" },
		{ "Left!", "see @wol¦f {wolf: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}" },
		{ "Home!", "¦see @wolf" },
		{ "End!", "see @wolf¦ {wolf: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}" },
		{ " ", "see @wolf ¦" },
		{ "x", "see @wolf x¦" },
		{ "CTRL+Left!", "see @wolf ¦x" },
		{ "Left!", "see @wolf¦ x {wolf: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}" },
		{ "@", "see @wolf@¦ x {:}" },
		{ "zeb", "see @wolf@zeb¦ x {zeb: [zebra.txt]}" },
		{ "CTRL+A!", "see @wolf@zeb x¦" },
		{ "y@wolf", "y@wolf¦ {wolf: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}" },
	};
	for (const auto& [Pressed, After] : Steps)
	{
		const std::string Keys = Pressed;
		if (Keys.ends_with('!'))
		{
			PressKey(Keys.substr(0, Keys.size() - 1).c_str());
		}
		else
		{
			TypeKeys(Keys);
		}
		EXPECT_EQ(Dump(), After) << Keys;
	}
}

TEST_F(FChatWindowFileSearchTest, KeysWalkRoundAndEnterPicks)
{
	TypeKeys("see @wolf now");
	for (int Step = 0; Step < 4; ++Step)
	{
		PressKey("Left");
	}
	EXPECT_EQ(Dump(), "see @wolf¦ now {wolf: [wolf.h] wolf2.cpp wolf33.ini wolf4444.uasset}");
	PressKey("Up");
	EXPECT_EQ(Dump(), "see @wolf¦ now {wolf: wolf.h wolf2.cpp wolf33.ini [wolf4444.uasset]}");
	PressKey("Down");
	PressKey("Down");
	EXPECT_EQ(Dump(), "see @wolf¦ now {wolf: wolf.h [wolf2.cpp] wolf33.ini wolf4444.uasset}");
	PressKey("Enter");
	EXPECT_EQ(Dump(), "see wolf2.cpp¦ now");
	EXPECT_EQ(GetAttached(), (FTextList{ "wolf2.cpp" }));
	EXPECT_EQ(Utf8(ViewModel->GetContextFiles()[0]), Project.PathOf("src/wolf2.cpp"));
	PressKey("Enter");
	EXPECT_EQ(Dump(), "see wolf2.cpp\n¦ now") << "Enter makes a line again";
}

TEST_F(FChatWindowFileSearchTest, TabAndMousePickToo)
{
	TypeKeys("@zeb");
	PressKey("Tab");
	EXPECT_EQ(Dump(), "zebra.txt ¦");
	TypeKeys("@wolf");
	Click(FindByText(Project.PathOf("src/wolf33.ini")));
	EXPECT_EQ(Dump(), "zebra.txt wolf33.ini ¦") << "one click, and the keyboard is back";
	TypeKeys("@4444");
	PressKey("Enter");
	EXPECT_EQ(Dump(), "zebra.txt wolf33.ini wolf4444 ¦") << "an asset stands by its name";
	EXPECT_EQ(GetAttached(), (FTextList{ "zebra.txt", "wolf33.ini", "wolf4444.uasset" }));
	EXPECT_TRUE(IsShown(FindByText("wolf4444"))) << "its chip";
	PressKey("CTRL+Enter");
	EXPECT_EQ(Agent->Calls,
		(std::vector<std::string>{ "SendMessage 'zebra.txt wolf33.ini wolf4444 ' [" + Project.PathOf("src/zebra.txt") + ", " +
			Project.PathOf("src/wolf33.ini") + ", " + Project.PathOf("wolf4444.uasset") + "]" }));
	EXPECT_EQ(GetAttached(), FTextList());
	EXPECT_EQ(Dump(), "¦");
}

TEST_F(FChatWindowFileSearchTest, APickIsOneStepOfUndo)
{
	TypeKeys("@zeb");
	PressKey("Enter");
	PressKey("CTRL+Z");
	EXPECT_EQ(GetPrompt(), "@zeb");
}

TEST_F(FChatWindowFileSearchTest, CancelKeepsTheTokenAndTheNextKeyInItOpensAgain)
{
	TypeKeys("@wolf");
	PressKey("Down");
	PressKey("Escape");
	EXPECT_EQ(Dump(), "@wolf¦");
	PumpSeconds(0.5);
	EXPECT_EQ(Dump(), "@wolf¦") << "it does not come back by itself";
	PressKey("Left");
	EXPECT_EQ(Dump(), "@wol¦f {wolf: wolf.h [wolf2.cpp] wolf33.ini wolf4444.uasset}") << "the same query, the same place";
	PressKey("Escape");
	TypeKeys("2");
	EXPECT_EQ(Dump(), "@wol2¦f {wol2f:}");
	EXPECT_EQ(GetAttached(), FTextList());
}

TEST_F(FChatWindowFileSearchTest, KeysThatAreNotItsOwnGoToThePrompt)
{
	TypeKeys("ab @qqq");
	EXPECT_EQ(Dump(), "ab @qqq¦ {qqq:}");
	EXPECT_TRUE(IsShown(FindByText("No files found")));
	PressKey("Enter");
	PressKey("Down");
	EXPECT_EQ(Dump(), "ab @qqq¦ {qqq:}") << "with nothing to pick the keys do nothing";
	PressKey("CTRL+Enter");
	EXPECT_EQ(Agent->Calls, (std::vector<std::string>{ "SendMessage 'ab @qqq' []" })) << "sending goes before picking";
	EXPECT_EQ(Dump(), "¦");
}

TEST_F(FChatWindowFileSearchTest, PressesInThePromptMoveTheCursorAndPressesElsewhereClose)
{
	TypeKeys("word @wolf");
	const FSlateRect Box = GetRect(*InputBox());
	ClickAt(FVector2D(Box.Left + 10.0, Box.Top + 12.0));
	EXPECT_EQ(Dump(), "¦word @wolf") << "out of the token";
	PressKey("End");
	EXPECT_NE(Dump().find('{'), std::string::npos);
	ClickAt(FVector2D(Box.Right - 40.0, Box.Top + 12.0));
	EXPECT_NE(Dump().find('{'), std::string::npos) << "still at the end of the line";
	Click(FindByTag("EmptyState"));
	EXPECT_FALSE(IsOpen());
	EXPECT_EQ(GetPrompt(), "word @wolf");
}

TEST_F(FChatWindowFileSearchTest, TheDropdownStandsAboveThePromptWhateverItsSize)
{
	TypeKeys("@wolf");
	const auto Gap = [this]() { return GetRect(*FindByType("SMenuAnchor").at(0)).Top - GetRect(*Dropdown()).Bottom; };
	EXPECT_EQ(Gap(), 2.0f);
	Resize(900, 640);
	PumpFrame();
	EXPECT_EQ(Gap(), 2.0f);
	ViewModel->AddContextFile(TEXT("a.h"));
	PumpFrame();
	PumpFrame();
	EXPECT_EQ(Gap(), 2.0f);
	EXPECT_NE(Dump().find('{'), std::string::npos);
	// Less room above the prompt than five rows want.
	PressKey("CTRL+A");
	TypeKeys("@c");
	Resize(900, 240);
	PumpFrame();
	EXPECT_EQ(Gap(), 2.0f);
	EXPECT_LT(GetRect(*Dropdown()).Height(), 140.0f);
	PressKey("Up");
	PumpFrame();
	const TSharedPtr<FResultList> List = StaticCastSharedPtr<FResultList>(FindInside(*Dropdown(), "SListView"));
	EXPECT_TRUE(IsShown(FindByText(Utf8(List->GetItems().Last()->Entry.DisplayPath)))) << "the selected one is in view";
}

TEST_F(FChatWindowFileSearchTest, AFileThatIsGoneIsAttachedAllTheSame)
{
	TypeKeys("@zeb");
	const std::string Path = Project.PathOf("src/zebra.txt");
	std::filesystem::remove(Project.Folder.AtBytes("src/zebra.txt"));
	PressKey("Enter");
	EXPECT_EQ(Dump(), "zebra.txt ¦");
	EXPECT_EQ(Utf8(ViewModel->GetContextFiles()[0]), Path);
}

TEST_F(FChatWindowFileSearchTest, AClosedGateTakesTheDropdownAway)
{
	TypeKeys("@wolf");
	SetGate(EGate::Downloading);
	PumpFrame();
	PumpFrame();
	EXPECT_FALSE(IsOpen());
	SetGate(EGate::Ready);
	PumpFrame();
	EXPECT_EQ(GetPrompt(), "@wolf");
}

TEST_F(FChatWindowFileSearchTest, ALongPromptIsNoBurden)
{
	// So many lines that a walk for each of them would not end.
	std::string Text;
	while (Text.size() < 5'000'000)
	{
		Text += "a line of this prompt is as long as lines are\n";
	}
	InputBox()->SetText(FText::FromString(FString(UTF8_TO_TCHAR(Text.c_str()))));
	InputBox()->GoTo(ETextLocation::EndOfDocument);
	PumpFrame();
	TypeKeys(" @zeb");
	EXPECT_TRUE(IsOpen());
	PressKey("Enter");
	EXPECT_EQ(GetPrompt().size(), Text.size() + std::string(" zebra.txt ").size());
	EXPECT_EQ(GetAttached(), (FTextList{ "zebra.txt" }));
}

TEST_F(FChatWindowFileSearchTest, PlacesAndIndexesMapOntoEachOther)
{
	const std::tuple<const TCHAR*, FTextLocation, int32> ToIndex[] = {
		{ TEXT(""), FTextLocation(0, 0), 0 },
		{ TEXT(""), FTextLocation(3, 3), 0 },
		{ TEXT("abc"), FTextLocation(0, 0), 0 },
		{ TEXT("abc"), FTextLocation(0, 3), 3 },
		{ TEXT("abc"), FTextLocation(-4, -1), 0 },
		{ TEXT("ab\ncd\n"), FTextLocation(0, 2), 2 },
		{ TEXT("ab\ncd\n"), FTextLocation(1, 0), 3 },
		{ TEXT("ab\ncd\n"), FTextLocation(1, 2), 5 },
		{ TEXT("ab\ncd\n"), FTextLocation(2, 0), 6 },
		{ TEXT("ab\ncd\n"), FTextLocation(0, 3), 6 },
		{ TEXT("ab\ncd\n"), FTextLocation(9, 0), 6 },
		{ TEXT("a\r\nb"), FTextLocation(0, 2), 2 },
		{ TEXT("a\r\nb"), FTextLocation(1, 1), 4 },
	};
	for (const auto& [Text, Location, Index] : ToIndex)
	{
		EXPECT_EQ(SChatWindow::TextLocationToLinearIndexForTests(Text, Location), Index)
			<< Utf8(Text) << " " << Location.GetLineIndex() << ":" << Location.GetOffset();
	}
	FString Long;
	for (int32 Index = 0; Index < 1500; ++Index)
	{
		Long.AppendChar(Index % 7 == 0 || Index % 256 == 255 ? TEXT('\n') : TEXT('x'));
	}
	for (int32 Index = 0; Index <= Long.Len(); ++Index)
	{
		const FTextLocation Location = SChatWindow::LinearIndexToTextLocationForTests(Long, Index);
		ASSERT_EQ(SChatWindow::TextLocationToLinearIndexForTests(Long, Location), Index);
	}
}
