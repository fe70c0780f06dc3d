#pragma once

#include "CoreMinimal.h"
#include "Agent/ConversationTypes.h"
#include "Delegates/Delegate.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "ViewModels/ChatMessage.h"
#include "ViewModels/ConversationExport.h"

namespace Velmora
{
	class FAgent;
	class FAgentStateObserver;
}

/**
 * The widgets' door to the agent. Owns the messages of the current conversation, turns the user's commands into calls
 * of the agent and the agent's reports into messages, and says through four delegates what has changed.
 *
 * Game thread, the agent's callbacks included. The callbacks hold a plain pointer to the view model and cannot be taken
 * back, so the owner releases the agent together with it.
 */
class VELMORAUI_API FChatViewModel : public TSharedFromThis<FChatViewModel>
{
public:
	DECLARE_MULTICAST_DELEGATE(FOnMessagesChanged);
	DECLARE_MULTICAST_DELEGATE_OneParam(FOnStateChanged, Velmora::EConversationState);
	DECLARE_MULTICAST_DELEGATE_OneParam(FOnError, const FString&);
	DECLARE_MULTICAST_DELEGATE(FOnContextFilesChanged);

	FChatViewModel();

	/** Ends the conversation of the agent. */
	~FChatViewModel();

	FChatViewModel(const FChatViewModel&) = delete;
	FChatViewModel& operator=(const FChatViewModel&) = delete;

	/** Takes the agent on and shows the conversation that it already holds. False for a null agent. */
	bool Initialize(TSharedPtr<Velmora::FAgent> InAgent);
	bool IsInitialized() const { return Agent.IsValid(); }

	/** Called every frame; moves waiting messages of the agent into the list. */
	void Tick(float DeltaTime);

	// Commands. Without an agent they do nothing and return false.

	/** Ends the current conversation and opens a new one. A failure is reported in the list. */
	bool StartNewConversation(Velmora::EConversationMode Mode);

	/** Changes the mode of a conversation in which nothing has been said yet. True if it has the mode afterwards. */
	bool SetModeForEmptyConversation(Velmora::EConversationMode Mode);

	/** Shows the text and sends it with the context files. False, with the files still attached, if it was not sent. */
	bool SendMessage(const FString& Text);

	void PauseConversation();

	/** Goes on as if nothing had happened, or with a changed course if the prompt is not empty. */
	void ResumeConversation(const FString& Prompt);

	void CancelConversation();
	void EndConversation();

	/** Empties the list and asks for a stored conversation; its messages come when the agent has it. */
	bool LoadConversation(const FString& ConversationId);

	bool DeleteConversationHistory(const FString& ConversationId);

	/** Empties the list of messages. The store keeps the conversation. */
	void ClearHistory();

	/** Empties the agent's store. The list of messages stays. */
	void ClearAllHistories();

	/**
	 * Asks the user, has the agent take back everything done since the message was sent, and cuts the list before it.
	 * Waits for the answer. Refusals are reported in the list. True when the agent has undone the changes.
	 */
	bool UndoToMessage(TSharedPtr<FChatMessage> Message);

	/** Writes the list to a file. False when there is nothing to write or the file cannot be written. */
	bool ExportConversation(const FString& FilePath, EConversationExportFormat Format) const;

	// The contents of such a file, with the present as the time of export.
	FString ExportToMarkdown() const;
	FString ExportToPlainText() const;
	FString ExportToHTML() const;
	FString ExportToJSON() const;

	// Files that go out with the next message. Paths are compared without letter case.

	void AddContextFile(const FString& Path);
	void RemoveContextFile(const FString& Path);
	void ClearContextFiles();
	const TArray<FString>& GetContextFiles() const { return ContextFiles; }
	bool HasContextFiles() const { return ContextFiles.Num() > 0; }

	// Queries; cheap enough to be polled by widgets.

