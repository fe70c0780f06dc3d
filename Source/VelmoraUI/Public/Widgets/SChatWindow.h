#pragma once

#include "CoreMinimal.h"
#include "Agent/ConversationTypes.h"
#include "Delegates/Delegate.h"
#include "FileSearch/AtFileReferenceController.h"
#include "Input/Events.h"
#include "Input/Reply.h"
#include "Layout/Margin.h"
#include "Layout/Visibility.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Templates/UniquePtr.h"
#include "Types/SlateEnums.h"
#include "UpdateGate.h"
#include "Widgets/ConversationHistoryRefresh.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/StayAwake.h"

class FChatMessage;
class FChatViewModel;
class SButton;
class SChangedFilesList;
class SEmptyState;
class SFileSearchDropdown;
class SHorizontalBox;
class SMenuAnchor;
class SMessageList;
class SMultiLineEditableTextBox;
class SOverlay;

namespace Velmora::UI
{
	struct FFileIndexEntry;
}

/**
 * The chat: header, messages, prompt and status in one column, and the only widget that drives the view model for the
 * conversation as a whole. Comes to life with SetViewModel. What is shown and enabled is a function of the conversation's
 * state and of the update gate, polled each frame; only the array of messages is pushed. Frames come while something is due and
 * once after each report of a change.
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

	// The mapping between places in the prompt and its text as one string: that of FPromptLines.
	static int32 TextLocationToLinearIndexForTests(const FString& Text, const FTextLocation& Location)
	{
		return TextLocationToLinearIndex(Text, Location);
	}
	static FTextLocation LinearIndexToTextLocationForTests(const FString& Text, int32 Index)
	{
		return LinearIndexToTextLocation(Text, Index);
	}

	int32 GetConversationDropdownOptionCountForTests() const { return ConversationHistories.Num(); }
	uint64 GetConversationHistoryRefreshRequestIdForTests() const { return HistoryRefresh.GetRequestId(); }
	bool IsConversationHistoryRefreshInFlightForTests() const { return HistoryRefresh.IsInFlight(); }
	bool IsConversationHistoryRefreshQueuedForTests() const { return HistoryRefresh.IsQueued(); }
	void RequestConversationHistoryRefreshForTests() { RequestRefreshConversationHistoriesAsync(); }
	/** To be called before the first refresh. */
	void SetConversationHistorySaveDirForTests(const FString& SaveDir) { ConversationHistorySaveDir = SaveDir; }

