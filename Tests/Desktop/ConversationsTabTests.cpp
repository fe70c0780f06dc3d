#include "Agent/Agent.h"
#include "Agent/AgentBuilder.h"
#include "ConversationItems.h"
#include "Desktop/ProgramDriver.h"
#include "Desktop/WorkerTest.h"
#include "ExcerptText.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostPaths.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFolder.h"
#include "Host/StoreLocation.h"
#include "SConversations.h"
#include "Support/Base/TempFolder.h"
#include "Widgets/Input/SEditableTextBox.h"

#include <algorithm>
#include <fstream>

using Velmora::FConversationHit;
using Velmora::FConversationMark;
using Velmora::FConversationSearchResult;
using Velmora::FStoredConversations;

namespace
{
	FConversationItems::FRead MakeRead(std::initializer_list<const TCHAR*> Ids)
	{
		FConversationItems::FRead Read;
		for (const TCHAR* const Id : Ids)
		{
			FConversationItem& Item = Read.Stored.AddDefaulted_GetRef();
			Item.Id = Id;
			Item.Title = FString(TEXT("about ")) + Id;
		}
		return Read;
	}

	/** "title" or "title: excerpt" of each row; pinned ones with a star. */
	FTextList ListRows(const FConversationItems& Items)
	{
		FTextList Rows;
		for (const FConversationItems::FItem& Item : Items.GetShown())
		{
			Rows.push_back((Item->bIsPinned ? "*" : "") + Utf8(Item->Title) + (Item->Excerpt.IsEmpty() ? "" : ": " + Utf8(Item->Excerpt)));
		}
		return Rows;
	}
}

TEST(ConversationItems, ShowPinsNamesHitsAndHideWhatIsDeleted)
{
	FConversationItems Items;
	FConversationItems::FRead Read = MakeRead({ TEXT("a"), TEXT("b"), TEXT("c") });
	Read.Marks.Add(TEXT("c"), FConversationMark{ FString(), true });
	Items.Take(MoveTemp(Read));
	EXPECT_EQ(ListRows(Items), (FTextList{ "*about c", "about a", "about b" }));
	Items.SetMark(TEXT("b"), FConversationMark{ TEXT("Snails"), true });
	EXPECT_EQ(ListRows(Items), (FTextList{ "*Snails", "*about c", "about a" }));
	Items.SetHidden(TEXT("c"), true);
	EXPECT_EQ(ListRows(Items), (FTextList{ "*Snails", "about a" }));
	EXPECT_EQ(Items.GetStoredCount(), 2);

	// A search lists what is called so before what is said; the deleted one is in neither.
	FConversationSearchResult Result;
	Result.Query = TEXT(" snail ");
	for (const TCHAR* const Id : { TEXT("a"), TEXT("c"), TEXT("new") })
	{
		FConversationHit& Hit = Result.Hits.AddDefaulted_GetRef();
		Hit.ConversationId = Id;
		Hit.Excerpt = TEXT("a snail");
	}
	Items.TakeHits(Result);
	EXPECT_EQ(ListRows(Items), (FTextList{ "*Snails", "about a: a snail", "New Conversation: a snail" }));
	Items.SetHidden(TEXT("c"), false);
	EXPECT_EQ(ListRows(Items).size(), 4u);
	Items.TakeHits(FConversationSearchResult());
	EXPECT_EQ(ListRows(Items), (FTextList{ "*Snails", "*about c", "about a" }));
}

