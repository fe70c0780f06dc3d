#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Async/Future.h"
#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"
#include "Host/AgentMessages.h"
#include "Host/AgentQuestions.h"
#include "Host/Outcome.h"
#include "Store/UnstoredConversations.h"
#include "Tools/AgentPlan.h"
#include "Turn/TurnControl.h"
#include "Turn/TurnRunner.h"

namespace Velmora
{
	class FAgentSession;
	class FChangeJournal;
	class FConversationStore;
	class FPermissionRules;
	class FTurnRecorder;
	struct FRecoveredUndo;
	struct FUndoResult;

	// What AgentQuestions.h hands on: a number for a question of that session, the question itself, and its end.
	uint32 OpenQuestion(const TSharedRef<FAgentSession>& Session);
	void AnnounceQuestion(const FAgentQuestion& Question);
	void WithdrawQuestion(uint32 Id);

	/** What TurnOutcome.h tells from now on; empty for a turn that begins or has done what was asked. */
	void NoteTurnFailure(const FString& Why);

	/** What AgentMessages.h acts on from now on: the agent that was made last. */
	void NoteSession(const TSharedRef<FAgentSession>& Session);

	/**
	 * What the built-in agent is made of, apart from its face so that it lives through a callback that lets go of
	 * the agent. Game thread. Workers know it weakly and reach it through game-thread tasks alone; a report counts
	 * only while its turn is the current one.
	 */
	class FAgentSession : public TSharedFromThis<FAgentSession>
	{
	public:
		struct FCallbacks
		{
			TFunction<void(const FString&, bool)> MessageReceived;
			TFunction<void(const FString&, const FString&, const FString&, const FString&)> ToolStarted;
			TFunction<void(const FString&, const FString&, bool, const FString&)> ToolCompleted;
			TFunction<void(EConversationState, EConversationState, const FString&)> StateChanged;
			TFunction<void(const FString&)> Error;
			TFunction<void(bool, const FString&)> ConversationCompleted;
			TFunction<void(const FString&)> ConversationLoaded;
			TFunction<void(const FString&)> ProcessMessage;
			TFunction<void(const FString&, const FString&)> PlanUpdate;
		};
		FCallbacks Callbacks;

		/** For the owner's destructor: silent for good; waits a moment for the workers, so that none outlives the process's end. */
		void Abandon();

		FString StartConversation(EConversationMode Mode);
		bool SendMessage(const FString& Text, const TArray<FString>& ContextFiles);
		void PauseConversation();
		void ResumeConversation(const FString& Prompt);
		void CancelConversation();
		void EndConversation();
		bool LoadConversation(const FString& Id);
		bool DeleteConversationHistory(const FString& Id);
		void ClearAllHistories();
		TArray<FConversationMetadata> GetHistories();

		/** Tells what the store has to say as errors, now and later. For an agent whose error callback has been set. */
		void ListenForNotices();

		/**
		 * Restores files and messages as they were before the message of that transaction, or changes nothing and tells why. The work
		 * is a worker's, and the window goes on drawing until it is done.
		 */
		bool UndoToTransaction(const FString& TransactionId);

		// As AgentMessages.h says.
		TOptional<FLastMessage> GetLastMessage() const;
		FString TakeBackLastMessage();

		/** Of the last message that was accepted in this conversation; empty before the first. */
		const FString& GetTransactionId() const { return TransactionId; }

		/**
		 * Goes in the background through what a process that died has left of its changes: an undo that was under way is
		 * finished and told, the rest is removed.
		 */
		void CleanUpAfterOthers();

		EConversationState GetState() const { return State; }
		const TSharedPtr<FConversationMetadata>& GetCurrent() const { return Current; }
		FString GetTitle() const;

		/** Markdown, empty without a plan. */
		FString GetPlan() const;

		/** A turn is running or paused. */
		bool HasTurn() const { return Turn.IsValid(); }

		/** A turn is running: it neither waits for the user nor is there none. */
		bool IsWorking() const { return HasTurn() && State != EConversationState::Paused; }

