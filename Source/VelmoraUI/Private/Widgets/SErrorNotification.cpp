#include "Widgets/SErrorNotification.h"

#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

void SErrorNotification::Construct(const FArguments& InArgs)
{
	ErrorMessage = InArgs._ErrorMessage;
	OnDismissed = InArgs._OnDismissed;
	Animator.FadeIn(0.3f);
	StayAwake.SetUp(*this, [this] { return Animator.IsAnimating(); });

	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.BorderBackgroundColor(FSlateColor(FVelmoraUIStyles::GetErrorColor().CopyWithNewOpacity(0.3f)))
		.Padding(FMargin(12.0f, 8.0f))
		.ColorAndOpacity(this, &SErrorNotification::GetAnimatedOpacity)
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(0.0f, 0.0f, 8.0f, 0.0f)
			[
				SNew(SImage)
				.Image(FAppStyle::GetBrush("Icons.Error"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetErrorColor()))
			]
			+ SHorizontalBox::Slot()
			.FillWidth(1.0f)
			.VAlign(VAlign_Center)
			[
				SNew(STextBlock)
				.Text(ErrorMessage)
				.Font(FAppStyle::GetFontStyle("NormalText"))
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorPrimary()))
				.AutoWrapText(true)
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			.VAlign(VAlign_Center)
			.Padding(8.0f, 0.0f, 0.0f, 0.0f)
			[
				SNew(SButton)
				.ButtonStyle(FAppStyle::Get(), "SimpleButton")
				.ToolTipText(LOCTEXT("DismissError", "Dismiss this error"))
				.OnClicked(this, &SErrorNotification::OnDismissClicked)
				[
					SNew(SImage)
					.Image(FAppStyle::GetBrush("Icons.X"))
					.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
				]
			]
		]
	];
	// clang-format on
}

void SErrorNotification::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	Animator.Tick(InDeltaTime);
	StayAwake.Update();
}

FLinearColor SErrorNotification::GetAnimatedOpacity() const
{
	return FLinearColor::White.CopyWithNewOpacity(Animator.GetOpacity());
}

FReply SErrorNotification::OnDismissClicked()
{
	// Whoever shows it takes it away; it does not know where it stands.
	OnDismissed.ExecuteIfBound();
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
