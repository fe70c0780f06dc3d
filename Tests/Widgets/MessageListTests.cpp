#include "Widgets/SMessageList.h"

#include "VelmoraWidgetTest.h"
#include "Widgets/Layout/SScrollBox.h"

#include <algorithm>
#include <set>

class FMessageListTest : public FVelmoraWidgetTest
{
protected:
	using FMessages = TArray<TSharedPtr<FChatMessage>>;

	static FMessages MakeMessages(int32 Count)
	{
		FMessages Messages;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Messages.Add(FChatMessage::CreateUserMessage(FString::Printf(TEXT("message %d"), Index)));
		}
		return Messages;
	}

	static FMessages First(const FMessages& Messages, int32 Count)
	{
		FMessages Result;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Result.Add(Messages[Index]);
		}
		return Result;
	}

	/** An answer that is still being typed: dots stand under the last row alone. */
	static FMessages MakeAnswers(int32 Count)
	{
		FMessages Messages;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Messages.Add(FChatMessage::CreateAIMessage(FString::Printf(TEXT("message %d"), Index), false));
			Messages.Last()->bIsComplete = false;
		}
		return Messages;
	}

	static TSharedRef<SScrollBox> BoxOf(SMessageList& List)
	{
		return StaticCastSharedPtr<SScrollBox>(FindInside(List, "SScrollBox")).ToSharedRef();
	}

	static std::vector<SWidget*> GetRows(SMessageList& List)
	{
		std::vector<SWidget*> Rows;
		for (int32 Index = 0; Index < BoxOf(List)->NumSlots(); ++Index)
		{
			Rows.push_back(&BoxOf(List)->GetSlot(Index).GetWidget().Get());
		}
		return Rows;
	}

	/** "message 0, message 1...": the texts of the rows, with dots where they are shown. */
	std::string DumpRows(SMessageList& List)
	{
		PumpSeconds(0.2);
		std::string Rows;
		for (const std::string& Text : VisibleTexts())
		{
			Rows += Text == "..." ? Text : Text.starts_with("message") ? (Rows.empty() ? "" : ", ") + Text : "";
		}
		return Rows;
	}

	static bool IsAtEnd(SMessageList& List)
	{
		const float End = BoxOf(List)->GetScrollOffsetOfEnd();
		return End > 100.0f && BoxOf(List)->GetScrollOffset() == End;
	}
};

TEST_F(FMessageListTest, GrowingAppends)
{
	const FMessages Messages = MakeAnswers(5);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(First(Messages, 3));
	Show(List);
	EXPECT_EQ(DumpRows(*List), "message 0, message 1, message 2...");
	const std::vector<SWidget*> Before = GetRows(*List);
	ASSERT_EQ(Before.size(), 3u);
	List->SetMessages(Messages);
	const std::vector<SWidget*> After = GetRows(*List);
	ASSERT_EQ(After.size(), 5u);
	EXPECT_TRUE(std::equal(Before.begin(), Before.end(), After.begin()));
	EXPECT_EQ(DumpRows(*List), "message 0, message 1, message 2..., message 3, message 4...")
		<< "the flag of a former last row is not cleared";
}

TEST_F(FMessageListTest, RowsFarFromTheEndAreMadeWhenTheyAreShown)
{
	FMessages Messages = MakeMessages(600);
	Messages[1] = MakeAnswers(1)[0];
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	Show(List);
	PumpSeconds(0.5);
	EXPECT_TRUE(IsAtEnd(*List));
	const std::vector<SWidget*> Rows = GetRows(*List);
	ASSERT_EQ(Rows.size(), 600u);
	const auto IsMade = [&Rows](size_t Index) { return FindInside(*Rows[Index], "SMarkdownTextBlock").IsValid(); };
	// The first frames show the beginning, before the end is known; what lies between has not been shown.
	EXPECT_FALSE(IsMade(100));
	EXPECT_TRUE(IsMade(1)) << "its text may still change";
	EXPECT_FALSE(IsMade(399));
	EXPECT_TRUE(IsMade(400));

	List->ScrollToTop();
	PumpSeconds(0.5);
	const FTextList Shown = VisibleTexts();
	EXPECT_NE(std::find(Shown.begin(), Shown.end(), "message 2"), Shown.end());
	EXPECT_TRUE(IsMade(0));
	EXPECT_EQ(Rows[0]->GetDesiredSize(), Rows[599]->GetDesiredSize());
	EXPECT_FALSE(IsMade(300)) << "nobody has looked there";
	EXPECT_EQ(BoxOf(*List)->GetScrollOffset(), 0.0f);

	// Up from the end, a page at a time, every message comes by.
	List->ScrollToBottom();
	PumpSeconds(0.5);
	std::set<std::string> Seen;
	for (int32 Page = 0; Page < 300 && Seen.size() < 599; ++Page)
	{
		for (const std::string& Text : VisibleTexts())
		{
			if (Text.starts_with("message "))
			{
				Seen.insert(Text);
			}
		}
		Scroll(List, 6.0f);
	}
	EXPECT_TRUE(IsMade(100));
	EXPECT_EQ(Rows[100]->GetDesiredSize(), Rows[599]->GetDesiredSize());
	EXPECT_EQ(Seen.size(), 599u) << "two are called message 0, and there is no message 1";
}

