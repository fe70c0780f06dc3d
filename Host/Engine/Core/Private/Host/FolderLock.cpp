#include "Host/FolderLock.h"

#include "Host/HostSystemErrors.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

FFolderLock::FFolderLock(const std::string& Path, int32 TimeoutMilliseconds)
	: Folder(FFileDescriptor::Open(Path, O_RDONLY | O_DIRECTORY))
{
	if (!Folder.IsOpen())
	{
		Outcome = FOutcome::FromSystem(errno, Path);
		return;
	}
	// Asked again and again instead of waiting in the call, which would never come back while the other program hangs.
	const auto End = std::chrono::steady_clock::now() + std::chrono::milliseconds(TimeoutMilliseconds);
	while (HostRetryInterrupted([this] { return flock(Folder.Get(), LOCK_EX | LOCK_NB); }) != 0)
	{
		if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > End)
		{
			Outcome = FOutcome::FromSystem(errno, Path);
			return;
		}
		std::this_thread::sleep_for(std::chrono::milliseconds(1));
	}
}

FOutcome FFolderLock::Flush() const
{
	return Folder.Flush() ? FOutcome::Done() : FOutcome::FromSystem(errno);
}