private:
	// Layout.
	TSharedRef<SWidget> BuildHeaderArea();
	TSharedRef<SWidget> BuildConversationSelector();
	struct FHeaderButton;
	TSharedRef<SWidget> BuildNewConversationButton();
	TSharedRef<SWidget> BuildExportButton();
	TSharedRef<SWidget> BuildClearButton();
	TSharedRef<SWidget> BuildHeaderButton(const FHeaderButton& Look);
	TSharedRef<SWidget> BuildHeaderButtonContent(const FHeaderButton& Look);
	TSharedRef<SWidget> BuildUpdateButton();
	TSharedRef<SWidget> BuildMessageArea();
	TSharedRef<SWidget> BuildInputArea();
	TSharedRef<SWidget> BuildContextChipsArea();
	TSharedRef<SWidget> BuildContextChip(const FString& File, TSharedPtr<SButton>& OutRemoveButton);
	TSharedRef<SWidget> BuildPrompt();
	/** Asked at each opening of the dropdown, which is made once and kept. */
	TSharedRef<SWidget> BuildFileSearchDropdownContent();
	TSharedRef<SWidget> BuildActionRow();
	TSharedRef<SWidget> BuildModeSelector();
	TSharedRef<SWidget> BuildSendButton();
	TSharedRef<SWidget> BuildPauseButton();
	TSharedRef<SWidget> BuildContinueButton();
	TSharedRef<SWidget> BuildCancelButton();
	TSharedRef<SWidget> BuildStatusBar();

	// What the view model reports.
	void OnStateChanged(Velmora::EConversationState NewState);
	void OnMessagesChanged();
	void OnUpdateGateStateChanged(Velmora::EUpdateGateState NewState);
	/** Makes all chips anew. A chip's place keeps the keyboard when its file was taken away by key. */
	void OnContextFilesChanged();

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
	bool IsConversationDropdownEnabled() const;
	EVisibility GetHeaderLabelVisibility() const;
	EVisibility GetBusyIndicatorVisibility() const;
	EVisibility GetMessageListVisibility() const;
	EVisibility GetEmptyStateVisibility() const;
	EVisibility GetContextChipsVisibility() const;
	/** Moves the row of chips so far that the one with the keyboard is in view. */
	FMargin GetContextChipsPadding() const;
	EVisibility GetInputAreaVisibility() const;
	bool IsInputTextBoxEnabled() const;
	bool IsCompactHeader() const;
	bool IsBusy() const;
	bool IsPaused() const;
	FText GetCharacterCountText() const;
	/** Empty without a conversation. */
	FString GetCurrentConversationId() const;
	bool IsModeSelectorEnabled() const;
	FText GetCurrentModeText() const;
	bool CanUndo() const;

	// The update on offer, polled, too.
	bool IsUpdateButtonVisible() const;
	EVisibility GetUpdateButtonVisibility() const;
	bool IsUpdateButtonEnabled() const;
	FText GetUpdateButtonText() const;
	/** The state of the update in a sentence, for a place that this layout does not have. */
	FText GetUpdateNoticeText() const;
	EVisibility GetUpdateNoticeVisibility() const;

	// Buttons.
	FReply OnSendButtonClicked();
	FReply OnPauseClicked();
	FReply OnContinueClicked();
	FReply OnCancelClicked();
	FReply OnNewConversationClicked();
	FReply OnExportClicked();
	FReply OnClearHistoryClicked();
	FReply OnUpdateButtonClicked();
	/** A hook that no widget of this window binds. */
	FReply OnSidepanelButtonClicked();

	// Files by @, chips, changed files.
	/** What belongs to the dropdown while it is open. */
	FReply OnInputKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent);
	void OnInputCursorMoved(const FTextLocation& NewLocation);
	/** Opens, closes and asks the dropdown as the @ token at the cursor wants it. */
	void UpdateFileSearch(const FTextLocation& Cursor);
	void OnFileSelected(const Velmora::UI::FFileIndexEntry& Entry);
	void OnFileSearchCancelled();
	void CloseFileSearch();
	void OnRemoveContextFile(const FString& File);
	/** Opens what a row of the changed files names: an asset or a file. */
	void OnFileClicked(const FString& Path);

	static int32 TextLocationToLinearIndex(const FString& Text, const FTextLocation& Location);
	static FTextLocation LinearIndexToTextLocation(const FString& Text, int32 Index);

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

	void OnUndoToMessage(TSharedPtr<FChatMessage> Message);

	// What Slate stays awake for.
	void SetUpStayingAwake();
	/** Lets the view model and the update gate bring frames, and those of before no longer. */
	void HearOfChanges(const TSharedPtr<FChatViewModel>& OldViewModel);
	void BringFrameForGate(Velmora::EUpdateGateState NewState);
	/** Something moves, or waits for the next ticks. */
	bool IsFrameDue() const;
	/** Something that is only polled may change by itself. */
	bool IsLookDue() const;

	// Stored conversations.
	void RequestRefreshConversationHistoriesAsync();
	/** Reads through the agent, on the game thread: stalls. */
	void RefreshConversationHistories();
	void RebuildConversationHistoriesFrom(const TArray<Velmora::FConversationMetadata>& Summaries);
	void SetConversationOptions(const TArray<Velmora::FConversationMetadata>& Summaries);
	void FinishHistoryRefresh(const TArray<Velmora::FConversationMetadata>& Summaries);
	/** The option for a conversation; null when it is not listed, or for null. */
	TSharedPtr<Velmora::FConversationMetadata> FindConversationOption(const TSharedPtr<Velmora::FConversationMetadata>& Conversation) const;
	/** Makes the box show the current conversation. One that is not listed can ask for a fresh list. */
	void SyncComboBoxSelection(bool bRequestRefreshIfMissing);
	void OnConversationSelected(TSharedPtr<Velmora::FConversationMetadata> Item, ESelectInfo::Type SelectInfo);
	TSharedRef<SWidget> OnGenerateConversationWidget(TSharedPtr<Velmora::FConversationMetadata> Item);
	FString OnGenerateConversationTitle(TSharedPtr<Velmora::FConversationMetadata> Item) const;
	/** The current conversation in a sentence, for a place that this layout does not have. */
	FText GetConversationDropdownText() const;
	FText GetConversationHeaderIdText() const;
	FText GetConversationHeaderTitleText() const;
	FText GetConversationHeaderTimeText() const;

	// Seconds.
	static const float ColorTransitionDuration;
	static const float ConversationHistoryRefreshInterval;

	TSharedPtr<FChatViewModel> ViewModel;
	TSharedPtr<SMessageList> MessageList;
	TSharedPtr<SEmptyState> EmptyState;
	TSharedPtr<SOverlay> MessageOverlay;
	TSharedPtr<SMultiLineEditableTextBox> InputTextBox;
	TSharedPtr<SButton> SendButton;
	TSharedPtr<SButton> CancelButton;
	TSharedPtr<SButton> PauseButton;
	TSharedPtr<SButton> ContinueButton;
	TSharedPtr<SButton> UpdateButton;
	TSharedPtr<SButton> NewConversationButton;
	TSharedPtr<SButton> ExportButton;
	TSharedPtr<SButton> ClearButton;
	TSharedPtr<SChangedFilesList> ChangedFilesList;
	TSharedPtr<SMenuAnchor> FileSearchAnchor;
	/** Null before its first opening. */
	TSharedPtr<SFileSearchDropdown> FileSearchDropdown;
	TSharedPtr<SHorizontalBox> ContextChipsContainer;
	/** Mirror of the prompt's text. All rules read this one and not the prompt. */
	FText CurrentInputText;
	TSharedPtr<SComboBox<TSharedPtr<Velmora::EConversationMode>>> ModeComboBox;
	TArray<TSharedPtr<Velmora::EConversationMode>> ModeOptions;
	/** Of the token that the dropdown is open for, otherwise -1. */
	int32 AtTokenIndex = -1;
	TUniquePtr<Velmora::UI::FAtFileReferenceController> AtFileController;
	/** The messages have changed since the last tick: a burst of changes scrolls once. */
	bool bPendingScrollToBottom = false;
	FLinearColor CurrentStatusColor = FLinearColor(0.0f, 0.0f, 0.0f, 0.0f);
	FLinearColor TargetStatusColor = FLinearColor(0.0f, 0.0f, 0.0f, 0.0f);
	/** 0 to 1; 1 means that no transition is running. */
	float ColorTransitionProgress = 0.0f;
	FDelegateHandle UpdateGateHandle;
	FConversationHistoryRefresh HistoryRefresh;
	/** A folder to read in place of the default store. */
	FString ConversationHistorySaveDir;
	TSharedPtr<SComboBox<TSharedPtr<Velmora::FConversationMetadata>>> ConversationComboBox;
	/** Replaced whole by each refresh: conversations are compared by their ids, never by their pointers. */
	TArray<TSharedPtr<Velmora::FConversationMetadata>> ConversationHistories;
	/** What the window holds for chosen, by which it tells a pick from the echo of its own doing. */
	TSharedPtr<Velmora::FConversationMetadata> SelectedConversation;
	FStayAwake StayAwake;
	FStayAwake LookNowAndThen;
	/** All that depends on the gate is polled, with a frame. */
	FDelegateHandle GateFrameHandle;
};
