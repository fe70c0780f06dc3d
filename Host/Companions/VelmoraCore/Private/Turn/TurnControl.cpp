#include "Turn/TurnControl.h"

#include <chrono>
#include <utility>

namespace Velmora
{
	void FTurnControl::Cancel()
	{
		{
			const std::scoped_lock Lock(Mutex);
			bIsCancelled = true;
			WaitsForUser.reset();
		}
		Changed.notify_all();
		const std::scoped_lock Lock(HookMutex);
		if (CancelHook)
		{
			CancelHook();
		}
	}

	void FTurnControl::SetPaused(bool bInPaused)
	{
		{
			const std::scoped_lock Lock(Mutex);
			bIsPaused = bInPaused;
			if (!bIsPaused)
			{
				WaitsForUser.reset();
			}
		}
		Changed.notify_all();
	}

	bool FTurnControl::WaitUntilRunning()
	{
		std::unique_lock Lock(Mutex);
		if (bIsPaused && !bIsCancelled)
		{
			WaitsForUser.emplace();
		}
		Changed.wait(Lock, [this] { return !bIsPaused || bIsCancelled; });
		return !bIsCancelled;
	}

	bool FTurnControl::Sleep(double Seconds)
	{
		std::unique_lock Lock(Mutex);
		return !Changed.wait_for(Lock, std::chrono::duration<double>(Seconds), [this] { return bIsCancelled.load(); });
	}

	FDecision FTurnControl::WaitForDecision()
	{
		std::unique_lock Lock(Mutex);
		if (!Decided && !bIsCancelled)
		{
			WaitsForUser.emplace();
		}
		Changed.wait(Lock, [this] { return Decided.has_value() || bIsCancelled; });
		FDecision Decision = !bIsCancelled ? std::move(*Decided) : FDecision();
		Decided.reset();
		return Decision;
	}

	void FTurnControl::Decide(FDecision&& Decision)
	{
		{
			const std::scoped_lock Lock(Mutex);
			Decided = std::move(Decision);
			WaitsForUser.reset();
		}
		Changed.notify_all();
	}

	void FTurnControl::SetCancelHook(std::function<void()> Hook)
	{
		const std::scoped_lock Lock(HookMutex);
		CancelHook = std::move(Hook);
		if (CancelHook && bIsCancelled)
		{
			CancelHook();
		}
	}
}
