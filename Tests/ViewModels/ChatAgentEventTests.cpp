#include "ViewModels/ChatViewModelTest.h"

using Velmora::EConversationState;

using FChatAgentEvents = FChatViewModelTest;

TEST_F(FChatAgentEvents, StepTextOpensAGroupUnderItself)
{
	Connect();
	Agent->FireProcessMessage(TEXT("Planning"));
	Agent->FireProcessMessage(TEXT("EXECUTING STEP 1: look"));
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"), TEXT("{\"path\":\"a.cpp\"}"));
	Agent->FireProcessMessage(TEXT("Now we execute step 2"));
	Agent->FireToolStarted(TEXT("2"), TEXT("read_file"), TEXT("{\"path\":\"b.cpp\"}"));
	EXPECT_EQ(Shown(),
		"System: Planning\n"
		"System: EXECUTING STEP 1: look\n"
		"Tools\n"
		"  Analyzing a [running] Executing read_file...\n"
		"  Analyzing b [running] Executing read_file...\n"
		"System: Now we execute step 2\n");
	Agent->FireProcessMessage(TEXT("execute step 2"));
	EXPECT_EQ(ViewModel->GetMessages().Last()->Type, EChatMessageType::ToolSummary);
	EXPECT_EQ(ViewModel->GetMessages().Last()->ToolExecutions.Num(), 0);
}

TEST_F(FChatAgentEvents, ToolRowCarriesItsLooks)
{
	Connect();
	Agent->FireToolStarted(TEXT("id"), TEXT("create_widget"), TEXT("{\"path\":\"/Game/UI/WBP_Menu\"}"),
		TEXT("{\"operation_type\":\"create\",\"data_type\":\"WidgetBlueprint\"}"));
	ASSERT_EQ(ViewModel->GetMessageCount(), 1);
	EXPECT_EQ(MessagesChangedCount, 2) << "the group, then its row";
	const FChatMessage& Row = *ViewModel->GetMessages()[0]->ToolExecutions[0];
	EXPECT_EQ(Utf8(Row.ToolCallId), "id");
	EXPECT_EQ(Utf8(Row.ToolName), "create_widget");
	EXPECT_EQ(Utf8(Row.ToolParameters), "{\"path\":\"/Game/UI/WBP_Menu\"}");
	EXPECT_EQ(Utf8(Row.ToolColor), "#10B981");
	EXPECT_EQ(Utf8(Row.ToolDisplayName), "Create Widget Blueprint");
	EXPECT_EQ(Utf8(Row.ToolIcon), "widget");
	EXPECT_EQ(Utf8(Row.ToolCategory), "Asset Creation - WidgetBlueprint");
	EXPECT_EQ(Utf8(Row.ToolActionVerb), "Creating");
	EXPECT_EQ(Utf8(Row.ToolDisplayParameter), "WBP_Menu");
	EXPECT_TRUE(Row.IsToolRunning());
	EXPECT_FALSE(Row.bIsComplete);
}

TEST_F(FChatAgentEvents, StartedToolOpensItsGroup)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_a"));
	ViewModel->GetMessages()[0]->bIsExpanded = false;
	Agent->FireToolStarted(TEXT("2"), TEXT("write_b"));
	EXPECT_TRUE(ViewModel->GetMessages()[0]->bIsExpanded);
}

TEST_F(FChatAgentEvents, SameHeaderTwiceInAStepIsOneRow)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"), TEXT("{\"path\":\"a.cpp\"}"));
	MessagesChangedCount = 0;
	Agent->FireToolStarted(TEXT("2"), TEXT("read_file"), TEXT("{\"path\":\"A.h\"}"));
	EXPECT_EQ(MessagesChangedCount, 0);
	Agent->FireToolCompleted(TEXT("1"), TEXT("read_file"));
	EXPECT_EQ(Shown(), "Tools, complete\n  Analyzing a [success] read_file completed successfully\n");
	MessagesChangedCount = 0;
	Agent->FireToolCompleted(TEXT("2"), TEXT("read_file"), false, TEXT("gone"));
	EXPECT_EQ(MessagesChangedCount, 0);
	EXPECT_EQ(Shown(), "Tools, complete\n  Analyzing a [success] read_file completed successfully\n");
}

TEST_F(FChatAgentEvents, CompletionOfADroppedRunFinishesTheRowOfItsName)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"), TEXT("{\"path\":\"a.cpp\"}"));
	Agent->FireToolStarted(TEXT("2"), TEXT("read_file"), TEXT("{\"path\":\"a.cpp\"}"));
	Agent->FireToolCompleted(TEXT("2"), TEXT("READ_FILE"), false, TEXT("no such file"));
	EXPECT_EQ(Shown(), "Tools, complete\n  Analyzing a [failed] read_file failed: no such file\n");
	EXPECT_EQ(Utf8(ViewModel->GetMessages()[0]->ToolExecutions[0]->ToolResult), "no such file");
}

