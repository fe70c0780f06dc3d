#include "Widgets/SConversationPlan.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/IconButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SMarkdownTextBlock.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	const FSlateBrush* GetPlanCardBrush()
	{
		static const FSlateRoundedBoxBrush Brush(FLinearColor::White, 8.0f);
		return &Brush;
	}

} // namespace

void SConversationPlan::Construct(const FArguments& InArgs)
{
	PlaceholderText = TEXT("No plan available yet.\n\nWhen the agent creates a plan, it will appear here with:\n- Goals\n- High-level "
						   "approach\n- Implementation steps with status indicators\n- Progress tracking");

	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("NoBorder"))
		.Padding(FMargin(4.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 0.0f, 0.0f, 8.0f)
			[
				BuildHeader()
			]
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				BuildPlanDisplay()
			]
		]
	];
	// clang-format on

	ClearPlan();
}

TSharedRef<SWidget> SConversationPlan::BuildHeader()
{
	FIconButton Look;
	Look.Style = "SimpleButton";
	Look.ContentPadding = FMargin(6.0f, 4.0f, 6.0f, 4.0f);
	Look.Icon = "MessageAction_Copy_32";
	Look.IconSize = 20.0;
	Look.Tint = TAttribute<FSlateColor>::CreateLambda([this] { return GetActionIconTint(CopyButton); });
	Look.Visibility = TAttribute<EVisibility>::CreateSP(this, &SConversationPlan::GetCopyButtonVisibility);
	Look.ToolTip = TAttribute<FText>::CreateSP(this, &SConversationPlan::GetCopyButtonTooltip);
	Look.OnClicked = FOnClicked::CreateSP(this, &SConversationPlan::OnCopyButtonClicked);
	CopyButton = MakeIconButton(Look);
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		[
			// Without words until a translation brings some.
			SNew(STextBlock)
			.Text(LOCTEXT("ConversationPlan", ""))
			.Font(FVelmoraUIStyles::GetSmallTitleFont())
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		[
			SNullWidget::NullWidget
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Center)
		.Padding(8.0f, 0.0f, 0.0f, 0.0f)
		[
			CopyButton.ToSharedRef()
		];
	// clang-format on
}

TSharedRef<SWidget> SConversationPlan::BuildPlanDisplay()
{
	return SAssignNew(PlanScrollBox, SScrollBox);
}

TSharedRef<SWidget> SConversationPlan::CreatePlanWidget(const FString& Content)
{
	// clang-format off
	return SNew(SBorder)
		.BorderImage(GetPlanCardBrush())
		.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetVelmoraMessageBackgroundColor()))
		.Padding(FMargin(12.0f, 8.0f, 12.0f, 8.0f))
		[
			SNew(SMarkdownTextBlock)
			.Text(Content)
			.AutoWrapText(true)
			.Margin(FMargin(0.0f))
		];
	// clang-format on
}

// The one place that would leave something out; shown and copied is the same.
FString SConversationPlan::FilterPlanContent(const FString& Content) const
{
	return Content;
}

// A plan is replaced as a whole, and one reads a new one from its start.
void SConversationPlan::UpdatePlan(const FString& PlanContent)
{
	if (!PlanScrollBox.IsValid())
	{
		return;
	}
	CurrentPlanContent = PlanContent;
	const FString Display = FilterPlanContent(PlanContent);
	PlanScrollBox->ClearChildren();
	PlanScrollBox->AddSlot()[CreatePlanWidget(Display.IsEmpty() ? PlaceholderText : Display)];
	PlanScrollBox->ScrollToStart();
}

void SConversationPlan::ClearPlan()
{
	CurrentPlanContent.Empty();
	if (PlanScrollBox.IsValid())
	{
		PlanScrollBox->ClearChildren();
		PlanScrollBox->AddSlot()[CreatePlanWidget(PlaceholderText)];
	}
}

bool SConversationPlan::HasPlan() const
{
	return !CurrentPlanContent.IsEmpty() && !CurrentPlanContent.Equals(PlaceholderText, ESearchCase::IgnoreCase);
}

EVisibility SConversationPlan::GetCopyButtonVisibility() const
{
	return VisibleIf(HasPlan());
}

FText SConversationPlan::GetCopyButtonTooltip() const
{
	return LOCTEXT("CopyPlanTooltip", "Copy conversation plan to clipboard");
}

FReply SConversationPlan::OnCopyButtonClicked()
{
	if (HasPlan())
	{
		FPlatformApplicationMisc::ClipboardCopy(*FilterPlanContent(CurrentPlanContent));
	}
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
