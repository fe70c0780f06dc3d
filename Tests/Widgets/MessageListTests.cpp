#include "Widgets/SMessageList.h"

#include "VelmoraWidgetTest.h"
#include "Widgets/Layout/SScrollBox.h"

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

	static std::vector<SMessageRow*> GetRows(const SMessageList& List)
	{
		std::vector<SMessageRow*> Rows;
		for (int32 Index = 0; Index < List.ScrollBox->NumSlots(); ++Index)
		{
			Rows.push_back(static_cast<SMessageRow*>(&List.ScrollBox->GetSlot(Index).GetWidget().Get()));
		}
		return Rows;
	}

	static bool IsAtEnd(const SMessageList& List)
	{
		const float End = List.ScrollBox->GetScrollOffsetOfEnd();
		return End > 100.0f && List.ScrollBox->GetScrollOffset() == End;
	}
};

TEST_F(FMessageListTest, GrowingAppends)
{
	const FMessages Messages = MakeMessages(5);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(First(Messages, 3));
	const std::vector<SMessageRow*> Before = GetRows(*List);
	ASSERT_EQ(Before.size(), 3u);
	List->SetMessages(Messages);
	const std::vector<SMessageRow*> After = GetRows(*List);
	ASSERT_EQ(After.size(), 5u);
	EXPECT_TRUE(std::equal(Before.begin(), Before.end(), After.begin()));
	for (int32 Index = 0; Index < 5; ++Index)
	{
		EXPECT_EQ(After[Index]->Message, Messages[Index]);
	}
	EXPECT_TRUE(After[4]->bIsLatestMessage);
	EXPECT_FALSE(After[3]->bIsLatestMessage);
	EXPECT_TRUE(After[2]->bIsLatestMessage) << "the flag of a former last row is not cleared";
}

TEST_F(FMessageListTest, OneLessRemovesTheLastRow)
{
	const FMessages Messages = MakeMessages(3);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	std::vector<SMessageRow*> Before = GetRows(*List);
	List->SetMessages(First(Messages, 2));
	Before.pop_back();
	EXPECT_EQ(GetRows(*List), Before);
	EXPECT_EQ(List->LastMessageCount, 2);
}

TEST_F(FMessageListTest, ALargerDropRebuilds)
{
	const FMessages Messages = MakeMessages(3);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	const TSharedRef<SWidget> FirstRow = List->ScrollBox->GetSlot(0).GetWidget();
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
	const std::vector<SMessageRow*> Before = GetRows(*List);
	List->SetMessages(MakeMessages(2));
	EXPECT_EQ(GetRows(*List), Before);
	EXPECT_EQ(GetRows(*List)[0]->Message, Messages[0]);
}

TEST_F(FMessageListTest, NullEntriesCountAndHaveNoRow)
{
	FMessages Messages = MakeMessages(2);
	Messages.Add(nullptr);
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	ASSERT_EQ(GetRows(*List).size(), 2u);
	EXPECT_FALSE(GetRows(*List)[1]->bIsLatestMessage);
	EXPECT_EQ(List->LastMessageCount, 3);
	List->SetMessages(First(Messages, 2));
	EXPECT_EQ(GetRows(*List).size(), 1u) << "the last real row goes";
}

TEST_F(FMessageListTest, TheThirdTickReachesTheEnd)
{
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(MakeMessages(40));
	App().SetRootContent(List);
	PumpFrame();
	EXPECT_TRUE(List->bPendingScrollToBottom);
	EXPECT_EQ(List->ScrollDelayFrames, 1);
	PumpFrame();
	EXPECT_EQ(List->ScrollDelayFrames, 0);
	EXPECT_TRUE(List->bPendingScrollToBottom);
	PumpFrame();
	EXPECT_FALSE(List->bPendingScrollToBottom);
	PumpFrame();
	EXPECT_TRUE(IsAtEnd(*List));

	List->ScrollToTop();
	PumpFrame();
	PumpFrame();
	EXPECT_EQ(List->ScrollBox->GetScrollOffset(), 0.0f);
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
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(MakeMessages(3)).AutoScroll(false);
	List->SetMessages(MakeMessages(4));
	EXPECT_FALSE(List->bPendingScrollToBottom);
	List->ScrollToBottom();
	EXPECT_TRUE(List->bPendingScrollToBottom);
	EXPECT_EQ(List->ScrollDelayFrames, 2);
}

TEST_F(FMessageListTest, AListThatWasScrolledUpByHandStaysUntilAskedBack)
{
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(MakeMessages(1)).AutoScroll(true);
	List->bPendingScrollToBottom = false;
	List->OnListScrolled(100.0f);
	List->OnListScrolled(99.5f);
	EXPECT_TRUE(List->IsScrolledToBottom()) << "a drop of up to 1 is no scrolling";
	List->OnListScrolled(50.0f);
	EXPECT_FALSE(List->IsScrolledToBottom());
	List->OnListScrolled(500.0f);
	EXPECT_FALSE(List->IsScrolledToBottom()) << "moving down again does not count as back";
	List->SetMessages(MakeMessages(2));
	EXPECT_FALSE(List->bPendingScrollToBottom);
	List->ScrollToBottom();
	EXPECT_TRUE(List->IsScrolledToBottom());
}

TEST_F(FMessageListTest, RowsAskAndTellTheOwnerOfTheList)
{
	TArray<TSharedPtr<FChatMessage>> Undone;
	bool bCanUndo = false;
	const FMessages Messages = MakeMessages(2);
	const TSharedRef<SMessageList> List = SNew(SMessageList)
											  .Messages(Messages)
											  .CanUndo_Lambda([&bCanUndo] { return bCanUndo; })
											  .OnUndoToMessage_Lambda([&Undone](TSharedPtr<FChatMessage> Message) { Undone.Add(Message); });
	List->SetCanUndo(true);
	EXPECT_FALSE(GetRows(*List)[0]->GetUndoButtonEnabled()) << "rows ask the delegate";
	bCanUndo = true;
	EXPECT_TRUE(GetRows(*List)[0]->GetUndoButtonEnabled());
	GetRows(*List)[1]->OnUndoButtonClicked();
	ASSERT_EQ(Undone.Num(), 1);
	EXPECT_EQ(Undone[0], Messages[1]);
}

TEST_F(FMessageListTest, OfManyRowsOnlyThoseInViewAreWorkedOn)
{
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(MakeMessages(250));
	Show(List);
	PumpSeconds(0.2);
	EXPECT_TRUE(IsAtEnd(*List));
	const FWidgetCounters Before = SWidget::GetCounters();
	PumpFrame();
	EXPECT_LT(SWidget::GetCounters().Painted - Before.Painted, 1000u) << "rows out of view are neither painted nor ticked";
}