		/** Frames run while an undo is waited for: until it is over, the conversation stays as it is. */
		bool IsUndoing() const { return bIsUndoing; }

		/** Answers the question that is open. False when there is none, or it takes no such answer. */
		bool AnswerQuestion(EAgentAnswer Answer);

		/** Of the project that is open. */
		const std::shared_ptr<FPermissionRules>& GetRules();

	private:
		struct FOpenTool
		{
			FString Id;
			FString Name;
		};

		/** The question that the turn waits on. */
		struct FOpenQuestion
		{
			FTurnQuestion Asked;
			uint32 Id = 0;

			/** From when on it is on screen, in seconds of the clock. */
			double ShownAt = 0.0;

			/** The user wanted to pause when it came: the next Continue shows it again. */
			bool bAskAgain = false;
		};

		void StartTurn(const FString& Prompt);
		FTurnInput MakeTurnInput(const FString& Prompt);

		/** What a worker reports: stored where it must be, then on its way to the game thread. */
		static void TakeReport(FTurnReport&& Report, const TSharedRef<FTurnControl>& Control, const TSharedRef<FTurnRecorder>& TurnRecorder,
			const TWeakPtr<FAgentSession>& WeakSession);

		void AskQuestion(FTurnQuestion&& Asked);
		void ShowQuestion(const FString& Text);
		void ContinueAtQuestion(const FString& Prompt);

		/** Hands the answer to the turn, which goes on. */
		void CloseQuestion(FDecision&& Decision, const TCHAR* Reason);
		void ForgetQuestion();
		void DeliverEnd(FTurnReport&& Report);

		/** Cuts the conversation before a message, in the store first. */
		FOutcome CutMessages(int32 MessageIndex);
		void ForgetMessages(int32 MessageIndex);

		/** The files and the stored messages; what the session itself holds is left alone. */
		FUndoResult PerformUndo(const FString& Id, int32& OutMessageIndex);

		/** The place of the user's last message, or of the one whose transaction goes on to the end; INDEX_NONE without one. */
		int32 FindLastMessage(std::string& OutTransactionId) const;

		/** Opens the transaction of the message that was recorded last, or adds that message to the one that is open. */
		void OpenTransaction();
		void AddToTransaction();

		/** What a later start knows a message by. */
		std::string MarkOf(int32 MessageIndex) const;

		/** What was done in a conversation that is gone cannot be undone any more; in all but the current one without a name. */
		void ForgetChanges(const FString& ConversationId);
		void ForgetIn(std::vector<std::shared_ptr<FChangeJournal>>&& Journals, const FString& ConversationId);
		void TakeFormerJournals(std::vector<std::shared_ptr<FChangeJournal>>&& Adopted);

		/** That of this run first. */
		std::vector<std::shared_ptr<FChangeJournal>> ListJournals() const;

		/** A conversation that was opened may have been left in mid-turn: stopped, or with the end of its program. */
		void TellWhereItStopped();

		/** What the store has of the current conversation. */
		void TakeAttached();

		/** As progress texts, in a task of their own. */
		void TellSoon(const std::vector<std::string>& Sentences);
		void OnUndoRecovered(const FRecoveredUndo& Recovered);

		/** Tells the history trackers what has been changed since the last call; false when nothing has. */
		bool PublishChanges();

		/** Lets go of the turn and of all that was still to be told of it. */
		void DropTurn();

		void OnReport(const TSharedRef<FTurnControl>& From, FTurnReport&& Report);
		void DeliverHeldReports();
		void Deliver(FTurnReport&& Report);

		/** The state that goes with a report. False when the report is not to be told now. */
		bool EnterStateOf(FTurnReport& Report);

		/** Reports the tools under way as failed. */
		void CloseOpenTools(const FString& Why);

		/** Takes on a plan and tells it. */
		void SetPlan(FAgentPlan&& NewPlan, const FString& What);

