#include "Widgets/SIndexProgressWidget.h"

#include "Editor.h"
#include "HAL/PlatformTime.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/Paths.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "TimerManager.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Notifications/SProgressBar.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "CodeIntel"

namespace
{

	constexpr float CompletionSeconds = 3.0f;
	constexpr int32 MaxShownPathLength = 80;

} // namespace

void SIndexProgressWidget::Construct(const FArguments& InArgs)
{
	StayAwake.SetUp(*this, [this] { return bIsBuilding || FadeInAnimator.IsAnimating() || FadeOutAnimator.IsAnimating(); });
	// clang-format off
	ChildSlot
	[
		SNew(SBorder)
		.BorderImage(FAppStyle::GetBrush("ToolPanel.GroupBorder"))
		.ColorAndOpacity(this, &SIndexProgressWidget::GetAnimatedOpacity)
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(STextBlock)
				.Text(LOCTEXT("IndexProgressTitle", "Code Intelligence Index"))
				.Font(FVelmoraUIStyles::GetMediumTitleFont())
				.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorPrimary()))
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SBox)
				.Visibility(this, &SIndexProgressWidget::GetProgressVisibility)
				[
					BuildProgressView()
				]
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			[
				SNew(SBox)
				.Visibility(this, &SIndexProgressWidget::GetCompletionVisibility)
				[
					SNew(STextBlock)
					.Text(this, &SIndexProgressWidget::GetCompletionMessage)
					.Font(FVelmoraUIStyles::GetBodyFont())
					.ColorAndOpacity(this, &SIndexProgressWidget::GetProgressBarColor)
				]
			]
		]
	];
	// clang-format on
}

TSharedRef<SWidget> SIndexProgressWidget::BuildProgressView()
{
	// clang-format off
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Text(this, &SIndexProgressWidget::GetStatusText)
			.Font(FVelmoraUIStyles::GetBodyFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorPrimary()))
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SProgressBar)
			.Percent(this, &SIndexProgressWidget::GetProgressPercent)
			.FillColorAndOpacity(this, &SIndexProgressWidget::GetProgressBarColor)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Text(this, &SIndexProgressWidget::GetCurrentFileText)
			.Font(FVelmoraUIStyles::GetSmallFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorSecondary()))
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(STextBlock)
			.Text(this, &SIndexProgressWidget::GetTimeRemainingText)
			.Font(FVelmoraUIStyles::GetSmallFont())
			.ColorAndOpacity(FSlateColor(FVelmoraUIStyles::GetTextColorTertiary()))
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SButton)
			.Text(LOCTEXT("CancelBuild", "Cancel"))
			.OnClicked(this, &SIndexProgressWidget::OnCancelClicked)
		];
	// clang-format on
}

void SIndexProgressWidget::UpdateProgress(int32 InFilesProcessed, int32 InTotalFiles, const FString& InCurrentFile, double InElapsedSeconds)
{
	FilesProcessed = InFilesProcessed;
	TotalFiles = InTotalFiles;
	CurrentFile = InCurrentFile;
	ElapsedSeconds = InElapsedSeconds;
	// The first report of a build begins it; nobody says so before.
	if (!bIsBuilding)
	{
		bIsBuilding = true;
		BuildStartTime = FPlatformTime::Seconds();
		FadeInAnimator.FadeIn(0.3f);
	}
	StayAwake.Start();
}

void SIndexProgressWidget::SetComplete(bool bInSuccess, const FText& Message)
{
	bIsBuilding = false;
	bSuccess = bInSuccess;
	CompletionMessage = !Message.IsEmpty() ? Message
		: bSuccess						   ? LOCTEXT("BuildSuccess", "Index build completed successfully!")
										   : LOCTEXT("BuildFailed", "Index build failed. Check log for details.");
	StayAwake.Start();
	if (GEditor)
	{
		// Nothing ever takes the timer back: it ends with the widget.
		FTimerHandle Unused;
		GEditor->GetTimerManager()->SetTimer(
			Unused, FTimerDelegate::CreateSP(this, &SIndexProgressWidget::StartCompletionFadeOut), CompletionSeconds, false);
	}
}

void SIndexProgressWidget::StartCompletionFadeOut()
{
	FadeOutAnimator.FadeOut(0.5f);
	StayAwake.Start();
}

void SIndexProgressWidget::Reset()
{
	// Everything, also a fade that runs: the widget is used again for the next build.
	FilesProcessed = 0;
	TotalFiles = 0;
	CurrentFile.Empty();
	ElapsedSeconds = 0.0;
	BuildStartTime = 0.0;
	bIsBuilding = false;
	bSuccess = false;
	CompletionMessage = FText::GetEmpty();
	FadeInAnimator.Reset();
	FadeOutAnimator.Reset();
	StayAwake.Start();
}

