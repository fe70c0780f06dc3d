#include "Host/FileDescriptor.h"

#include "Host/HostSystemErrors.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

FFileDescriptor FFileDescriptor::Open(const std::string& Path, int Flags, mode_t Mode)
{
	return OpenAt(AT_FDCWD, Path, Flags, Mode);
}

FFileDescriptor FFileDescriptor::OpenAt(int Folder, const std::string& Path, int Flags, mode_t Mode)
{
	return FFileDescriptor(
		HostRetryInterrupted([Folder, &Path, Flags, Mode] { return openat(Folder, Path.c_str(), Flags | O_CLOEXEC, Mode); }));
}

bool FFileDescriptor::Close()
{
	const int Closing = Release();
	const int Error = errno;
	// The system has let go of the number also when it was interrupted, and somebody else may have it by now.
	if (Closing < 0 || close(Closing) == 0 || errno == EINTR)
	{
		errno = Error;
		return true;
	}
	return false;
}

bool FFileDescriptor::Write(std::string_view Bytes) const
{
	while (!Bytes.empty())
	{
		const ssize_t Count = HostRetryInterrupted([this, Bytes] { return write(Handle, Bytes.data(), Bytes.size()); });
		if (Count <= 0)
		{
			// A file that takes nothing and names no error is full.
			errno = Count == 0 ? ENOSPC : errno;
			return false;
		}
		Bytes.remove_prefix(static_cast<std::size_t>(Count));
	}
	return true;
}

bool FFileDescriptor::Read(std::string& OutBytes, uint64 MaxBytes) const
{
	constexpr uint64 PieceBytes = 64 * 1024;
	while (MaxBytes > 0)
	{
		const std::size_t Start = OutBytes.size();
		OutBytes.resize(Start + static_cast<std::size_t>(std::min(MaxBytes, PieceBytes)));
		const ssize_t Count =
			HostRetryInterrupted([this, &OutBytes, Start] { return read(Handle, OutBytes.data() + Start, OutBytes.size() - Start); });
		OutBytes.resize(Start + static_cast<std::size_t>(std::max<ssize_t>(Count, 0)));
		if (Count <= 0)
		{
			return Count == 0;
		}
		MaxBytes -= static_cast<uint64>(Count);
	}
	return true;
}

bool FFileDescriptor::Flush() const
{
	return HostRetryInterrupted([this] { return fsync(Handle); }) == 0;
}