		/** What the step under way is called while the user lets the turn wait, and when it goes on. */
		void MarkPlanPaused(bool bIsPaused, const FString& Why);

		/** Marks the step under way when a turn ends before its plan. */
		void StopPlan(EPlanStepStatus Status, const FString& Why);

		/** Another conversation has become current: it has no plan, and takes a message. */
		void SetOpened(const FString& Reason);

		void SetState(EConversationState NewState, const FString& Reason);

		/** Takes on the store of the project that is open now. */
		void OpenStore();
		FConversationStore& GetStore();

		// Done when the message is in the store; it stands in the conversation in any case.
		FOutcome RecordUserMessage(const FString& Text, const TArray<FString>& Files = TArray<FString>());
		FOutcome RecordReported(const FTurnReport& Report);

		/** Stores what the store lacks, the conversations that were left first. What it does not take is tried again soon. */
		FOutcome CatchUp();
		FOutcome CatchUpOnce(int32 TimeoutMilliseconds);
		void RetryLater();

		/** Keeps what the store lacks of a conversation that is left. */
		void KeepUnstored();

		/** The last try, at the end of the agent: what is lost is told. */
		void StoreAtLast();

		/** Once until the store works again. */
		void TellStoreProblem(const FOutcome& Failure);

		/** The same in a task of its own, for a callback that has to come after the call under way. */
		void TellStoreProblemSoon(const FOutcome& Failure);
		void TellNotices();
		void AddMessage(const FString& Text, EConversationRole Role, bool bHasToolCalls = false);
		void OpenEmptyConversation(EConversationMode Mode);

		/**
		 * Calls a callback on a copy, since it may replace or destroy the original. Any callback may end, cancel or
		 * restart things: who goes on after one compares Epoch first.
		 */
		template <typename... FArguments, typename... FValues>
		void Fire(const TFunction<void(FArguments...)>& Callback, const FValues&... Values)
		{
			if (const TFunction<void(FArguments...)> Copy = Callback)
			{
				Copy(Values...);
			}
		}

		EConversationState State = EConversationState::NotStarted;
		EConversationState StateBeforePause = EConversationState::Thinking;
		TSharedPtr<FConversationMetadata> Current;

		TSharedPtr<FConversationStore> Store;

		/** To messages of the current conversation. */
		FAttachedFiles Attached;

		/** How many messages of the current conversation the store has. */
		int32 StoredCount = 0;

		/** It is to have those behind, too. */
		bool bIsBehind = false;
		bool bHasToldStoreProblem = false;
		FUnstoredConversations Unstored;
		FTSTicker::FDelegateHandle RetryTicker;

		/** Null between turns. */
		TSharedPtr<FTurnControl> Turn;
		TSharedPtr<FTurnRecorder> Recorder;
		TArray<FString> TurnContextFiles;

		/** Of the project in whose undo folder it works; made with the first message. */
		std::shared_ptr<FChangeJournal> Journal;
		FString JournalFolder;

		/** Of earlier runs, by which what was done in a conversation that was opened again can be undone. The latest first. */
		std::vector<std::shared_ptr<FChangeJournal>> FormerJournals;

		/** What was forgotten before these were there, as ForgetChanges was told. */
		TArray<FString> ForgottenEarly;
		bool bHasFormerJournals = false;
		FString TransactionId;
		bool bIsUndoing = false;
		TArray<FOpenTool> OpenTools;

		std::optional<FOpenQuestion> Question;

		/** When the user continued last, in seconds of the clock. */
		double LastContinue = -1.0e9;

		/** Made with the first turn of a project. */
		std::shared_ptr<FPermissionRules> Rules;
		FString RulesPath;

		/** Of the last request of several steps in this conversation. */
		FAgentPlan Plan;

		/** In order; waiting for the end of a pause, or for the one before them. */
		std::deque<FTurnReport> HeldReports;

		/** Changes whenever what was under way no longer counts. */
		uint32 Epoch = 0;
		TArray<TFuture<void>> Workers;
	};
}
