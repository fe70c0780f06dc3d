#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

namespace Velmora
{
	enum class EAgentActivityKind : uint8
	{
		Request, // One request to a model and its answer.
		Tool, // One call of a tool.
		Wait, // A pause before the next try, or while the user is asked.
		Note // A sentence: a turn begins or ends, the conversation was shortened.
	};

	/** One row of what goes on between the agent and a model. Text that is too long is cut, with a note that says so. */
	struct FAgentActivityEntry
	{
		/** Grows from row to row, never zero. */
		uint32 Id = 0;
		EAgentActivityKind Kind = EAgentActivityKind::Note;
		FDateTime StartedAt;

		/** It has ended; Seconds and what follows are final then. */
		bool bIsDone = false;

		/** It has ended well. */
		bool bSuccess = false;

		/** How long it took; while it is under way see FAgentActivity::GetSeconds. */
		double Seconds = 0.0;

		/** Request: connection and model. Tool: its name. Wait, Note: a sentence. */
		FString Title;

		/** Request, Tool: one sentence on its end. */
		FString Outcome;

		/** Request: the body as it was sent, which never holds the key. Tool: the arguments, JSON as the model wrote them. */
		FString Input;

		/** Request: the answer so far, calls apart; while it streams at most the last MaxTextLength characters. Tool: the result. */
		FString Text;

		/** Request: what the model thought before. */
		FString Thinking;

		/** Request: pieces that have come so far, which is about the number of tokens. */
		int64 PieceCount = 0;

		// Request, negative where the server does not say.
		int64 PromptTokens = -1;
		int64 CompletionTokens = -1;
		int64 CachedTokens = -1;
		int64 ReasoningTokens = -1;

		/** Request: how many tokens the conversation may have; 0 when nobody says. */
		int64 ContextTokens = 0;

		/** Request: by the prices of the connection; negative without. */
		double Cost = -1.0;

		/** Request, from when it was sent; negative before. */
		double FirstByteSeconds = -1.0;

		/** Request, in bytes. */
		int64 SentBytes = 0;
		int64 ReceivedBytes = 0;

		/** Tokens of the conversation after this answer, and how many are left. False when the server or the size is silent on it. */
		bool GetContext(int64& OutUsed, int64& OutLeft) const;
	};

	/** A turn with a model that is under way. */
	struct FAgentTurnStatus
	{
		bool bIsRunning = false;

		/** Since it began. */
		double Seconds = 0.0;

		/** That have come so far in this turn: counted by the server, or about by the pieces that came. */
		int64 Tokens = 0;

		/** "local, qwen3" */
		FString Agent;
	};

	/**
	 * What goes on between the agent and a model, as rows that change while they are under way. Bounded: the oldest rows go. Rows
	 * come to the game thread in batches, at most one each time that its tasks are run. Game thread.
	 */
	class VELMORACORE_API FAgentActivity
	{
	public:
		static constexpr int32 MaxEntries = 400;

		/** Of one row's Text or Thinking. */
		static constexpr int32 MaxTextLength = 256 * 1024;

		/** Of one row's Input. */
		static constexpr int32 MaxInputLength = 2 * 1024 * 1024;

		/** Of all rows together, in characters. */
		static constexpr int64 MaxTotalLength = 16 * 1024 * 1024;

		/** The oldest first. */
		static const TArray<TSharedRef<const FAgentActivityEntry>>& GetEntries();

		/** Grows with every batch, so that who draws knows whether anything is new. */
		static uint32 GetRevision();

		/** How long a row took, or has taken so far. */
		static double GetSeconds(const FAgentActivityEntry& Entry);

		/** Called after each batch and after Clear. Unset for nobody. */
		static void SetListener(TFunction<void()> Listener);

		static void Clear();

		static FAgentTurnStatus GetTurnStatus();
	};
}