TEST(ExcerptText, ShowsWhatIsReadWithThePlacesWhereTheyAre)
{
	const struct
	{
		const char* Excerpt;
		/** What is looked for: every place of it is one of the hits. */
		const char* Sought;
		/** The hits in brackets. */
		const char* Shown;
	} Rows[] = {
		{ "a plain line", "line", "a plain [line]" },
		{ "11 lines ```cpp int Run(int Count) { **a; }", "Count", "11 lines int Run(int [Count]) { **a; }" },
		{ "~~~ x ``` y ~~~ *z*", "x", "[x] ``` y z" },
		{ "\u2026it ends. ``` Then **this**", "this", "\u2026it ends. Then [this]" },
		{ "say ```cpp x", "cpp", "say [cpp] x" },
		{ "**Bold**, *thin*, ~~gone~~ and `code *x*`", "x", "Bold, thin, gone and code *[x]*" },
		{ "2 * 3 * 4, a*b*c, **open", "3", "2 * [3] * 4, a*b*c, **open" },
		{ "## Head of it # Next C# #tag", "Next", "Head of it [Next] C# #tag" },
		{ "see [the file](Source/Thing.h:7), ![a map](m.png)", "file", "see the [file], a map" },
		{ "see [the file](Source/Thing.h)", "Thing", "see [the file](Source/[Thing].h)" },
		{ "see [the file](Source/Th\u2026", "file", "see the [file]\u2026" },
		{ "a[1] and [x] (y)", "1", "a[[1]] and [x] (y)" },
		{ "| A | B | |---|:--| | 1 | 2 | - x --- y", "2", "A | B | | 1 | [2] | - x y" },
		{ "\u2026 | 1 | 2 |", "2", "\u20261 | [2] " },
		{ "Read it. See x. |\u2026", "See", "Read it. [See] x. \u2026" },
		{ "a | b, x|", "b", "a | [b], x|" },
		{ "", "x", "" },
	};
	for (const auto& Row : Rows)
	{
		const FString Excerpt = UTF8_TO_TCHAR(Row.Excerpt);
		const FString Sought = UTF8_TO_TCHAR(Row.Sought);
		TArray<Velmora::FFoundPlace> Places;
		for (int32 At = Excerpt.Find(Sought, ESearchCase::CaseSensitive); At != INDEX_NONE;
			 At = Excerpt.Find(Sought, ESearchCase::CaseSensitive, ESearchDir::FromStart, At + 1))
		{
			Places.Add({ At, Sought.Len() });
		}
		FString Shown = ExcerptText::MakePlain(Excerpt, Places);
		for (int32 Index = Places.Num() - 1; Index >= 0; --Index)
		{
			Shown.InsertAt(Places[Index].Begin + Places[Index].Length, TEXT(']'));
			Shown.InsertAt(Places[Index].Begin, TEXT('['));
		}
		EXPECT_EQ(Utf8(Shown), Row.Shown) << Row.Excerpt;
	}
}

TEST(ConversationDeletions, EachHasItsTimeAndTheLatestIsTakenBack)
{
	FConversationDeletions Deletions;
	Deletions.Add(TEXT("a"), TEXT("A"), 100.0);
	Deletions.Add(TEXT("b"), TEXT("B"), 104.0);
	EXPECT_EQ(Deletions.TakeDue(109.9).Num(), 0);
	const TArray<FString> Due = Deletions.TakeDue(110.0);
	ASSERT_EQ(Due.Num(), 1);
	EXPECT_EQ(Utf8(Due[0]), "a");
	ASSERT_TRUE(Deletions.GetLatest());
	EXPECT_EQ(Utf8(Deletions.TakeBack()), "b");
	EXPECT_EQ(Utf8(Deletions.TakeBack()), "");
	EXPECT_EQ(Deletions.TakeDue(1000.0).Num(), 0) << "What was taken back is never deleted.";
}

namespace
{
	/** The tab with stored conversations of its own and no chat beside it. */
	class FConversationsTabTest : public FWorkerTest
	{
	protected:
		void SetUp() override
		{
			FWidgetTest::SetUp();
			FHostPaths::SetEngineSavedDir(UTF8_TO_TCHAR(Folder.AtBytes("data").c_str()));
			std::filesystem::create_directories(Folder.AtBytes("project"));
			Velmora::SetProjectFolder(UTF8_TO_TCHAR(Folder.AtBytes("project").c_str()));
		}
		void TearDown() override
		{
			Tab.Reset();
			EndWork();
			Velmora::SetProjectFolder(FString());
			FWidgetTest::TearDown();
		}

