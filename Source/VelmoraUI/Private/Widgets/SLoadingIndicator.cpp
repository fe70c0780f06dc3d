#include "Widgets/SLoadingIndicator.h"

#include "Math/UnrealMathUtility.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

void SLoadingIndicator::Construct(const FArguments& InArgs)
{
	Message = InArgs._Message;
	bShowThrobber = InArgs._ShowThrobber;
	// The dots change three times a second.
	constexpr float FrameSeconds = 0.1f;
	StayAwake.SetUp(
		*this, [] { return true; }, FrameSeconds);

	// clang-format off
	const TSharedRef<SHorizontalBox> Row = MakeMarkedRow(
		SNew(SThrobber)
		.Visibility(VisibleIf(bShowThrobber)));
	Row->AddSlot()
	.AutoWidth()
	.VAlign(VAlign_Center)
	[
		SNew(STextBlock)
		.Text(this, &SLoadingIndicator::GetAnimatedMessage)
		.Font(FAppStyle::GetFontStyle("NormalText"))
		.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
	];
	ChildSlot
	[
		SNew(SBox)
		.HAlign(HAlign_Center)
		.VAlign(VAlign_Center)
		.Padding(FMargin(16.0f))
		[
			Row
		]
	];
	// clang-format on
}

void SLoadingIndicator::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	constexpr float CycleSeconds = 1.5f;
	AnimationTime += InDeltaTime;
	// Back to no dots, where the message begins.
	if (AnimationTime > CycleSeconds)
	{
		AnimationTime = 0.0f;
	}
	StayAwake.Update();
}

FText SLoadingIndicator::GetAnimatedMessage() const
{
	FString Text = Message.Get().ToString();
	if (Text.IsEmpty())
	{
		Text = TEXT("Loading");
	}
	const int32 Dots = FMath::FloorToInt(AnimationTime * 3.0f) % 4;
	return FText::FromString(Text + FString::ChrN(Dots, TEXT('.')));
}
