#include "Agent/TurnControl.h"

#include <chrono>

namespace Velmora
{
	void FTurnControl::Cancel()
	{
		{
			const std::scoped_lock Lock(Mutex);
			bIsCancelled = true;
		}
		Changed.notify_all();
	}

	void FTurnControl::SetPaused(bool bInPaused)
	{
		{
			const std::scoped_lock Lock(Mutex);
			bIsPaused = bInPaused;
		}
		Changed.notify_all();
	}

	bool FTurnControl::WaitUntilRunning()
	{
		std::unique_lock Lock(Mutex);
		Changed.wait(Lock, [this] { return !bIsPaused || bIsCancelled; });
		return !bIsCancelled;
	}

	bool FTurnControl::Sleep(double Seconds)
	{
		std::unique_lock Lock(Mutex);
		return !Changed.wait_for(Lock, std::chrono::duration<double>(Seconds), [this] { return bIsCancelled.load(); });
	}
}
