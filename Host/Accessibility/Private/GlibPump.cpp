#include "GlibPump.h"

#include "Async/Async.h"
#include "HAL/PlatformTime.h"
#include "Host/FileDescriptor.h"

#include <condition_variable>
#include <glib.h>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

namespace
{
	/** Of a frame, so that a client that asks for thousands of things does not keep it waiting. */
	constexpr double ServeSeconds = 0.004;
}

struct FGlibPump::FShared
{
	std::mutex Mutex;
	std::condition_variable Changed;
	std::vector<pollfd> Files;
	int TimeoutMilliseconds = -1;
	bool bArmed = false;
	bool bEnds = false;
	/** Ends the wait of the thread. */
	FFileDescriptor Poke{ eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) };
	/** Game thread: null once the pump is gone. */
	FGlibPump* Pump = nullptr;

	void Wake()
	{
		const uint64_t One = 1;
		// It fails only when the counter is full, and then the thread is awake.
		(void)!write(Poke.Get(), &One, sizeof(One));
	}
};

FGlibPump::FGlibPump()
	: Shared(std::make_shared<FShared>())
{
	Shared->Pump = this;
	Thread = std::thread([Kept = Shared] { Watch(Kept); });
	Arm();
}

FGlibPump::~FGlibPump()
{
	Shared->Pump = nullptr;
	{
		const std::lock_guard Lock(Shared->Mutex);
		Shared->bEnds = true;
	}
	Shared->Changed.notify_all();
	Shared->Wake();
	// It waits for nothing but this.
	Thread.join();
}

void FGlibPump::Serve()
{
	const double End = FPlatformTime::Seconds() + ServeSeconds;
	int32 Rounds = 0;
	// On the simulated clock no time passes within a turn, so rounds are counted as well.
	constexpr int32 MaxRounds = 256;
	while (Rounds++ < MaxRounds && FPlatformTime::Seconds() < End && g_main_context_iteration(nullptr, FALSE))
	{
	}
	Arm();
}

void FGlibPump::Arm()
{
	// 1. What the context waits for now. Asking changes nothing that a later iteration would rely on.
	GMainContext* const Context = g_main_context_default();
	if (!g_main_context_acquire(Context))
	{
		return;
	}
	gint Priority = 0;
	const bool bReady = g_main_context_prepare(Context, &Priority) != FALSE;
	gint Timeout = -1;
	std::vector<GPollFD> Wanted(16);
	gint Count = 0;
	while ((Count = g_main_context_query(Context, Priority, &Timeout, Wanted.data(), static_cast<gint>(Wanted.size()))) >
		static_cast<gint>(Wanted.size()))
	{
		Wanted.resize(static_cast<size_t>(Count));
	}
	g_main_context_release(Context);

	// 2. The thread waits for it in the context's place.
	{
		const std::lock_guard Lock(Shared->Mutex);
		Shared->Files.clear();
		for (gint Index = 0; Index < Count; ++Index)
		{
			// GLib's bits are those of poll.
			const GPollFD& File = Wanted[static_cast<size_t>(Index)];
			Shared->Files.push_back({ File.fd, static_cast<short>(File.events), 0 });
		}
		Shared->TimeoutMilliseconds = bReady ? 0 : Timeout;
		Shared->bArmed = true;
	}
	Shared->Changed.notify_all();
	Shared->Wake();
}

void FGlibPump::Watch(const std::shared_ptr<FShared>& Shared)
{
	std::vector<pollfd> Files;
	for (;;)
	{
		// 1. Nothing is waited for while the game thread is about to look.
		int Timeout = -1;
		{
			std::unique_lock Lock(Shared->Mutex);
			Shared->Changed.wait(Lock, [&Shared] { return Shared->bArmed || Shared->bEnds; });
			if (Shared->bEnds)
			{
				return;
			}
			Files = Shared->Files;
			Timeout = Shared->TimeoutMilliseconds;
		}
		Files.push_back({ Shared->Poke.Get(), POLLIN, 0 });
		const int Found = poll(Files.data(), Files.size(), Timeout);

		// 2. A poke means that there is something else to wait for.
		if (Files.back().revents != 0)
		{
			uint64_t Pokes = 0;
			(void)!read(Shared->Poke.Get(), &Pokes, sizeof(Pokes));
			bool bOthers = false;
			for (size_t Index = 0; Index + 1 < Files.size(); ++Index)
			{
				bOthers = bOthers || Files[Index].revents != 0;
			}
			if (!bOthers)
			{
				continue;
			}
		}
		else if (Found < 0)
		{
			// Interrupted by a signal, or out of memory for a moment.
			continue;
		}
		{
			const std::lock_guard Lock(Shared->Mutex);
			Shared->bArmed = false;
		}
		AsyncTask(ENamedThreads::GameThread,
			[Shared]
			{
				if (Shared->Pump)
				{
					Shared->Pump->Serve();
				}
			});
	}
}
