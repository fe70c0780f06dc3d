#pragma once

#include "Host/HostTasks.h"
#include "Support/UiDriver.h"

#include <chrono>
#include <functional>
#include <thread>

/** Shows a widget whose workers read and find things for it. */
class FWorkerTest : public FWidgetTest
{
protected:
	/** Frames and tasks until the test holds; real time, since workers take it. */
	bool Wait(const std::function<bool()>& Test)
	{
		for (int32 Try = 0; Try < 1000 && !Test(); ++Try)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(5));
			FHostTasks::RunGameThreadTasks();
			PumpFrame();
		}
		return Test();
	}

	/** Takes what is shown away and lets everything end that was begun for it. */
	void EndWork()
	{
		App().SetRootContent(SNullWidget::NullWidget);
		PumpFrame();
		FHostTasks::WaitForBackground(30.0);
		FHostTasks::RunGameThreadTasks();
	}
};
