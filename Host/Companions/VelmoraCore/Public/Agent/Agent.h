#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	/**
	 * An agent that holds one current conversation, answers what the user sends and reports what it does.
	 *
	 * Everything here is called on the game thread, and every callback arrives there, some from inside the
	 * call that causes them. A callback may call the agent again, and may let go of it. Each registration
	 * replaces the one before. After EndConversation has begun, and after the agent has been destroyed, no
	 * callback fires for what ran before.
	 */
	class VELMORACORE_API FAgent
	{
	public:
		virtual ~FAgent() = default;

		/**
		 * Opens a new conversation and makes it current. One that is current already is ended first, silently.
		 *
		 * @return The id of the conversation, empty when none could be opened (the project folder is gone).
		 */
		virtual FString StartConversation(EConversationMode Mode) = 0;

		/**
		 * Takes a message of the user and starts a turn. The message stands in the metadata and in the store, on
		 * disk, when this returns true; the answer comes through callbacks, each message stored before it is told.
		 *
		 * @param ContextFiles  Files to look at first, absolute or relative to the project.
		 * A message of blanks is answered, and opens no transaction.
		 *
		 * @return False when nothing was sent: no conversation, a turn is running or paused, the text is empty, or
		 *         the store did not take it in time, which OnError explains.
		 */
		virtual bool SendMessage(const FString& Text, const TArray<FString>& ContextFiles) = 0;

		/** Holds the running turn: the state is Paused at once, a tool under way ends, no other starts. Without a turn nothing happens. */
		virtual void PauseConversation() = 0;

		/**
		 * Continues a paused turn; nothing when none is paused. Where a question is open, an empty prompt allows what it asks
		 * once, unless it comes too soon for anybody to have read it; a text refuses it and is passed on.
		 *
		 * @param Prompt  Empty to go on as if nothing had happened. Otherwise the new request of the same turn,
		 *                which replaces the old one and is recorded as a message of the user.
		 */
		virtual void ResumeConversation(const FString& Prompt) = 0;

		/** Stops the running or paused turn. A tool under way is reported as failed. Without a turn nothing happens. */
		virtual void CancelConversation() = 0;

		/** Closes the current conversation, silently from the first line on. It stays in the store if anything was said. */
		virtual void EndConversation() = 0;

		/**
		 * Makes a stored conversation current and fires OnConversationLoaded, before or after this returns.
		 *
		 * @return False when the store does not have it, cannot be read, or a turn is running (one that is paused is stopped); nothing has
		 * happened then but that OnError has told why.
		 */
		virtual bool LoadConversation(const FString& Id) = 0;

		/**
		 * Removes a conversation from the store. When it is the current one, it is ended and an empty one of
		 * the same mode takes its place.
		 *
		 * @return False when neither the store nor the agent knows it.
		 */
		virtual bool DeleteConversationHistory(const FString& Id) = 0;

		/** Empties the store, and stops a turn that is paused. The current conversation stays current and is stored again with its next
		 * message. */
		virtual void ClearAllHistories() = 0;

		/**
		 * Reverts everything done at and after the transaction: assets, files and the later messages.
		 *
		 * @return False when it is unknown or cannot be reverted; nothing has changed then.
		 */
		virtual bool UndoToTransaction(const FString& TransactionId) = 0;

		virtual EConversationState GetState() const = 0;
		virtual bool HasActiveConversation() const = 0;

		/** The same object for as long as the conversation is current, so that its Mode can be written in place. Null without one. */
		virtual TSharedPtr<FConversationMetadata> GetCurrentConversationMetadata() const = 0;

		/** First message of the user, shortened to one line. Empty without a conversation or before the first message. */
		virtual FString GetCurrentConversationTitle() const = 0;

		/**
		 * All stored conversations, the latest first, each with its messages up to the first one of the user and no
		 * more. One in which nothing was said is not stored. Reads the disk: FConversationHistoryManager does so elsewhere.
		 */
		virtual TArray<FConversationMetadata> GetConversationHistories() const = 0;

		/** An undo may run now, that is, no turn is running. It stops one that is paused. */
		virtual bool CanUndo() const = 0;

		/** Undo transaction of the message just accepted, valid right after SendMessage. Empty when there is none to go back to. */
		virtual FString GetCurrentTransactionId() const = 0;

		/** Text of the current plan, empty when there is none. */
		virtual FString GetCurrentPlan() const = 0;

		/** The agent has said something. */
		virtual void OnMessageReceived(TFunction<void(const FString& Text, bool bHasToolCalls)> Callback) = 0;

		/** A tool starts. Parameters and Metadata are JSON objects in a string. */
		virtual void OnToolExecutionStarted(
			TFunction<void(const FString& ToolId, const FString& ToolName, const FString& Parameters, const FString& Metadata)>
				Callback) = 0;

		/** A tool has ended. ToolId and ToolName are those of its start. Result is a sentence for people. */
		virtual void OnToolExecutionCompleted(
			TFunction<void(const FString& ToolId, const FString& ToolName, bool bSuccess, const FString& Result)> Callback) = 0;

		/** The state has changed; GetState gives the new one already. */
		virtual void OnStateChanged(
			TFunction<void(EConversationState OldState, EConversationState NewState, const FString& Reason)> Callback) = 0;

		/** Something went wrong that the user should know. */
		virtual void OnError(TFunction<void(const FString& Error)> Callback) = 0;

		/** A conversation, not only a turn, has come to its end by itself. */
		virtual void OnConversationCompleted(TFunction<void(bool bSuccess, const FString& Summary)> Callback) = 0;

		/** A stored conversation has become current. */
		virtual void OnConversationLoaded(TFunction<void(const FString& ConversationId)> Callback) = 0;

		/** Progress text. One that starts with "Executing step" opens a step of work. */
		virtual void OnProcessMessage(TFunction<void(const FString& Text)> Callback) = 0;

		/** The plan has changed. First names what changed; PlanText is the whole new plan. */
		virtual void OnPlanUpdate(TFunction<void(const FString& First, const FString& PlanText)> Callback) = 0;
	};
}
