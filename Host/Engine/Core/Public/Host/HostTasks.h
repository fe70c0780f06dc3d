#pragma once

#include "CoreTypes.h"
#include "Templates/Function.h"

/** The program's side of Async and AsyncTask: the game thread's queue and the background threads. */
class CORE_API FHostTasks
{
public:
	/** Makes the calling thread the game thread. Until then it is the process's first thread. */
	static void SetGameThread();

	/**
	 * Runs the tasks that were queued before the call, in order; tasks that they queue wait for the next call. A task
	 * may call this again (a modal loop): the inner call goes on where the outer one stands. Game thread.
	 * @return How many it ran itself.
	 */
	static int32 RunGameThreadTasks();
	/** Bounds how many tasks one call of RunGameThreadTasks runs; zero, as at the start, for all that wait. Game thread. */
	static void SetMaxTasksPerRun(int32 Count);
	/** Whether a game-thread task waits. Any thread. */
	static bool HasPending();
	/**
	 * Of the game-thread task that the calling thread queues next: Note is called right before it is run. For who writes down when
	 * something that was read in the background reaches the game thread. What is not used goes with the background task.
	 */
	static void BeforeNextTask(TFunction<void()> Note);
	/** Called after every queueing of a game-thread task, on the thread that queued it; must be quick. Empty removes it. */
	static void SetWakeHook(TFunction<void()> Hook);

	/**
	 * Waits, in real time, until no background task runs or waits. Game-thread tasks are not run meanwhile.
	 * @return False when the time was up first.
	 */
	static bool WaitForBackground(double TimeoutSeconds);
	/** Background tasks that run or wait. Any thread. */
	static int32 GetBackgroundCount();

	/**
	 * Finishes what background threads have begun or been given and joins them; game-thread tasks that are still queued are
	 * dropped. Call at exit. A later task starts threads again.
	 */
	static void Shutdown();
};

/**
 * Marks work on a thread that is not one of these background threads, so that who waits for background work waits for it,
 * too, from construction to destruction. Any thread.
 */
class CORE_API FHostBackgroundWork
{
public:
	FHostBackgroundWork();
	~FHostBackgroundWork();
	FHostBackgroundWork(const FHostBackgroundWork&) = delete;
	FHostBackgroundWork& operator=(const FHostBackgroundWork&) = delete;
};
