#pragma once

#include "Agent/ConversationTypes.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"

#include <atomic>

/**
 * Reads the stored conversations on a worker, one read at a time: whatever is asked for during a read becomes one more read after
 * it. A worker gets copies of all that it needs, so that it never holds the window, which must not end on another thread. Game
 * thread, but for the three questions about the state.
 */
class VELMORAUI_API FConversationHistoryRefresh
{
public:
	/** Takes what a read has found, on the game thread, and says by Finish that it is done with it. */
	using FOnRead = TFunction<void(const TArray<Velmora::FConversationMetadata>& Summaries)>;

	/**
	 * Starts a read, or notes that one more is wanted after the one under way.
	 *
	 * @param SaveDir  The folder to read; empty for the default store.
	 * @param OnRead   Must not assume that whoever asked is still there.
	 */
	void Request(const FString& SaveDir, FOnRead OnRead);

	/** Ends the read under way. @return True when another one was asked for meanwhile: it is the caller's to start. */
	[[nodiscard]] bool Finish();

	/** True once in every Interval seconds. All windows count together: two of them ask twice as often, which does no harm. */
	[[nodiscard]] static bool IsDueAfter(float DeltaTime, float Interval);

	bool IsInFlight() const { return bHistoryRefreshInFlight.load(); }
	bool IsQueued() const { return bHistoryRefreshQueued.load(); }
	/** How many reads were started. */
	uint64 GetRequestId() const { return HistoryRefreshRequestId.load(); }

private:
	/** A worker or what it hands to the game thread is under way. */
	std::atomic<bool> bHistoryRefreshInFlight{ false };
	/** A read was asked for while one was under way. */
	std::atomic<bool> bHistoryRefreshQueued{ false };
	std::atomic<uint64> HistoryRefreshRequestId{ 0 };
};
