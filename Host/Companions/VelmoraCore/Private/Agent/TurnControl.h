#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace Velmora
{
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

	private:
		std::mutex Mutex;
		std::condition_variable Changed;
		bool bIsPaused = false;
		std::atomic<bool> bIsCancelled = false;
	};
}
