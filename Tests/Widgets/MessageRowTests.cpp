#include "Widgets/SMessageRow.h"

#include "HAL/PlatformApplicationMisc.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SToolExecutionContainer.h"

class FMessageRowTest : public FVelmoraWidgetTest
{
protected:
	static TSharedPtr<FChatMessage> Stamp(const TSharedPtr<FChatMessage>& Message)
	{
		Message->Timestamp = FDateTime(2026, 1, 31, 9, 5, 0);
		return Message;
	}

	TSharedRef<SMessageRow> ShowRow(const TSharedPtr<FChatMessage>& Message, bool bIsLatest = false)
	{
		const TSharedRef<SMessageRow> Row = SNew(SMessageRow)
												.Message(Message)
												.IsLatestMessage(bIsLatest)
												.CanUndo_Lambda([this] { return bCanUndo; })
												.OnUndo_Lambda([this] { ++UndoCount; });
		Show(SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[Row]);
		return Row;
	}

	static int32 AlphaOf(const std::string& Text)
	{
		const FTextList Painted = PaintedIn(*FindByText(Text), ESlateDrawType::Glyphs);
		return Painted.empty() ? 0 : std::stoi(Painted[0].substr(6), nullptr, 16);
	}

	static std::string Clipboard()
	{
		FString Text;
		FPlatformApplicationMisc::ClipboardPaste(Text);
		return Utf8(Text);
	}

	bool bCanUndo = true;
	int32 UndoCount = 0;
};

TEST_F(FMessageRowTest, CopyTakesTheRawText)
{
	ShowRow(FChatMessage::CreateAIMessage(TEXT("a **b**\nc"), false));
	Click(FindByToolTip("Copy AI response to clipboard"));
	EXPECT_EQ(Clipboard(), "a **b**\nc");

	ShowRow(FChatMessage::CreateUserMessage(TEXT("mine")));
	Click(FindByToolTip("Copy user message to clipboard"));
	EXPECT_EQ(Clipboard(), "mine");

	ShowRow(FChatMessage::CreateUserMessage(FString()));
	Click(FindByTag("CopyButton"));
	EXPECT_EQ(Clipboard(), "mine") << "an empty message leaves the clipboard alone";
}

TEST_F(FMessageRowTest, TheTypingDotsFollowTheMessageInTheLastRowAlone)
{
	const TSharedPtr<FChatMessage> Message = Stamp(FChatMessage::CreateAIMessage(TEXT("hi"), false));
	Message->bIsComplete = false;
	ShowRow(Message, true);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Velmora AI", "09:05:00", "hi", "..." }));
	Message->bIsComplete = true;
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Velmora AI", "09:05:00", "hi" }));

	Message->bIsComplete = false;
	const TSharedRef<SMessageRow> Row = ShowRow(Message, false);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Velmora AI", "09:05:00", "hi" }));
	Row->SetIsLatestMessage(true);
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Velmora AI", "09:05:00", "hi", "..." }));
}

TEST_F(FMessageRowTest, TextsAreFixedWhenTheRowIsMade)
{
	const TSharedPtr<FChatMessage> Message = Stamp(FChatMessage::CreateAIMessage(TEXT("first"), false));
	ShowRow(Message);
	Message->Content = TEXT("second");
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Velmora AI", "09:05:00", "first" }));
}

TEST_F(FMessageRowTest, AGroupGainsItsToolsAndTogglesItsMessage)
{
	const TSharedPtr<FChatMessage> Group = FChatMessage::CreateToolSummaryMessage();
	Group->CachedLayout = MakeShared<FChatMessageLayout>();
	ShowRow(Group);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions" }));
	const TSharedPtr<FChatMessage> Tool = Stamp(FChatMessage::CreateToolMessage(TEXT("t"), TEXT("{}"), EToolStatus::Running));
	Tool->ToolDisplayName = TEXT("Read file");
	Group->ToolExecutions.Add(Tool);
	PumpFrame();
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions (1)", "Read file", "09:05:00" }));

	Click(FindByTag("ToolExecutionsHeader"));
	EXPECT_FALSE(Group->bIsExpanded);
	EXPECT_FALSE(Group->CachedLayout.IsValid());
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Tool Executions (1)" }));
}

