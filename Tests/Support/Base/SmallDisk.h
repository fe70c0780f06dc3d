#pragma once

#include <csignal>
#include <sys/resource.h>

/** Lets no file grow beyond some bytes, as a full disk would. */
class FSmallDisk
{
public:
	explicit FSmallDisk(rlim_t Bytes)
	{
		OldHandler = std::signal(SIGXFSZ, SIG_IGN);
		getrlimit(RLIMIT_FSIZE, &Old);
		const rlimit New{ Bytes, Old.rlim_max };
		setrlimit(RLIMIT_FSIZE, &New);
	}
	~FSmallDisk()
	{
		setrlimit(RLIMIT_FSIZE, &Old);
		std::signal(SIGXFSZ, OldHandler);
	}

private:
	rlimit Old{};
	void (*OldHandler)(int) = nullptr;
};
