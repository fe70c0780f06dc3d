#pragma once

#include "CoreMinimal.h"
#include "Agent/ConversationTypes.h"
#include "Input/Events.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Types/SlateEnums.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/SCompoundWidget.h"

class FChatViewModel;
class SButton;
class SEmptyState;
class SMessageList;
class SMultiLineEditableTextBox;
class SOverlay;

/**
 * The chat: header, messages, prompt and status in one column, and the only widget that drives the view model for the
 * conversation as a whole. Comes to life with SetViewModel. What is shown and enabled is a function of the conversation's
 * state and of the update gate, polled each frame; only the array of messages is pushed.
 */
class VELMORAUI_API SChatWindow : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SChatWindow) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** Shows a conversation in place of the present one, with the status in its colour at once. Null shows none. */
	void SetViewModel(TSharedPtr<FChatViewModel> InViewModel);

	/** Ticks the view model, too. */
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	/** Ctrl+Enter in the prompt sends, before the prompt sees the key. */
	virtual FReply OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual bool SupportsKeyboardFocus() const override { return true; }

private:
	// Layout.
	TSharedRef<SWidget> BuildHeaderArea();
	TSharedRef<SWidget> BuildMessageArea();
	TSharedRef<SWidget> BuildInputArea();
	TSharedRef<SWidget> BuildPrompt();
	TSharedRef<SWidget> BuildActionRow();
	TSharedRef<SWidget> BuildModeSelector();
	TSharedRef<SWidget> BuildSendButton();
	TSharedRef<SWidget> BuildPauseButton();
	TSharedRef<SWidget> BuildContinueButton();
	TSharedRef<SWidget> BuildCancelButton();
	TSharedRef<SWidget> BuildStatusBar();

	// What the view model tells.
	void OnStateChanged(Velmora::EConversationState NewState);
	void OnMessagesChanged();

	// Polled each frame: these read flags and allocate nothing, but for texts.
	FText GetStatusText() const;
	FSlateColor GetStatusColor() const;
	EVisibility GetSendButtonVisibility() const;
	bool IsSendButtonEnabled() const;
	EVisibility GetPauseButtonVisibility() const;
	bool IsPauseButtonEnabled() const;
	EVisibility GetContinueButtonVisibility() const;
	bool IsContinueButtonEnabled() const;
	bool IsCancelButtonEnabled() const;
	FSlateColor GetCancelButtonTint() const;
	bool IsNewConversationButtonEnabled() const;
	FSlateColor GetNewConversationButtonTint() const;
	EVisibility GetHeaderLabelVisibility() const;
	EVisibility GetBusyIndicatorVisibility() const;
	EVisibility GetMessageListVisibility() const;
	EVisibility GetEmptyStateVisibility() const;
	EVisibility GetInputAreaVisibility() const;
	bool IsInputTextBoxEnabled() const;
	bool IsCompactHeader() const;
	bool IsBusy() const;
	bool IsPaused() const;
	FText GetCharacterCountText() const;
	bool IsModeSelectorEnabled() const;
	FText GetCurrentModeText() const;
	bool CanUndo() const;

	// Buttons.
	FReply OnSendButtonClicked();
	FReply OnPauseClicked();
	FReply OnContinueClicked();
	FReply OnCancelClicked();
	FReply OnNewConversationClicked();
	/** A hook that no widget of this window binds. */
	FReply OnSidepanelButtonClicked();

	// Prompt and mode.
	void OnInputTextChanged(const FText& NewText);
	void OnInputTextCommitted(const FText& NewText, ETextCommit::Type CommitType);
	void ClearInput();
	TSharedRef<SWidget> GenerateModeWidget(TSharedPtr<Velmora::EConversationMode> Item);
	void OnModeSelectionChanged(TSharedPtr<Velmora::EConversationMode> Item, ESelectInfo::Type SelectInfo);
	/** Makes the selector show the mode in force. */
	void SyncModeComboBoxSelection();
	/** The conversation's mode, or the one that a new conversation would have. */
	Velmora::EConversationMode GetEffectiveMode() const;

	/** Seconds. */
	static const float ColorTransitionDuration;

	TSharedPtr<FChatViewModel> ViewModel;
	TSharedPtr<SMessageList> MessageList;
	TSharedPtr<SEmptyState> EmptyState;
	TSharedPtr<SOverlay> MessageOverlay;
	TSharedPtr<SMultiLineEditableTextBox> InputTextBox;
	TSharedPtr<SButton> SendButton;
	TSharedPtr<SButton> CancelButton;
	TSharedPtr<SButton> PauseButton;
	TSharedPtr<SButton> ContinueButton;
	TSharedPtr<SButton> NewConversationButton;
	/** Mirror of the prompt's text. All rules read this one and not the prompt. */
	FText CurrentInputText;
	TSharedPtr<SComboBox<TSharedPtr<Velmora::EConversationMode>>> ModeComboBox;
	TArray<TSharedPtr<Velmora::EConversationMode>> ModeOptions;
	/** The messages have changed since the last tick: a burst of changes scrolls once. */
	bool bPendingScrollToBottom = false;
	FLinearColor CurrentStatusColor = FLinearColor(0.0f, 0.0f, 0.0f, 0.0f);
	FLinearColor TargetStatusColor = FLinearColor(0.0f, 0.0f, 0.0f, 0.0f);
	/** 0 to 1; 1 means that no transition is running. */
	float ColorTransitionProgress = 0.0f;
};