		/** Conversations as an agent stores them, the last one said last. */
		void Say(std::initializer_list<const char*> Texts)
		{
			const TSharedPtr<Velmora::FAgent> Agent = FAgentBuilder::CreateDefault();
			for (const char* const Text : Texts)
			{
				Agent->StartConversation(Velmora::EConversationMode::General);
				ASSERT_TRUE(Agent->SendMessage(UTF8_TO_TCHAR(Text), TArray<FString>()));
				ASSERT_TRUE(Wait([&Agent] { return Agent->GetState() == Velmora::EConversationState::AwaitingInput; })) << Text;
			}
			// A worker stores it, possibly after the agent has answered.
			ASSERT_TRUE(Wait([&Texts] { return CountStored() == Texts.size(); }));
		}
		void Open()
		{
			Tab = SNew(SConversations);
			Show(Tab.ToSharedRef());
			ASSERT_TRUE(Wait([this] { return StatusIs("conversation"); }));
		}
		bool WaitForRow(const std::string& Text)
		{
			return Wait([&Text] { return IsOnScreen(Text); });
		}
		static bool IsOnScreen(const std::string& Part)
		{
			const FTextList Texts = VisibleTexts();
			return std::any_of(
				Texts.begin(), Texts.end(), [&Part](const std::string& Text) { return Text.find(Part) != std::string::npos; });
		}
		static bool StatusIs(const std::string& Part)
		{
			return Utf8(FindByTag("ConversationsStatus")->GetDisplayedText()).find(Part) != std::string::npos;
		}
		static size_t CountStored() { return static_cast<size_t>(FConversationItems::Read().Stored.Num()); }

		FTempFolder Folder;
		TSharedPtr<SConversations> Tab;
	};
}

TEST_F(FConversationsTabTest, ConversationsAreFoundRenamedAndPinned)
{
	Say({ "help me with snails", "count the beetles" });
	Open();
	EXPECT_TRUE(StatusIs("2 conversations"));
	EXPECT_TRUE(FindByTag("ConversationSearch")->HasKeyboardFocus()) << "one types at once";
	TypeText("beet");
	ASSERT_TRUE(WaitForRow("count the beetles"));
	EXPECT_TRUE(Wait([] { return StatusIs("found") && !IsOnScreen("help me with snails"); }));
	PressKey("Escape");
	EXPECT_TRUE(WaitForRow("help me with snails"));
	TypeText("wasp");
	EXPECT_TRUE(WaitForRow("No message has words that begin with \xE2\x80\x9Cwasp\xE2\x80\x9D."));
	PressKey("Escape");
	ASSERT_TRUE(WaitForRow("help me with snails"));

	// By the keyboard alone: to the list, down to the older one, pinned, renamed.
	PressKey("Down");
	PressKey("Down");
	PressKey("CTRL+P");
	PressKey("F2");
	EXPECT_TRUE(FindByTag("ConversationName")->HasKeyboardFocus());
	TypeText("Molluscs");
	PressKey("Enter");
	EXPECT_TRUE(IsOnScreen("Molluscs"));
	EXPECT_LT(GetRect(*FindByText("Molluscs")).Top, GetRect(*FindByText("count the beetles")).Top);
	EXPECT_TRUE(FindByTag("ConversationList")->HasKeyboardFocus());
	ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
	const TMap<FString, FConversationMark> Marks = FStoredConversations::ReadMarks();
	ASSERT_EQ(Marks.Num(), 1);
	for (const TPair<FString, FConversationMark>& Mark : Marks)
	{
		EXPECT_EQ(Utf8(Mark.Value.Name), "Molluscs");
		EXPECT_TRUE(Mark.Value.bIsPinned);
	}
	// Found by the name, too; Escape while naming changes nothing.
	PressKey("F2");
	TypeText("Other");
	PressKey("Escape");
	PressKey("CTRL+F");
	TypeText("mollu");
	EXPECT_TRUE(Wait([] { return StatusIs("1 found"); }));
	EXPECT_TRUE(IsOnScreen("Molluscs"));
}

