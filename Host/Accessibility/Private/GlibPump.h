#pragma once

#include "CoreMinimal.h"

#include <memory>
#include <thread>

/**
 * Lets GLib's main context work within a loop that is not its own. A thread waits where the context would wait; what there is to do
 * is done on the game thread, a little at a time.
 */
class FGlibPump
{
public:
	FGlibPump();
	~FGlibPump();
	FGlibPump(const FGlibPump&) = delete;
	FGlibPump& operator=(const FGlibPump&) = delete;

	/** Does what waits, for some milliseconds at most, and has the thread wait for more. Game thread. */
	void Serve();

private:
	struct FShared;
	/** Tells the thread what to wait for. */
	void Arm();
	static void Watch(const std::shared_ptr<FShared>& Shared);

	std::shared_ptr<FShared> Shared;
	std::thread Thread;
};
