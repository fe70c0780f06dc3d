#include "Widgets/SMessageRow.h"

#include "HAL/PlatformApplicationMisc.h"
#include "Styling/AppStyle.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/Input/SButton.h"
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

	static std::string Clipboard()
	{
		FString Text;
		FPlatformApplicationMisc::ClipboardPaste(Text);
		return Utf8(Text);
	}

	bool bCanUndo = true;
	int32 UndoCount = 0;
};

TEST_F(FMessageRowTest, EachKindHasItsForm)
{
	const TSharedPtr<FChatMessage> Tool = FChatMessage::CreateToolMessage(TEXT("read_file"), TEXT("{}"), EToolStatus::Success);
	Tool->ToolActionVerb = TEXT("Reading");
	Tool->ToolDisplayParameter = TEXT("a.txt");
	const TSharedPtr<FChatMessage> Group = FChatMessage::CreateToolSummaryMessage();
	Group->ToolExecutions.Add(Stamp(Tool));
	struct FCase
	{
		TSharedPtr<FChatMessage> Message;
		FTextList Texts;
		int32 Buttons;
	};
	const FCase Cases[] = {
		{ FChatMessage::CreateUserMessage(TEXT("hello **you**")), { "You", "09:05:00", "hello ", "you" }, 1 },
		{ FChatMessage::CreateAIMessage(TEXT("hi"), false), { "Velmora AI", "09:05:00", "hi" }, 1 },
		{ FChatMessage::CreateSystemMessage(TEXT("note")), { "System", "09:05:00", "note" }, 0 },
		{ Tool, { "Reading a.txt", "09:05:00" }, 0 },
		{ Group, { "Tool Executions (1)", "Reading a.txt", "09:05:00" }, 1 },
		{ nullptr, {}, 0 },
	};
	for (const FCase& Case : Cases)
	{
		if (Case.Message)
		{
			Stamp(Case.Message);
		}
		ShowRow(Case.Message);
		EXPECT_EQ(VisibleTexts(), Case.Texts);
		EXPECT_EQ(CountByType("SButton"), Case.Buttons) << (Case.Texts.empty() ? "null" : Case.Texts[0]);
	}
}

TEST_F(FMessageRowTest, CardsAreSharedPerKindAndAGroupHasNone)
{
	const TSharedRef<SMessageRow> One = ShowRow(FChatMessage::CreateUserMessage(TEXT("a")));
	const TSharedRef<SMessageRow> Two = ShowRow(FChatMessage::CreateUserMessage(TEXT("b")));
	EXPECT_EQ(One->GetBorderBrush(), Two->GetBorderBrush());
	EXPECT_EQ(One->GetBorderBrush()->OutlineSettings.Width, 1.0f);
	EXPECT_EQ(One->GetBorderBrush()->OutlineSettings.CornerRadii.X, 8.0);
	EXPECT_TRUE(One->GetBackgroundColor() == FSlateColor(FVelmoraUIStyles::GetUserMessageBackgroundColor()));

	const TSharedRef<SMessageRow> Group = ShowRow(FChatMessage::CreateToolSummaryMessage());
	EXPECT_EQ(Group->GetBorderBrush()->TintColor.GetSpecifiedColor().A, 0.0f);
	EXPECT_EQ(Group->GetBorderBrush()->OutlineSettings.Width, 0.0f);
	EXPECT_EQ(Group->GetBorderColor().A, 0.0f);

	const TSharedPtr<FChatMessage> Odd = FChatMessage::CreateUserMessage(TEXT("x"));
	Odd->Type = static_cast<EChatMessageType>(77);
	EXPECT_EQ(ShowRow(Odd)->GetBorderBrush(), ShowRow(FChatMessage::CreateSystemMessage(TEXT("s")))->GetBorderBrush());
	EXPECT_TRUE(ShowRow(nullptr)->GetBackgroundColor() == FSlateColor(FVelmoraUIStyles::GetToolMessageBackgroundColor()));
}

TEST_F(FMessageRowTest, TheRowFadesInOnce)
{
	const TSharedRef<SMessageRow> Row = SNew(SMessageRow).Message(FChatMessage::CreateUserMessage(TEXT("a")));
	App().SetRootContent(Row);
	PumpFrame(0.15);
	EXPECT_NEAR(Row->GetAnimatedOpacity().A, 0.5f, 0.01f);
	PumpFrame(0.2);
	EXPECT_EQ(Row->GetAnimatedOpacity().A, 1.0f);
	EXPECT_FALSE(Row->FadeAnimator.IsAnimating());
}

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
	const TSharedRef<SMessageRow> Row = ShowRow(Message);
	EXPECT_TRUE(Row->CachedContent.IsValid());
	Message->Content = TEXT("second");
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Velmora AI", "09:05:00", "first" }));
}

