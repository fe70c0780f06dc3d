#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Style/WidgetAnimator.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "ViewModels/ChatMessage.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/StayAwake.h"

class SBox;
class SButton;
class SToolExecutionContainer;
struct FSlateBrush;

/** Asks whether an undo may run now. */
DECLARE_DELEGATE_RetVal(bool, FCanUndoMessage);

/**
 * One entry of the message list: a card with a header and Markdown text, one line for a tool run, or the bare group of
 * tool runs. Flags and tool status follow the message each frame; texts are fixed when the row is made.
 */
class VELMORAUI_API SMessageRow : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMessageRow)
		: _IsLatestMessage(false)
		, _BuildWhenShown(false)
	{
	}
	SLATE_ARGUMENT(TSharedPtr<FChatMessage>, Message)
	/** The row was the last one when it was made. */
	SLATE_ARGUMENT(bool, IsLatestMessage)
	/**
	 * A row far from what is in view holds nothing until its first Tick, and takes about the room that it will need. For finished
	 * texts alone: others are made at once in any case.
	 */
	SLATE_ARGUMENT(bool, BuildWhenShown)
	/** Unbound means never. */
	SLATE_EVENT(FCanUndoMessage, CanUndo)
	/** The user asks to go back to before this message. */
	SLATE_EVENT(FSimpleDelegate, OnUndo)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** Takes on another message for all that is polled. Texts stay those of the old one: rows are not recycled. */
	void SetMessage(TSharedPtr<FChatMessage> NewMessage);
	void SetIsLatestMessage(bool bNewIsLatest);

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	void Build();
	TSharedRef<SWidget> BuildMessageHeader() const;
	TSharedRef<SWidget> BuildToolHeader();
	TSharedRef<SWidget> BuildTextHeader();
	TSharedRef<SWidget> BuildUndoButton();
	TSharedRef<SWidget> BuildCopyButton();
	TSharedRef<SWidget> BuildMessageContent();
	TSharedRef<SWidget> BuildToolGroup();
	TSharedRef<SWidget> BuildToolIndicator() const;

	FLinearColor GetAnimatedOpacity() const;
	const FSlateBrush* GetBorderBrush() const;
	FSlateColor GetBackgroundColor() const;
	FLinearColor GetBorderColor() const;
	FSlateColor GetSenderNameColor() const;
	EVisibility GetTypingIndicatorVisibility() const;
	EVisibility GetCopyButtonVisibility() const;
	FText GetCopyButtonTooltip() const;
	FSlateColor GetCopyButtonTint() const;
	EVisibility GetUndoButtonVisibility() const;
	bool GetUndoButtonEnabled() const;
	FText GetUndoButtonTooltip() const;
	FSlateColor GetUndoButtonTint() const;
	const FSlateBrush* GetToolStatusIcon() const;
	FSlateColor GetToolStatusColor() const;
	FText GetToolStatusText() const;

	FReply OnCopyButtonClicked();
	FReply OnUndoButtonClicked();

	TSharedPtr<FChatMessage> Message;
	bool bIsLatestMessage = false;
	bool bIsBuilt = false;
	FCanUndoMessage CanUndoDelegate;
	/** Finished Markdown content. */
	TSharedPtr<SWidget> CachedContent;
	TSharedPtr<SBox> ContentBox;
	TSharedPtr<SToolExecutionContainer> ToolContainer;
	/** Tools that the container knows of. */
	int32 LastToolCount = 0;
	float TypingAnimationTime = 0.0f;
	FWidgetAnimator FadeAnimator;
	FStayAwake StayAwake;
	FSimpleDelegate OnUndoDelegate;
	TSharedPtr<SButton> UndoButton;
	TSharedPtr<SButton> CopyButton;
};
