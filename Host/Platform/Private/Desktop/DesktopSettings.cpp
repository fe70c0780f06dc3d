#include "Host/DesktopSettings.h"

#include "Async/Async.h"
#include "Desktop/SessionBusWatch.h"

namespace
{
	/** What is told and to whom. Tasks on their way hold it weakly, so that those which come late tell nobody. */
	struct FListener
	{
		TFunction<void(const FHostDesktopSettings&)> OnChange;
	};

	struct FWatchState
	{
		std::shared_ptr<FListener> Listener;
		std::unique_ptr<FSessionBusWatch> Watch;
	};

	FWatchState& GetState()
	{
		static FWatchState State;
		return State;
	}
}

void FHostDesktopWatch::Begin(TFunction<void(const FHostDesktopSettings&)> OnChange)
{
	End();
	if (!FSessionBusWatch::HasBus())
	{
		return;
	}
	FWatchState& State = GetState();
	State.Listener = std::make_shared<FListener>();
	State.Listener->OnChange = MoveTemp(OnChange);
	State.Watch = std::make_unique<FSessionBusWatch>(
		[Weak = std::weak_ptr<FListener>(State.Listener)](const FHostDesktopSettings& Settings)
		{
			AsyncTask(ENamedThreads::GameThread,
				[Weak, Settings]
				{
					if (const std::shared_ptr<FListener> Listener = Weak.lock())
					{
						Listener->OnChange(Settings);
					}
				});
		});
}

void FHostDesktopWatch::End()
{
	FWatchState& State = GetState();
	State.Watch.reset();
	State.Listener.reset();
}