TEST_F(FMessageRowTest, UndoIsOfferedForATransactionAlone)
{
	const TSharedPtr<FChatMessage> Message = FChatMessage::CreateUserMessage(TEXT("x"));
	const TSharedRef<SMessageRow> Row = ShowRow(Message);
	EXPECT_EQ(Row->GetUndoButtonVisibility(), EVisibility::Collapsed);
	Message->TransactionId = TEXT("t1");
	PumpFrame();
	EXPECT_EQ(DumpKey(Row->GetUndoButtonTooltip()).substr(0, 48), "VelmoraUI,UndoTooltip: Undo all changes made aft");
	Click(FindByTag("UndoButton"));
	EXPECT_EQ(UndoCount, 1);

	bCanUndo = false;
	EXPECT_TRUE(Row->GetUndoButtonTint() == FSlateColor(FVelmoraUIStyles::GetActionIconDisabledColor()));
	EXPECT_EQ(DumpKey(Row->GetUndoButtonTooltip()).substr(0, 54), "VelmoraUI,UndoDisabledTooltip: Undo is disabled while ");
	Click(FindByTag("UndoButton"));
	EXPECT_EQ(UndoCount, 1);

	const TSharedRef<SMessageRow> Bare = SNew(SMessageRow).Message(Message);
	EXPECT_FALSE(Bare->GetUndoButtonEnabled());
	EXPECT_TRUE(Bare->OnUndoButtonClicked().IsEventHandled());
}

TEST_F(FMessageRowTest, IconsAnswerThePointer)
{
	const TSharedRef<SMessageRow> Row = ShowRow(FChatMessage::CreateUserMessage(TEXT("x")));
	EXPECT_TRUE(Row->GetCopyButtonTint() == FSlateColor(FVelmoraUIStyles::GetActionIconNormalColor()));
	Hover(Row->CopyButton.ToSharedRef());
	EXPECT_TRUE(Row->GetCopyButtonTint() == FSlateColor(FVelmoraUIStyles::GetActionIconHighlightColor()));
}

TEST_F(FMessageRowTest, AToolRowsWordsAndMarkByStatus)
{
	const TSharedPtr<FChatMessage> Tool = FChatMessage::CreateToolMessage(TEXT("t"), TEXT("{}"), EToolStatus::Running);
	const TSharedRef<SMessageRow> Row = ShowRow(Tool);
	EXPECT_EQ(DumpKey(Row->GetToolStatusText()), "VelmoraUI,ToolRunning: Running...");
	Tool->ToolStatus = EToolStatus::Success;
	EXPECT_EQ(DumpKey(Row->GetToolStatusText()), "VelmoraUI,ToolSuccess: Completed");
	Tool->ToolStatus = EToolStatus::Failed;
	EXPECT_EQ(DumpKey(Row->GetToolStatusText()), "VelmoraUI,ToolFailed: Failed");
	EXPECT_EQ(Row->GetToolStatusIcon(), FAppStyle::GetBrush("Symbols.X"));

	const TSharedRef<SMessageRow> Other = ShowRow(FChatMessage::CreateSystemMessage(TEXT("s")));
	EXPECT_EQ(Other->GetToolStatusIcon(), nullptr);
	EXPECT_TRUE(Other->GetToolStatusText().IsEmpty());
	EXPECT_TRUE(Other->GetToolStatusColor() == FSlateColor(FLinearColor::White));
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

TEST_F(FMessageRowTest, AnotherMessageTakesOverWhatIsPolled)
{
	const TSharedPtr<FChatMessage> User = Stamp(FChatMessage::CreateUserMessage(TEXT("first")));
	const TSharedRef<SMessageRow> Row = ShowRow(User);
	PumpSeconds(0.5);
	Row->SetMessage(User);
	EXPECT_FALSE(Row->FadeAnimator.IsAnimating()) << "the same message is no change";
	EXPECT_TRUE(Row->CachedContent.IsValid());

	Row->SetMessage(Stamp(FChatMessage::CreateSystemMessage(TEXT("second"))));
	EXPECT_TRUE(Row->FadeAnimator.IsAnimating());
	EXPECT_FALSE(Row->CachedContent.IsValid());
	PumpFrame();
	EXPECT_EQ(Row->GetCopyButtonVisibility(), EVisibility::Collapsed);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "You", "09:05:00", "first" })) << "rows are not recycled: texts stay";
}
