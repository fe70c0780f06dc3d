#pragma once

#include "CoreMinimal.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Misc/Optional.h"
#include "Style/WidgetAnimator.h"
#include "Styling/SlateColor.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/StayAwake.h"

/**
 * Progress of an index build: counts, a bar, the current file, an estimate, and at the end whether it went well. Fades in
 * with the first update of a build, and out some seconds after its end; until the first update it is transparent. The
 * owner feeds it, on the game thread.
 */
class VELMORAUI_API SIndexProgressWidget : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SIndexProgressWidget) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** @param InElapsedSeconds  Since the start of the build; the widget counts on by itself from its first update. */
	void UpdateProgress(int32 InFilesProcessed, int32 InTotalFiles, const FString& InCurrentFile, double InElapsedSeconds);

	/** @param Message  Shown as it is; an empty one is replaced by a plain sentence. */
	void SetComplete(bool bInSuccess, const FText& Message);

	/** As new, and therefore out of sight. */
	void Reset();

	bool IsBuilding() const { return bIsBuilding; }

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	TSharedRef<SWidget> BuildProgressView();
	void StartCompletionFadeOut();

	FText GetStatusText() const;
	TOptional<float> GetProgressPercent() const;
	FSlateColor GetProgressBarColor() const;
	FText GetCurrentFileText() const;
	FText GetTimeRemainingText() const;
	FText GetCompletionMessage() const { return CompletionMessage; }
	EVisibility GetProgressVisibility() const;
	EVisibility GetCompletionVisibility() const;
	FLinearColor GetAnimatedOpacity() const;
	/** Hides the progress. The build goes on. */
	FReply OnCancelClicked();

	int32 FilesProcessed = 0;
	int32 TotalFiles = 0;
	FString CurrentFile;
	/** Seconds. */
	double ElapsedSeconds = 0.0;
	/** Platform time of the build's first update. */
	double BuildStartTime = 0.0;
	bool bIsBuilding = false;
	bool bSuccess = false;
	FText CompletionMessage;
	FWidgetAnimator FadeInAnimator;
	FWidgetAnimator FadeOutAnimator;
	FStayAwake StayAwake;
};