void SIndexProgressWidget::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	FadeInAnimator.Tick(InDeltaTime);
	FadeOutAnimator.Tick(InDeltaTime);
	if (bIsBuilding)
	{
		// By the clock between reports, so that the estimate goes down while one file takes long.
		ElapsedSeconds = FPlatformTime::Seconds() - BuildStartTime;
	}
	StayAwake.Update();
}

FText SIndexProgressWidget::GetStatusText() const
{
	if (TotalFiles <= 0)
	{
		return LOCTEXT("BuildStarting", "Starting index build...");
	}
	// Halves go up. In double, since the product may leave 32 bits.
	const int32 Percent = FMath::FloorToInt32(static_cast<double>(FilesProcessed) / TotalFiles * 100.0 + 0.5);
	return FText::Format(LOCTEXT("BuildProgress", "Building index: {0}/{1} files ({2}%)"), FText::AsNumber(FilesProcessed),
		FText::AsNumber(TotalFiles), FText::AsNumber(Percent));
}

TOptional<float> SIndexProgressWidget::GetProgressPercent() const
{
	return TotalFiles >= 1 ? static_cast<float>(FilesProcessed) / static_cast<float>(TotalFiles) : 0.0f;
}

FSlateColor SIndexProgressWidget::GetProgressBarColor() const
{
	if (bIsBuilding)
	{
		return FSlateColor(FVelmoraUIStyles::GetAccentColor());
	}
	return FSlateColor(bSuccess ? FVelmoraUIStyles::GetSuccessColor() : FVelmoraUIStyles::GetErrorColor());
}

FText SIndexProgressWidget::GetCurrentFileText() const
{
	if (CurrentFile.IsEmpty())
	{
		return FText::GetEmpty();
	}
	FString Display = CurrentFile;
	if (CurrentFile.Len() > MaxShownPathLength)
	{
		// The name stays whole; of the folders the end is kept.
		const FString Name = FPaths::GetCleanFilename(CurrentFile);
		const int32 Keep = MaxShownPathLength - 5 - Name.Len();
		Display = TEXT("...") + (Keep < 1 ? Name : CurrentFile.Right(Keep + Name.Len() + 1));
	}
	return FText::Format(LOCTEXT("CurrentFile", "Current: {0}"), FText::FromString(Display));
}

FText SIndexProgressWidget::GetTimeRemainingText() const
{
	if (FilesProcessed == 0 || TotalFiles == 0 || ElapsedSeconds < 1.0)
	{
		return LOCTEXT("Calculating", "Calculating time remaining...");
	}
	// As fast as so far: files differ, but over a project that evens out.
	const double Remaining = ElapsedSeconds / FilesProcessed * (TotalFiles - FilesProcessed);
	if (Remaining >= 60.0)
	{
		const int32 Minutes = FMath::FloorToInt32(Remaining / 60.0);
		const int32 Seconds = FMath::FloorToInt32(Remaining - Minutes * 60.0 + 0.5);
		return FText::Format(
			LOCTEXT("MinutesRemaining", "Estimated: {0}m {1}s remaining"), FText::AsNumber(Minutes), FText::AsNumber(Seconds));
	}
	return FText::Format(
		LOCTEXT("SecondsRemaining", "Estimated: {0} seconds remaining"), FText::AsNumber(FMath::FloorToInt32(Remaining + 0.5)));
}

EVisibility SIndexProgressWidget::GetProgressVisibility() const
{
	return VisibleIf(bIsBuilding);
}

EVisibility SIndexProgressWidget::GetCompletionVisibility() const
{
	return VisibleIf(!bIsBuilding && !CompletionMessage.IsEmpty());
}

FLinearColor SIndexProgressWidget::GetAnimatedOpacity() const
{
	float Opacity = 1.0f;
	// Going goes before coming: Cancel may be pressed while the widget still fades in.
	if (FadeOutAnimator.IsAnimating())
	{
		Opacity = 1.0f - FadeOutAnimator.GetOpacity();
	}
	else if (FadeInAnimator.IsAnimating())
	{
		Opacity = FadeInAnimator.GetOpacity();
	}
	else if (!bIsBuilding && CompletionMessage.IsEmpty())
	{
		Opacity = 0.0f;
	}
	return FLinearColor::White.CopyWithNewOpacity(Opacity);
}

FReply SIndexProgressWidget::OnCancelClicked()
{
	// Only the display: nothing here can stop a build.
	FadeOutAnimator.FadeOut(0.3f);
	StayAwake.Start();
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
