#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Velmora
{
	/** How waiting for threads came to its end. */
	enum class EThreadWait
	{
		Ended,
		/** They were at work all the time. */
		Slow,
		/** They waited for something that did not come: with files, for the file system. */
		Silent
	};

	/**
	 * Tells threads that are slow, on a busy machine or disk, from threads that stand still. One that has run since it was asked
	 * last, or wants to and gets no processor, is at work. Guarded by the lock of its owner.
	 */
	class FThreadPulse
	{
	public:
		/** Slow threads get this many times as long as silent ones. */
		static constexpr double SlowFactor = 10.0;

		/** Of the calling thread; each Add has its Remove. */
		void Add();
		void Remove();

		/** Some thread has been at work since the last call. Where the system does not tell, none has. */
		bool Beats();

		/**
		 * Waits until it is over, for as long as the threads are at work.
		 *
		 * @param SilentSeconds  For threads that stand still. Real time.
		 */
		EThreadWait WaitUntil(std::unique_lock<std::mutex>& Lock, std::condition_variable& Changed, double SilentSeconds,
			const std::function<bool()>& IsOver);

	private:
		std::vector<pid_t> Threads;
		std::string LastTimes;
	};
}