TEST_F(FConversationsTabTest, ADeletionCanBeTakenBackForTenSeconds)
{
	Say({ "help me with snails", "count the beetles" });
	Open();
	PressKey("Down");
	PressKey("Delete");
	EXPECT_TRUE(StatusIs("1 conversation"));
	EXPECT_TRUE(IsOnScreen("Deleted: count the beetles"));
	// Also from the box above the list, as long as nothing is written in it.
	PressKey("CTRL+F");
	PressKey("CTRL+Z");
	EXPECT_TRUE(StatusIs("2 conversations"));
	EXPECT_FALSE(IsOnScreen("Deleted: "));
	LetTimePass(11.0);
	EXPECT_EQ(CountStored(), 2u) << "what was taken back stays";

	// It is the selected one again.
	Click(FindByTag("DeleteConversation"));
	EXPECT_TRUE(IsOnScreen("Deleted: count the beetles"));
	LetTimePass(9.0);
	EXPECT_EQ(CountStored(), 2u);
	EXPECT_GT(CountFrames(1.5), 0) << "the strip goes in a window that nobody touches, too";
	EXPECT_TRUE(Wait([] { return CountStored() == 1; }));
	EXPECT_FALSE(IsOnScreen("Deleted: "));

	// What was found in it alone says what can be done, not that it was never there.
	PressKey("CTRL+F");
	TypeText("snails");
	ASSERT_TRUE(Wait([] { return StatusIs("found") && !StatusIs("searching"); }));
	PressKey("Down");
	PressKey("Delete");
	EXPECT_TRUE(IsOnScreen("No other message has words that begin with \xE2\x80\x9Csnails\xE2\x80\x9D. Undo (Ctrl+Z) brings"));
	PressKey("CTRL+Z");
	EXPECT_FALSE(IsOnScreen("No other message"));
	PressKey("CTRL+F");
	PressKey("Escape");
	ASSERT_TRUE(WaitForRow("1 conversation"));

	// Closing the tab takes the way back away.
	Click(FindByText("help me with snails"));
	Click(FindByTag("DeleteConversation"));
	EXPECT_TRUE(IsOnScreen("Every conversation is deleted. Undo (Ctrl+Z) brings \xE2\x80\x9Chelp me with snails\xE2\x80\x9D back."));
	App().SetRootContent(SNullWidget::NullWidget);
	Tab.Reset();
	PumpFrame(); // The layers hold what they painted until they paint anew.
	ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
	EXPECT_EQ(CountStored(), 0u);
}

TEST_F(FConversationsTabTest, AStoreThatCannotBeSearchedIsTold)
{
	const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
	std::filesystem::create_directories(Folder.AtBytes("data/Velmora"));
	std::ofstream(TCHAR_TO_UTF8(*Location.GetDatabasePath())) << "no database";
	// An index that cannot be made either.
	std::filesystem::create_directories(std::string(TCHAR_TO_UTF8(*Location.GetSearchPath())) + "/in the way");
	Tab = SNew(SConversations);
	Show(Tab.ToSharedRef());
	TypeText("snail");
	EXPECT_TRUE(Wait([] { return StatusIs("The conversations could not be searched"); }));
}

TEST(ConversationsInProgram, AreOpenedExportedAndDeletedByKeys)
{
	const FRandomProject Project;
	const std::string Script = Project.Write("steps.txt",
		"type create one.md with \"first\"\nkey CTRL+ENTER\nwait idle 30\n"
		"click New\nwait idle 30\ntype create two.md with \"second\"\nkey CTRL+ENTER\nwait idle 30\ntype a draft\n"
		"click Window\nclick Conversations\nwait idle 30\ntype first\nwait idle 30\nkey DOWN\n"
		"click #ExportConversation\nanswer file out.md\nwait idle 30\n"
		"key CTRL+F\nkey DOWN\nkey ENTER\nwait idle 30\ndump opened.json\n"
		"click Window\nclick Conversations\nwait idle 30\nkey DOWN\nkey DELETE\nwait idle 30\ndump deleted.json\n");
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", Script }, "", Project.OutFolder.string(),
		{ "XDG_DATA_HOME=" + Project.Path("data") });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("out.md")), "create one.md with"));
	const std::string Opened = ReadFile(Project.Path("opened.json"));
	EXPECT_TRUE(Contains(Opened, "create one.md with")) << Opened;
	EXPECT_FALSE(Contains(Opened, "create two.md with")) << Opened;
	EXPECT_TRUE(Contains(Opened, "\"promptText\": \"a draft\"")) << "what was not sent stays";
	// The open one goes out of the chat at once, so that nothing is said into what is deleted.
	EXPECT_FALSE(Contains(ReadFile(Project.Path("deleted.json")), "\"type\": \"User\""));
}
