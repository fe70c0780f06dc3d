#include "Widgets/SMessageRow.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/IconButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SMarkdownTextBlock.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/SToolExecutionContainer.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/ToolRowLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	constexpr float RowFadeSeconds = 0.3f;

	bool IsToolGroup(const TSharedPtr<FChatMessage>& Message)
	{
		return Message.IsValid() && Message->Type == EChatMessageType::ToolSummary;
	}

	int32 CountToolsOfGroup(const TSharedPtr<FChatMessage>& Message)
	{
		return IsToolGroup(Message) ? Message->ToolExecutions.Num() : 0;
	}

	/** Nothing that its row shows will change but what is bound. */
	bool IsFinishedText(const TSharedPtr<FChatMessage>& Message)
	{
		return Message.IsValid() && Message->bIsComplete && !Message->IsToolMessage() && !IsToolGroup(Message);
	}

	/** The height of a card with that text, roughly: what is out of view moves the scroll bar alone. In Slate units. */
	double EstimateHeight(const FString& Text)
	{
		constexpr double HeaderHeight = 62.0;
		constexpr double LineHeight = 20.0;
		constexpr int32 CharactersPerLine = 120;
		constexpr int32 MaxLines = 1000;
		const int32 Lines = Text.Len() / CharactersPerLine + 1;
		return HeaderHeight + LineHeight * FMath::Min(Lines, MaxLines);
	}

	FIconButton MakeHeaderButtonLook(FName Tag, FName Icon)
	{
		FIconButton Look;
		Look.Tag = Tag;
		Look.Style = "NoBorder";
		Look.ContentPadding = FMargin(4.0f);
		Look.Icon = Icon;
		Look.IconSize = 32.0;
		return Look;
	}

} // namespace

// Whatever may change while the row is shown is bound; the content is built once and kept when it is complete.
void SMessageRow::Construct(const FArguments& InArgs)
{
	Message = InArgs._Message;
	bIsLatestMessage = InArgs._IsLatestMessage;
	CanUndoDelegate = InArgs._CanUndo;
	OnUndoDelegate = InArgs._OnUndo;
	LastToolCount = CountToolsOfGroup(Message);
	FadeAnimator.FadeIn(RowFadeSeconds);
	if (!InArgs._BuildWhenShown || !IsFinishedText(Message))
	{
		Build();
	}
}

void SMessageRow::Build()
{
	bIsBuilt = true;
	StayAwake.SetUp(*this, [this] { return FadeAnimator.IsAnimating(); });

	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(this, &SMessageRow::GetBorderBrush)
		.Padding(FMargin(12.0f, 8.0f))
		.ColorAndOpacity(this, &SMessageRow::GetAnimatedOpacity)
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 4.0f)
			[
				BuildMessageHeader()
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 4.0f)
			[
				SAssignNew(ContentBox, SBox)
				[
					BuildMessageContent()
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				BuildToolIndicator()
			]
		]
	];
	// clang-format on
}

void SMessageRow::SetMessage(TSharedPtr<FChatMessage> NewMessage)
{
	if (Message == NewMessage)
	{
		return;
	}
	if (!bIsBuilt)
	{
		// Texts are those of the message that the row was made for.
		Build();
	}
	Message = NewMessage;
	// What was made for the old message stays on screen until the row is built anew; nothing further is made for it.
	CachedContent.Reset();
	ToolContainer.Reset();
	LastToolCount = CountToolsOfGroup(Message);
	FadeAnimator.FadeIn(RowFadeSeconds);
	StayAwake.Start();
	Invalidate(EInvalidateWidgetReason::Layout);
}

void SMessageRow::SetIsLatestMessage(bool bNewIsLatest)
{
	if (bIsLatestMessage != bNewIsLatest)
	{
		bIsLatestMessage = bNewIsLatest;
		StayAwake.Start();
		Invalidate(EInvalidateWidgetReason::Layout);
	}
}

void SMessageRow::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (!bIsBuilt)
	{
		// Only what is painted is ticked, so it has come into view.
		Build();
		Invalidate(EInvalidateWidgetReason::Layout);
	}
	FadeAnimator.Tick(InDeltaTime);

	// The dots of an answer that is still being written.
	if (GetTypingIndicatorVisibility() == EVisibility::Visible)
	{
		constexpr float CycleSeconds = 1.5f;
		TypingAnimationTime += InDeltaTime;
		if (TypingAnimationTime > CycleSeconds)
		{
			TypingAnimationTime = 0.0f;
		}
	}

	// A tool that only changes its status needs no word from here: its row reads the message.
	const int32 ToolCount = CountToolsOfGroup(Message);
	if (ToolContainer.IsValid() && IsToolGroup(Message) && ToolCount != LastToolCount)
	{
		LastToolCount = ToolCount;
		ToolContainer->UpdateToolList(Message->ToolExecutions);
	}
	StayAwake.Update();
}

FVector2D SMessageRow::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return bIsBuilt ? SCompoundWidget::ComputeDesiredSize(LayoutScaleMultiplier) : FVector2D(0.0, EstimateHeight(Message->Content));
}

