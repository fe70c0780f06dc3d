#pragma once

#include "CoreTypes.h"

#include <cerrno>
#include <string>

/**
 * An error number of the system in words: a clause such as "no space left on the disk" that goes behind a colon, the same in
 * every locale. The one place where such words are written. Any thread.
 */
CORE_API std::string HostDescribeSystemError(int Error);

/** So often a call is made again when signals interrupt it; beyond, somebody interrupts it on purpose or for good. */
constexpr int HostMaxInterruptions = 1000;

/**
 * Makes a system call again while a signal interrupts it: Call answers -1 with errno set to EINTR then. One that is interrupted
 * for good fails with EINTR in the end, which has words like any other error. Not for close: the number is free afterwards.
 */
template <typename FCall>
auto HostRetryInterrupted(FCall Call)
{
	auto Result = Call();
	for (int Count = 0; Result == -1 && errno == EINTR && Count < HostMaxInterruptions; ++Count)
	{
		Result = Call();
	}
	return Result;
}