TEST_F(FMessageListTest, OneLessRemovesTheLastRow)
{
	const FMessages Messages = MakeMessages(3);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	std::vector<SWidget*> Before = GetRows(*List);
	List->SetMessages(First(Messages, 2));
	Before.pop_back();
	EXPECT_EQ(GetRows(*List), Before);
	List->SetMessages(Messages);
	EXPECT_EQ(GetRows(*List).size(), 3u) << "and comes back";
}

TEST_F(FMessageListTest, ALargerDropRebuilds)
{
	const FMessages Messages = MakeMessages(3);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	const TSharedRef<SWidget> FirstRow = BoxOf(*List)->GetSlot(0).GetWidget();
	List->SetMessages(First(Messages, 1));
	ASSERT_EQ(GetRows(*List).size(), 1u);
	EXPECT_NE(GetRows(*List)[0], &FirstRow.Get());
	List->SetMessages({});
	EXPECT_EQ(GetRows(*List).size(), 0u);
}

TEST_F(FMessageListTest, TheSameCountChangesNoRow)
{
	const FMessages Messages = MakeMessages(2);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	const std::vector<SWidget*> Before = GetRows(*List);
	List->SetMessages({ FChatMessage::CreateUserMessage(TEXT("a")), FChatMessage::CreateUserMessage(TEXT("b")) });
	EXPECT_EQ(GetRows(*List), Before);
	const FTextList Texts = TextsIn(*GetRows(*List)[0]);
	EXPECT_NE(std::find(Texts.begin(), Texts.end(), "message 0"), Texts.end());
}

TEST_F(FMessageListTest, NullEntriesCountAndHaveNoRow)
{
	FMessages Messages = MakeAnswers(2);
	Messages.Add(nullptr);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	Show(List);
	ASSERT_EQ(GetRows(*List).size(), 2u);
	EXPECT_EQ(DumpRows(*List), "message 0, message 1") << "neither is the last one";
	List->SetMessages(First(Messages, 2));
	EXPECT_EQ(GetRows(*List).size(), 1u) << "the last real row goes";
}

TEST_F(FMessageListTest, TheThirdTickReachesTheEnd)
{
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(MakeMessages(40));
	App().SetRootContent(List);
	for (int32 Tick = 1; Tick <= 2; ++Tick)
	{
		PumpFrame();
		EXPECT_EQ(BoxOf(*List)->GetScrollOffset(), 0.0f) << Tick;
	}
	PumpFrame();
	PumpFrame();
	EXPECT_TRUE(IsAtEnd(*List));

	List->ScrollToTop();
	PumpFrame();
	PumpFrame();
	EXPECT_EQ(BoxOf(*List)->GetScrollOffset(), 0.0f);
	EXPECT_TRUE(List->IsScrolledToBottom()) << "the offset is not measured";
}

TEST_F(FMessageListTest, EveryChangeFollowsTheEnd)
{
	FMessages Messages = MakeMessages(40);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	Show(List);
	PumpSeconds(0.2);
	Scroll(List, 20.0f);
	PumpSeconds(0.5);
	EXPECT_FALSE(IsAtEnd(*List));
	Messages.Add(FChatMessage::CreateUserMessage(TEXT("the newest")));
	List->SetMessages(Messages);
	PumpSeconds(0.2);
	EXPECT_TRUE(IsAtEnd(*List));
	EXPECT_LE(GetRect(*FindByText("the newest")).Bottom, 800.0f);
}

TEST_F(FMessageListTest, WithoutAutoScrollOnlyARequestScrolls)
{
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(MakeMessages(40)).AutoScroll(false);
	Show(List);
	List->ScrollToTop();
	PumpSeconds(0.2);
	const float Before = BoxOf(*List)->GetScrollOffset();
	List->SetMessages(MakeMessages(41));
	PumpSeconds(0.2);
	EXPECT_EQ(BoxOf(*List)->GetScrollOffset(), Before);
	EXPECT_FALSE(IsAtEnd(*List));
	List->ScrollToBottom();
	PumpSeconds(0.2);
	EXPECT_TRUE(IsAtEnd(*List));
}

TEST_F(FMessageListTest, RowsAskAndTellTheOwnerOfTheList)
{
	TArray<TSharedPtr<FChatMessage>> Undone;
	bool bCanUndo = false;
	const FMessages Messages = MakeMessages(2);
	Messages[1]->TransactionId = TEXT("t1");
	const TSharedRef<SMessageList> List = SNew(SMessageList)
											  .Messages(Messages)
											  .CanUndo_Lambda([&bCanUndo] { return bCanUndo; })
											  .OnUndoToMessage_Lambda([&Undone](TSharedPtr<FChatMessage> Message) { Undone.Add(Message); });
	List->SetCanUndo(true);
	Show(List);
	Click(FindByTag("UndoButton"));
	EXPECT_EQ(Undone.Num(), 0) << "rows ask the delegate";
	bCanUndo = true;
	Click(FindByTag("UndoButton"));
	ASSERT_EQ(Undone.Num(), 1);
	EXPECT_EQ(Undone[0], Messages[1]);
}