TSharedRef<SWidget> SMessageRow::BuildMessageHeader() const
{
	if (!Message.IsValid() || Message->Type == EChatMessageType::ToolSummary)
	{
		return SNullWidget::NullWidget;
	}
	// A header changes nothing that the row shows; its buttons call the row back, and the row keeps them to know what is hovered.
	SMessageRow& Row = const_cast<SMessageRow&>(*this);
	return Message->IsToolMessage() ? Row.BuildToolHeader() : Row.BuildTextHeader();
}

TSharedRef<SWidget> SMessageRow::BuildToolHeader()
{
	FToolRowShape Shape;
	Shape.LabelPadding = FMargin(8.0f, 0.0f);
	Shape.StatusPadding = FMargin(0.0f, 0.0f, 8.0f, 0.0f);
	Shape.StatusSize = FVector2D(16.0, 16.0);
	Shape.StatusIcon = TAttribute<const FSlateBrush*>::CreateSP(this, &SMessageRow::GetToolStatusIcon);
	Shape.StatusColor = TAttribute<FSlateColor>::CreateSP(this, &SMessageRow::GetToolStatusColor);
	return FToolRowLook::MakeRow(*Message, Shape);
}

TSharedRef<SWidget> SMessageRow::BuildTextHeader()
{
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Message->GetSenderName()))
			.Font(FVelmoraUIStyles::GetMessageSenderFont())
			.ColorAndOpacity(this, &SMessageRow::GetSenderNameColor)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			BuildUndoButton()
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			BuildCopyButton()
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Message->GetFormattedTimestamp()))
			.Font(FVelmoraUIStyles::GetTimestampFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetToolDataTypeGrayColor()))
		];
	// clang-format on
}

TSharedRef<SWidget> SMessageRow::BuildUndoButton()
{
	FIconButton Look = MakeHeaderButtonLook("UndoButton", "MessageAction_Undo_32");
	Look.OnClicked = FOnClicked::CreateSP(this, &SMessageRow::OnUndoButtonClicked);
	Look.IsEnabled = TAttribute<bool>::CreateSP(this, &SMessageRow::GetUndoButtonEnabled);
	Look.Visibility = TAttribute<EVisibility>::CreateSP(this, &SMessageRow::GetUndoButtonVisibility);
	Look.ToolTip = TAttribute<FText>::CreateSP(this, &SMessageRow::GetUndoButtonTooltip);
	Look.Tint = TAttribute<FSlateColor>::CreateSP(this, &SMessageRow::GetUndoButtonTint);
	UndoButton = MakeIconButton(Look);
	return UndoButton.ToSharedRef();
}

TSharedRef<SWidget> SMessageRow::BuildCopyButton()
{
	FIconButton Look = MakeHeaderButtonLook("CopyButton", "MessageAction_Copy_32");
	Look.OnClicked = FOnClicked::CreateSP(this, &SMessageRow::OnCopyButtonClicked);
	Look.Visibility = TAttribute<EVisibility>::CreateSP(this, &SMessageRow::GetCopyButtonVisibility);
	Look.ToolTip = TAttribute<FText>::CreateSP(this, &SMessageRow::GetCopyButtonTooltip);
	Look.Tint = TAttribute<FSlateColor>::CreateSP(this, &SMessageRow::GetCopyButtonTint);
	CopyButton = MakeIconButton(Look);
	return CopyButton.ToSharedRef();
}

TSharedRef<SWidget> SMessageRow::BuildMessageContent()
{
	if (!Message.IsValid() || Message->IsToolMessage())
	{
		return SNullWidget::NullWidget;
	}
	if (Message->Type == EChatMessageType::ToolSummary)
	{
		return BuildToolGroup();
	}
	// A finished text is parsed and laid out once.
	if (CachedContent.IsValid() && Message->bIsComplete && Message->ToolExecutions.Num() == 0)
	{
		return CachedContent.ToSharedRef();
	}
	// clang-format off
	const TSharedRef<SWidget> Content = SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SMarkdownTextBlock)
			.Text(Message->Content)
			.AutoWrapText(true)
			.WrapTextAt(0.0f)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 4.0f, 0.0f, 0.0f)
		[
			SNew(SHorizontalBox)
			.Visibility(this, &SMessageRow::GetTypingIndicatorVisibility)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			[
				SNew(STextBlock)
				.Text(LOCTEXT("TypingIndicator", "..."))
				.Font(FAppStyle::GetFontStyle("SmallFont"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorTertiary()))
			]
		];
	// clang-format on
	// An unfinished one is not kept: its text grows.
	if (Message->bIsComplete)
	{
		CachedContent = Content;
	}
	return Content;
}

TSharedRef<SWidget> SMessageRow::BuildToolGroup()
{
	if (!ToolContainer.IsValid())
	{
		// The container asks the message that it was made for, whatever the row shows later.
		const TSharedPtr<FChatMessage> Group = Message;
		SAssignNew(ToolContainer, SToolExecutionContainer)
			.ToolExecutions(Group->ToolExecutions)
			.IsExpanded_Lambda([Group]() { return Group->bIsExpanded; })
			.OnToggleExpanded_Lambda(
				[Group]()
				{
					Group->bIsExpanded = !Group->bIsExpanded;
					Group->InvalidateLayout();
				});
	}
	return ToolContainer.ToSharedRef();
}

TSharedRef<SWidget> SMessageRow::BuildToolIndicator() const
{
	return SNullWidget::NullWidget;
}

#undef LOCTEXT_NAMESPACE
