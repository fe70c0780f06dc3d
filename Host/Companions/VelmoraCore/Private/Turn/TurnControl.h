#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "Host/HostBackgroundPause.h"

namespace Velmora
{
	enum class EDecision
	{
		AllowedOnce,
		AllowedAlways, // In this project; the rule has been written down by then.
		Refused,
		Stopped // The turn is over.
	};

	/** The answer to a question of a turn. */
	struct FDecision
	{
		EDecision Kind = EDecision::Stopped;

		/** With Refused: what the user wants instead, or nothing. UTF-8. */
		std::string Words;

		bool IsAllowed() const { return Kind == EDecision::AllowedOnce || Kind == EDecision::AllowedAlways; }
	};

	/** How the game thread steers a worker. Shared by both; every operation may be called on any thread. */
	class FTurnControl
	{
	public:
		/** For good: whatever waits returns at once. */
		void Cancel();
		void SetPaused(bool bInPaused);
		bool IsCancelled() const { return bIsCancelled; }

		/** Waits while paused. False when cancelled. */
		bool WaitUntilRunning();

		/** Waits that long, also when paused. False when cancelled. */
		bool Sleep(double Seconds);

		/** Waits for the answer to the question that was reported last. Worker. */
		FDecision WaitForDecision();

		/** Answers the question that the worker waits on, or is about to. */
		void Decide(FDecision&& Decision);

		/**
		 * Called by Cancel, on its thread and at once when it has been called before: for a worker that waits for something
		 * else than this control. It must be quick. An empty hook takes the last one away; afterwards it is not called any more.
		 */
		void SetCancelHook(std::function<void()> Hook);

	private:
		std::mutex Mutex;
		std::condition_variable Changed;
		bool bIsPaused = false;
		std::atomic<bool> bIsCancelled = false;
		std::optional<FDecision> Decided;

		/** While a worker waits for its user. Who lets it go on takes it away, so that the work counts again from that moment. */
		std::optional<FHostBackgroundPause> WaitsForUser;

		/** Held while the hook runs, too. */
		std::mutex HookMutex;
		std::function<void()> CancelHook;
	};
}