TEST_F(FChatAgentEvents, StateThatEndsATurnEndsTheStep)
{
	for (const EConversationState State : { EConversationState::Ready, EConversationState::AwaitingInput, EConversationState::Completed })
	{
		ViewModel = MakeShared<FChatViewModel>();
		Connect();
		Agent->HoldConversation(TEXT("c1"));
		Agent->FireToolStarted(TEXT("1"), TEXT("read_file"));
		Agent->FireState(EConversationState::Thinking);
		Agent->FireToolStarted(TEXT("2"), TEXT("read_file"));
		EXPECT_EQ(ViewModel->GetMessageCount(), 1) << "the same header in the same step";
		MessagesChangedCount = 0;
		Agent->FireState(State);
		EXPECT_EQ(MessagesChangedCount, 0);
		Agent->FireToolStarted(TEXT("3"), TEXT("read_file"));
		EXPECT_EQ(ViewModel->GetMessageCount(), 2) << static_cast<int>(State);
	}
}

TEST_F(FChatAgentEvents, LateCompletionFindsTheRowOfAnEarlierStep)
{
	Connect();
	Agent->FireToolStarted(TEXT("Call-1"), TEXT("read_file"));
	Agent->FireProcessMessage(TEXT("Executing step 2"));
	Agent->FireToolStarted(TEXT("Call-2"), TEXT("list_files"));
	Agent->FireToolCompleted(TEXT("call-1"), TEXT("other"));
	EXPECT_EQ(Shown(),
		"Tools\n  Analyzing  [success] read_file completed successfully\n"
		"System: Executing step 2\n"
		"Tools\n  Scanning  [running] Executing list_files...\n")
		<< "only the current group is ever marked complete";
	Agent->FireToolCompleted(TEXT("call-2"), TEXT("list_files"));
	EXPECT_TRUE(ViewModel->GetMessages()[2]->bIsComplete);
	EXPECT_FALSE(ViewModel->GetMessages()[0]->bIsComplete);
}

TEST_F(FChatAgentEvents, CompletionAfterTheStepWasResetStillFindsItsRow)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"));
	Agent->FireState(EConversationState::AwaitingInput);
	Agent->FireToolCompleted(TEXT("1"), TEXT("read_file"));
	EXPECT_EQ(Shown(), "Tools\n  Analyzing  [success] read_file completed successfully\n");
}

TEST_F(FChatAgentEvents, IdGoesBeforeName)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"), TEXT("{\"path\":\"a\"}"));
	Agent->FireToolStarted(TEXT("2"), TEXT("read_file"), TEXT("{\"path\":\"b\"}"));
	Agent->FireToolCompleted(TEXT("2"), TEXT("read_file"));
	EXPECT_EQ(Shown(), "Tools\n  Analyzing a [running] Executing read_file...\n  Analyzing b [success] read_file completed successfully\n");
}

TEST_F(FChatAgentEvents, EmptyIdMatchesARowWithoutOne)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("a_x"));
	Agent->FireToolStarted(FString(), TEXT("b_x"));
	Agent->FireToolCompleted(FString(), TEXT("a_x"));
	EXPECT_EQ(Shown(), "Tools\n  A  [running] Executing a_x...\n  B  [success] b_x completed successfully\n");
}

TEST_F(FChatAgentEvents, CompletionForAnUnknownToolChangesNothing)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"));
	MessagesChangedCount = 0;
	Agent->FireToolCompleted(TEXT("id-7"), TEXT("write_file"));
	ViewModel->Tick(0.2f);
	EXPECT_EQ(Shown(), "Tools\n  Analyzing  [running] Executing read_file...\n");
	EXPECT_EQ(MessagesChangedCount, 0);
}

TEST_F(FChatAgentEvents, CompletionDropsTheCachedLayout)
{
	Connect();
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"));
	FChatMessage& Row = *ViewModel->GetMessages()[0]->ToolExecutions[0];
	Row.CachedLayout = MakeShared<FChatMessageLayout>();
	Agent->FireToolCompleted(TEXT("1"), TEXT("read_file"));
	EXPECT_FALSE(Row.CachedLayout.IsValid());
	EXPECT_TRUE(Row.bIsComplete);
}

TEST_F(FChatAgentEvents, EndAndErrorsAreTold)
{
	Connect();
	Agent->FireConversationCompleted(true, TEXT("not shown"));
	Agent->FireConversationCompleted(false, TEXT("not shown"));
	Agent->FireError(TEXT("No network"));
	EXPECT_EQ(Shown(), "System: Conversation completed successfully\nSystem: Conversation failed\nSystem: Error: No network\n");
	EXPECT_EQ(Errors, "No network\n");
}
