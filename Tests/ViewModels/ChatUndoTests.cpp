#include "ViewModels/ChatViewModel.h"

#include "Host/HostServices.h"
#include "Support/TestAgent.h"

#include <gtest/gtest.h>

namespace
{

	/** A conversation of two messages of the user with an undo point each, and somebody who answers dialogs. */
	class FChatUndoTest : public testing::Test
	{
	protected:
		void SetUp() override
		{
			Agent = MakeShared<FTestAgent>();
			Agent->HoldConversation(TEXT("c1"));
			ViewModel = MakeShared<FChatViewModel>();
			ASSERT_TRUE(ViewModel->Initialize(Agent));
			First = Send(TEXT("first"), TEXT("transaction-1"));
			Agent->FireMessage(TEXT("answer"));
			ViewModel->Tick(0.2f);
			Second = Send(TEXT("second"), TEXT("transaction-2"));
			Agent->FireToolStarted(TEXT("1"), TEXT("read_file"));
			ViewModel->OnMessagesChanged().AddLambda([this] { ++ChangedCount; });
			Agent->Calls.clear();
			FHostServices::SetMessageDialogHook(
				[this](const FHostMessageDialog& Dialog)
				{
					Dialogs.push_back(Dialog);
					return Answer;
				});
		}

		void TearDown() override { FHostServices::SetMessageDialogHook(nullptr); }

		TSharedPtr<FChatMessage> Send(const TCHAR* Text, const TCHAR* TransactionId)
		{
			Agent->TransactionId = TransactionId;
			EXPECT_TRUE(ViewModel->SendMessage(Text));
			return ViewModel->GetMessages().Last();
		}

		/** "first|answer|second|": the texts of the list. */
		std::string Shown() const
		{
			std::string Result;
			for (const TSharedPtr<FChatMessage>& Message : ViewModel->GetMessages())
			{
				Result += Utf8(Message->Content) + "|";
			}
			return Result;
		}

		TSharedPtr<FTestAgent> Agent;
		TSharedPtr<FChatViewModel> ViewModel;
		TSharedPtr<FChatMessage> First;
		TSharedPtr<FChatMessage> Second;
		EAppReturnType::Type Answer = EAppReturnType::Yes;
		std::vector<FHostMessageDialog> Dialogs;
		int32 ChangedCount = 0;
	};

} // namespace

TEST_F(FChatUndoTest, TheMessageAndAllAfterItGo)
{
	EXPECT_TRUE(ViewModel->UndoToMessage(Second));
	EXPECT_EQ(Agent->Calls, std::vector<std::string>{ "UndoToTransaction 'transaction-2'" });
	EXPECT_EQ(Shown(), "first|answer|");
	EXPECT_EQ(ChangedCount, 1);
	EXPECT_TRUE(ViewModel->UndoToMessage(First));
	EXPECT_EQ(Shown(), "");
}

TEST_F(FChatUndoTest, TheUserIsAskedFirst)
{
	Answer = EAppReturnType::No;
	EXPECT_FALSE(ViewModel->UndoToMessage(Second));
	ASSERT_EQ(Dialogs.size(), 1u);
	EXPECT_EQ(Dialogs[0].Type, EAppMsgType::YesNo);
	EXPECT_EQ(Utf8(Dialogs[0].Title), "Confirm Undo");
	EXPECT_EQ(Utf8(Dialogs[0].Message),
		"Undo all changes after this message?\n\nThis will revert:\n• Asset modifications (Enums, Structs, DataTables, etc.)\n"
		"• File changes\n• All subsequent messages\n\nThis action cannot be undone.");
	EXPECT_TRUE(Agent->Calls.empty());
	EXPECT_EQ(Shown(), "first|answer|second||");
	EXPECT_EQ(ChangedCount, 0);
}

TEST_F(FChatUndoTest, RefusalsAreRows)
{
	Second->TransactionId.Empty();
	EXPECT_FALSE(ViewModel->UndoToMessage(Second));
	Agent->bCanUndo = false;
	EXPECT_FALSE(ViewModel->UndoToMessage(First));
	EXPECT_TRUE(Dialogs.empty());
	EXPECT_TRUE(Agent->Calls.empty());
	Agent->bCanUndo = true;
	Agent->bUndoes = false;
	EXPECT_FALSE(ViewModel->UndoToMessage(First));
	EXPECT_EQ(Shown(),
		"first|answer|second||Cannot undo: Transaction ID not available. This feature requires the latest version.|"
		"Cannot undo while AI is processing. Please wait for the current operation to complete.|"
		"Failed to undo changes. Please check the logs for details.|");
	EXPECT_EQ(ViewModel->GetMessages().Last()->Type, EChatMessageType::System);
}

TEST_F(FChatUndoTest, ABusyAgentIsNamedBeforeAMissingUndoPoint)
{
	Second->TransactionId.Empty();
	Agent->bCanUndo = false;
	EXPECT_FALSE(ViewModel->UndoToMessage(Second));
	EXPECT_EQ(Utf8(ViewModel->GetMessages().Last()->Content),
		"Cannot undo while AI is processing. Please wait for the current operation to complete.");
}

TEST_F(FChatUndoTest, ThePauseNoticeStaysWhenTheUndoFails)
{
	ViewModel->PauseConversation();
	const std::string Before = Shown();
	Agent->bUndoes = false;
	EXPECT_FALSE(ViewModel->UndoToMessage(Second));
	EXPECT_EQ(Shown(), Before + "Failed to undo changes. Please check the logs for details.|");
	ViewModel->ResumeConversation(FString());
	EXPECT_EQ(Shown(), "first|answer|second||Failed to undo changes. Please check the logs for details.|");
}

TEST_F(FChatUndoTest, NothingToUndoIsSilent)
{
	EXPECT_FALSE(ViewModel->UndoToMessage(nullptr));
	EXPECT_FALSE(MakeShared<FChatViewModel>()->UndoToMessage(First));
	EXPECT_EQ(ChangedCount, 0);
	EXPECT_TRUE(Dialogs.empty());
}

TEST_F(FChatUndoTest, ThePauseNoticeGoesAndAWaitingMessageStays)
{
	ViewModel->PauseConversation();
	Agent->FireMessage(TEXT("late"));
	EXPECT_TRUE(ViewModel->UndoToMessage(Second));
	EXPECT_EQ(Shown(), "first|answer|");
	ViewModel->Tick(0.2f);
	EXPECT_EQ(Shown(), "first|answer|late|");
	ChangedCount = 0;
	ViewModel->ResumeConversation(FString());
	EXPECT_EQ(ChangedCount, 0) << "there is no notice to take away any more";
}

TEST_F(FChatUndoTest, AMessageThatIsNotListedAnyMoreIsUndoneAllTheSame)
{
	ViewModel->ClearHistory();
	Send(TEXT("second"), TEXT("transaction-3")); // The same words, another message.
	ChangedCount = 0;
	EXPECT_TRUE(ViewModel->UndoToMessage(Second));
	EXPECT_EQ(Shown(), "second|");
	EXPECT_EQ(ChangedCount, 0);
}

TEST_F(FChatUndoTest, ReloadedMessagesHaveNoUndoPoint)
{
	Agent->FireConversationLoaded(TEXT("c1"));
	EXPECT_EQ(Shown(), "first|second|");
	EXPECT_FALSE(ViewModel->UndoToMessage(ViewModel->GetMessages()[0]));
	EXPECT_EQ(Shown(), "first|second|Cannot undo: Transaction ID not available. This feature requires the latest version.|");
}
