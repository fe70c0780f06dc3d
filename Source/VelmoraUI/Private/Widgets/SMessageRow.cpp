#include "Widgets/SMessageRow.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
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

} // namespace

void SMessageRow::Construct(const FArguments& InArgs)
{
	Message = InArgs._Message;
	bIsLatestMessage = InArgs._IsLatestMessage;
	CanUndoDelegate = InArgs._CanUndo;
	OnUndoDelegate = InArgs._OnUndo;
	LastToolCount = CountToolsOfGroup(Message);
	FadeAnimator.FadeIn(RowFadeSeconds);
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
	Message = NewMessage;
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
	FadeAnimator.Tick(InDeltaTime);

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
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			SNew(SImage)
			.Image(FAppStyle::GetBrush("Icons.FilledCircle"))
			.ColorAndOpacity(FSlateColor(FToolRowLook::ReadColor(Message->ToolColor)))
			.DesiredSizeOverride(FVector2D(8.0, 8.0))
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f)
		[
			SNew(STextBlock)
			.Text(FText::FromString(FToolRowLook::MakeLabel(*Message)))
			.Font(FVelmoraUIStyles::GetToolMessageFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetToolMessageTextColor()))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			SNew(SImage)
			.Image(this, &SMessageRow::GetToolStatusIcon)
			.ColorAndOpacity(this, &SMessageRow::GetToolStatusColor)
			.DesiredSizeOverride(FVector2D(16.0, 16.0))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Text(FText::FromString(Message->GetFormattedTimestamp()))
			.Font(FVelmoraUIStyles::GetTimestampFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
		];
	// clang-format on
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
			SAssignNew(UndoButton, SButton)
			.Tag(FName("UndoButton"))
			.ButtonStyle(FAppStyle::Get(), "NoBorder")
			.ContentPadding(FMargin(4.0f))
			.OnClicked(this, &SMessageRow::OnUndoButtonClicked)
			.Visibility(this, &SMessageRow::GetUndoButtonVisibility)
			.IsEnabled(this, &SMessageRow::GetUndoButtonEnabled)
			.ToolTipText(this, &SMessageRow::GetUndoButtonTooltip)
			[
				SNew(SImage)
				.Image(FVelmoraUIStyles::GetBrush("MessageAction_Undo_32"))
				.ColorAndOpacity(this, &SMessageRow::GetUndoButtonTint)
				.DesiredSizeOverride(FVector2D(32.0, 32.0))
			]
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			SAssignNew(CopyButton, SButton)
			.Tag(FName("CopyButton"))
			.ButtonStyle(FAppStyle::Get(), "NoBorder")
			.ContentPadding(FMargin(4.0f))
			.OnClicked(this, &SMessageRow::OnCopyButtonClicked)
			.Visibility(this, &SMessageRow::GetCopyButtonVisibility)
			.ToolTipText(this, &SMessageRow::GetCopyButtonTooltip)
			[
				SNew(SImage)
				.Image(FVelmoraUIStyles::GetBrush("MessageAction_Copy_32"))
				.ColorAndOpacity(this, &SMessageRow::GetCopyButtonTint)
				.DesiredSizeOverride(FVector2D(32.0, 32.0))
			]
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
