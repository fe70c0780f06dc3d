#pragma once

#include "Misc/Timespan.h"
#include "Templates/SharedPointer.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <type_traits>

namespace HostFuturePrivate
{
	struct FNothing
	{
	};

	/** What a promise and its future share. */
	template <typename T>
	struct TState
	{
		std::mutex Mutex;
		std::condition_variable Changed;
		std::optional<T> Value;

		void Set(T&& InValue)
		{
			{
				const std::lock_guard<std::mutex> Lock(Mutex);
				Value.emplace(static_cast<T&&>(InValue));
			}
			Changed.notify_all();
		}
		bool IsReady()
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			return Value.has_value();
		}
		bool WaitFor(double Seconds)
		{
			std::unique_lock<std::mutex> Lock(Mutex);
			return Changed.wait_for(Lock, std::chrono::duration<double>(Seconds), [this] { return Value.has_value(); });
		}
		void Wait()
		{
			std::unique_lock<std::mutex> Lock(Mutex);
			Changed.wait(Lock, [this] { return Value.has_value(); });
		}
	};

	template <typename T>
	using TStored = std::conditional_t<std::is_void_v<T>, FNothing, T>;
}

/**
 * A result that comes later. Dropping it does not wait. Moved, never copied. Any thread, one at a time.
 * Get, Consume and Wait block; on the game thread they must not wait for a task that needs the game thread.
 */
template <typename T>
class TFuture
{
	using FStored = HostFuturePrivate::TStored<T>;
	using FState = HostFuturePrivate::TState<FStored>;

public:
	TFuture() = default;
	explicit TFuture(const TSharedPtr<FState>& InState)
		: State(InState)
	{
	}
	TFuture(TFuture&&) = default;
	TFuture& operator=(TFuture&&) = default;
	TFuture(const TFuture&) = delete;
	TFuture& operator=(const TFuture&) = delete;

	/** False when it belongs to no promise. */
	bool IsValid() const { return State.IsValid(); }
	bool IsReady() const { return State.IsValid() && State->IsReady(); }
	void Wait() const { State->Wait(); }
	/** @return Whether the result has come in time. */
	bool WaitFor(const FTimespan& Duration) const { return State->WaitFor(Duration.GetTotalSeconds()); }
	/** The reference lives as long as this future. */
	std::add_lvalue_reference_t<std::add_const_t<T>> Get() const
	{
		State->Wait();
		if constexpr (!std::is_void_v<T>)
		{
			return *State->Value;
		}
	}
	/** Takes the result out and lets go of it. */
	T Consume()
	{
		State->Wait();
		TSharedPtr<FState> Taken = State;
		State.Reset();
		if constexpr (!std::is_void_v<T>)
		{
			return static_cast<FStored&&>(*Taken->Value);
		}
	}
	void Reset() { State.Reset(); }

private:
	TSharedPtr<FState> State;
};

/** The side of a result that sets it, once. */
template <typename T>
class TPromise
{
	using FStored = HostFuturePrivate::TStored<T>;
	using FState = HostFuturePrivate::TState<FStored>;

public:
	TPromise()
		: State(MakeShared<FState>())
	{
	}
	TPromise(TPromise&&) = default;
	TPromise& operator=(TPromise&&) = default;
	TPromise(const TPromise&) = delete;
	TPromise& operator=(const TPromise&) = delete;

	TFuture<T> GetFuture() { return TFuture<T>(State); }
	void SetValue(FStored InValue) requires(!std::is_void_v<T>) { State->Set(static_cast<FStored&&>(InValue)); }
	void SetValue() requires(std::is_void_v<T>) { State->Set(FStored()); }

private:
	TSharedPtr<FState> State;
};
