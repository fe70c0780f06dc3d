#pragma once

#include <deque>

#include "Async/Future.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"
#include "Agent/TurnControl.h"
#include "Agent/TurnRunner.h"

namespace Velmora
{
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

		EConversationState GetState() const { return State; }
		const TSharedPtr<FConversationMetadata>& GetCurrent() const { return Current; }
		FString GetTitle() const;

		/** A turn is running or paused. */
		bool HasTurn() const { return Turn.IsValid(); }

	private:
		struct FOpenTool
		{
			FString Id;
			FString Name;
		};

		void StartTurn(const FString& Prompt);

		/** Lets go of the turn and of all that was still to be told of it. */
		void DropTurn();

		void OnReport(const TSharedRef<FTurnControl>& From, FTurnReport&& Report);
		void DeliverHeldReports();
		void Deliver(FTurnReport&& Report);

		/** Reports the tools under way as failed. */
		void CloseOpenTools(const FString& Why);

		void SetState(EConversationState NewState, const FString& Reason);
		void RecordMessage(EConversationRole Role, const FString& Text);
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

		/** Null between turns. */
		TSharedPtr<FTurnControl> Turn;
		TArray<FString> TurnContextFiles;
		TArray<FOpenTool> OpenTools;

		/** In order; waiting for the end of a pause, or for the one before them. */
		std::deque<FTurnReport> HeldReports;

		/** Changes whenever what was under way no longer counts. */
		uint32 Epoch = 0;
		TArray<TFuture<void>> Workers;
	};
}
