#include "Threads/ThreadPulse.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include <unistd.h>

namespace Velmora
{
	namespace
	{
		/** How often the threads are looked at while they are waited for. */
		constexpr int LooksPerTimeout = 10;

		/** See proc(5); empty when the thread has gone. */
		std::string ReadThreadFile(pid_t Thread, const char* Name)
		{
			std::ifstream File("/proc/self/task/" + std::to_string(Thread) + '/' + Name, std::ios::binary);
			return std::string(std::istreambuf_iterator<char>(File), {});
		}

		/** Runs, or waits for a processor alone. */
		bool IsRunnable(pid_t Thread)
		{
			const std::string Stat = ReadThreadFile(Thread, "stat");
			// Behind the name, which may hold anything.
			const size_t Name = Stat.rfind(") ");
			return Name != std::string::npos && Stat.size() > Name + 2 && Stat[Name + 2] == 'R';
		}
	}

	void FThreadPulse::Add()
	{
		Threads.push_back(gettid());
	}

	void FThreadPulse::Remove()
	{
		const auto Found = std::find(Threads.begin(), Threads.end(), gettid());
		if (Found != Threads.end())
		{
			Threads.erase(Found);
		}
	}

	bool FThreadPulse::Beats()
	{
		// Time on a processor, time of waiting for one, turns.
		std::string Times;
		bool bIsRunnable = false;
		for (const pid_t Thread : Threads)
		{
			Times += ReadThreadFile(Thread, "schedstat");
			bIsRunnable = bIsRunnable || IsRunnable(Thread);
		}
		return std::exchange(LastTimes, Times) != Times || bIsRunnable;
	}

	EThreadWait FThreadPulse::WaitUntil(
		std::unique_lock<std::mutex>& Lock, std::condition_variable& Changed, double SilentSeconds, const std::function<bool()>& IsOver)
	{
		using FClock = std::chrono::steady_clock;
		const std::chrono::duration<double> Timeout(SilentSeconds);
		const FClock::time_point Start = FClock::now();
		// Counted in looks, since all threads alike stand still while the machine has no turn for this process.
		int SilentLooks = 0;
		Beats();
		while (!Changed.wait_for(Lock, Timeout / LooksPerTimeout, IsOver))
		{
			SilentLooks = Beats() ? 0 : SilentLooks + 1;
			if (SilentLooks >= LooksPerTimeout)
			{
				return EThreadWait::Silent;
			}
			if (FClock::now() - Start >= Timeout * SlowFactor)
			{
				return EThreadWait::Slow;
			}
		}
		return EThreadWait::Ended;
	}
}