TEST_F(FMessageRowTest, TheRowFadesInOnce)
{
	App().SetRootContent(SNew(SMessageRow).Message(FChatMessage::CreateUserMessage(TEXT("a"))));
	PumpFrame(0.15);
	EXPECT_NEAR(AlphaOf("a"), 128, 3);
	PumpFrame(0.2);
	EXPECT_EQ(AlphaOf("a"), 255);
}

TEST_F(FMessageRowTest, UndoIsOfferedForATransactionAlone)
{
	const TSharedPtr<FChatMessage> Message = FChatMessage::CreateUserMessage(TEXT("x"));
	ShowRow(Message);
	EXPECT_FALSE(FWidgetFinder::FindByTag(FName("UndoButton")).IsValid());
	Message->TransactionId = TEXT("t1");
	PumpSeconds(0.5);
	const TSharedRef<SWidget> Button = FindByTag("UndoButton");
	EXPECT_EQ(DumpKey(Button->GetToolTipText()),
		"VelmoraUI,UndoTooltip: Undo all changes made after this message.\n\nThis will revert:\n• Asset modifications (Enums, Structs, "
		"etc.)\n• File changes\n• All subsequent messages\n\nThis action cannot be undone.");
	const FTextList Enabled = PaintedIn(*Button, ESlateDrawType::Image);
	EXPECT_EQ(Enabled, (FTextList{ "Undo32 " + Hex(FVelmoraUIStyles::GetActionIconNormalColor()) }));
	Click(Button);
	EXPECT_EQ(UndoCount, 1);

	bCanUndo = false;
	PumpFrame();
	EXPECT_EQ(DumpKey(Button->GetToolTipText()),
		"VelmoraUI,UndoDisabledTooltip: Undo is disabled while AI is processing.\n\nPlease wait for the current operation to complete.");
	EXPECT_NE(PaintedIn(*Button, ESlateDrawType::Image), Enabled);
	Click(Button);
	EXPECT_EQ(UndoCount, 1);

	Show(SNew(SMessageRow).Message(Message));
	EXPECT_FALSE(FWidgetFinder::IsEnabledInTree(*FindByTag("UndoButton"))) << "nobody to ask";
}

TEST_F(FMessageRowTest, IconsAnswerThePointer)
{
	ShowRow(FChatMessage::CreateUserMessage(TEXT("x")));
	PumpSeconds(0.5);
	const TSharedRef<SWidget> Copy = FindByTag("CopyButton");
	EXPECT_EQ(PaintedIn(*Copy, ESlateDrawType::Image), (FTextList{ "Copy32 " + Hex(FVelmoraUIStyles::GetActionIconNormalColor()) }));
	Hover(Copy);
	EXPECT_EQ(PaintedIn(*Copy, ESlateDrawType::Image), (FTextList{ "Copy32 " + Hex(FVelmoraUIStyles::GetActionIconHighlightColor()) }));
}

TEST_F(FMessageRowTest, AnotherMessageTakesOverWhatIsPolled)
{
	const TSharedPtr<FChatMessage> User = Stamp(FChatMessage::CreateUserMessage(TEXT("first")));
	const TSharedRef<SMessageRow> Row = ShowRow(User);
	PumpSeconds(0.5);
	Row->SetMessage(User);
	PumpFrame();
	EXPECT_EQ(AlphaOf("first"), 255) << "the same message is no change";

	Row->SetMessage(Stamp(FChatMessage::CreateSystemMessage(TEXT("second"))));
	PumpFrame(0.1);
	EXPECT_LT(AlphaOf("first"), 200) << "it fades in anew";
	EXPECT_FALSE(FWidgetFinder::FindByTag(FName("CopyButton")).IsValid());
	EXPECT_EQ(VisibleTexts(), (FTextList{ "You", "09:05:00", "first" })) << "rows are not recycled: texts stay";
}