	/** Top-level messages, the oldest first. */
	const TArray<TSharedPtr<FChatMessage>>& GetMessages() const { return Messages; }
	/** Without the messages of the agent that still wait for their batch. */
	int32 GetMessageCount() const { return Messages.Num(); }
	Velmora::EConversationState GetState() const;
	/** General without a conversation. */
	Velmora::EConversationMode GetMode() const;
	bool HasActiveConversation() const;
	/** Null without a conversation. */
	TSharedPtr<Velmora::FConversationMetadata> GetCurrentConversationMetadata() const;
	FString GetCurrentConversationTitle() const;
	TArray<Velmora::FConversationMetadata> GetConversationHistories() const;
	bool IsBusy() const;
	bool CanUndo() const;
	bool CanSendMessage() const;
	/** One or two words for the header: the state of the update gate where it stands in the way, else of the agent. */
	FString GetStatusText() const;

	FOnMessagesChanged& OnMessagesChanged() { return MessagesChangedEvent; }
	FOnStateChanged& OnStateChanged() { return StateChangedEvent; }
	FOnError& OnError() { return ErrorEvent; }
	FOnContextFilesChanged& OnContextFilesChanged() { return ContextFilesChangedEvent; }

private:
	/** Ticks the view model, so it has to know when a message waits for that. */
	friend class SChatWindow;

	void SetupAgentCallbacks();

	void AddMessage(TSharedPtr<FChatMessage> Message);
	void RemoveMessage(TSharedPtr<FChatMessage> Message);
	void AddSystemMessage(const FString& Text);
	void RemovePausedNotice();
	TSharedPtr<FChatMessage> FindLastUserMessage() const;
	TSharedPtr<FChatMessage> FindRunningToolMessage(const FString& ToolName) const;

	// What the agent reports.
	void OnAgentMessageReceived(const FString& Text, bool bHasToolCalls);
	void OnAgentProcessMessage(const FString& Text);
	void OnAgentStateChanged(Velmora::EConversationState OldState, Velmora::EConversationState NewState, const FString& Reason);
	void OnAgentToolStarted(const FString& ToolId, const FString& ToolName, const FString& Parameters, const FString& Metadata);
	void OnAgentToolCompleted(const FString& ToolId, const FString& ToolName, bool bSuccess, const FString& Result);
	void OnAgentConversationCompleted(bool bSuccess, const FString& Summary);
	void OnAgentError(const FString& Error);
	void OnAgentConversationLoaded(const FString& ConversationId);

	/** Ends the step: the next tool shows whatever its header, in a group of its own. */
	void ClearSeenToolHeaders();
	TSharedPtr<FChatMessage> FindToolForCompletion(const FString& ToolId, const FString& ToolName) const;
	void UpdateToolMessage(TSharedPtr<FChatMessage> Row, bool bSuccess, const FString& Result);

	// Messages of the agent enter the list in batches: one change of the list per batch, not per message.
	void AddToBatch(TSharedPtr<FChatMessage> Message);
	bool HasPendingUpdates() const;
	void ProcessPendingUpdates(float DeltaTime);
	void FlushPendingMessages();

	/** Null until Initialize has succeeded. */
	TSharedPtr<Velmora::FAgent> Agent;
	TSharedPtr<Velmora::FAgentStateObserver> StateObserver;
	TArray<TSharedPtr<FChatMessage>> Messages;
	/** The notice of a pause, kept so that it can be taken away again. */
	TSharedPtr<FChatMessage> PausedNotice;
	/** The conversation that the user has asked for and that has not come yet. */
	FString PendingLoadConversationId;
	FOnMessagesChanged MessagesChangedEvent;
	FOnStateChanged StateChangedEvent;
	FOnError ErrorEvent;
	FOnContextFilesChanged ContextFilesChangedEvent;
	TArray<FString> ContextFiles;
	/** Verb and parameter of the tool rows of this step: a tool run that reads the same gets no second row. */
	TSet<FString> SeenToolHeaders;
	/** The group that takes the tool rows of this step. Null between steps. */
	TSharedPtr<FChatMessage> CurrentToolSummary;
	TArray<TSharedPtr<FChatMessage>> PendingMessages;
	bool bHasPendingUpdates = false;
	/** Called when a message waits for the next ticks; set by the window that ticks. */
	TFunction<void()> MessageWaitsHook;
};
