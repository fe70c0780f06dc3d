#pragma once

#include "Async/Future.h"
#include "Async/TaskGraphInterfaces.h"
#include "Templates/Function.h"

#include <type_traits>
#include <utility>

enum class EAsyncExecution
{
	/** The background pool. */
	TaskGraph,
	/** The game thread's queue. */
	TaskGraphMainThread,
	/** A thread of its own. */
	Thread,
	ThreadIfForkSafe,
	/** The background pool. */
	ThreadPool,
	LargeThreadPool,
};

namespace HostAsyncPrivate
{
	CORE_API void Run(EAsyncExecution Execution, TUniqueFunction<void()> Task);
}

/**
 * Runs something elsewhere and hands back its result. Dropping the future does not wait.
 * @param CompletionCallback  Called after the result is set, on the thread that made it.
 */
template <typename TCallable>
auto Async(EAsyncExecution Execution, TCallable&& Callable, TUniqueFunction<void()> CompletionCallback = nullptr)
	-> TFuture<std::invoke_result_t<std::decay_t<TCallable>&>>
{
	using FResult = std::invoke_result_t<std::decay_t<TCallable>&>;
	TPromise<FResult> Promise;
	TFuture<FResult> Future = Promise.GetFuture();
	HostAsyncPrivate::Run(Execution,
		[Callable = std::decay_t<TCallable>(std::forward<TCallable>(Callable)), Promise = std::move(Promise),
			Completion = std::move(CompletionCallback)]() mutable
		{
			if constexpr (std::is_void_v<FResult>)
			{
				Callable();
				Promise.SetValue();
			}
			else
			{
				Promise.SetValue(Callable());
			}
			if (Completion)
			{
				Completion();
			}
		});
	return Future;
}

/** Queues a task for the game thread, also when called there, or hands it to the background pool. */
CORE_API void AsyncTask(ENamedThreads::Type Thread, TUniqueFunction<void()> Task);
