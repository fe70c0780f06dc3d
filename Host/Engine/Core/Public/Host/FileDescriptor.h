#pragma once

#include "CoreTypes.h"

#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

/**
 * Owns an open file, folder, pipe or socket and closes it at the end; -1 is none. Every descriptor of ours is held by one.
 *
 * Operations fail as the system's own calls do: with false, or none, and errno. Calls that a signal interrupts are made again.
 */
class CORE_API FFileDescriptor
{
public:
	FFileDescriptor() = default;
	explicit FFileDescriptor(int InHandle)
		: Handle(InHandle)
	{
	}
	FFileDescriptor(FFileDescriptor&& Other) noexcept
		: Handle(std::exchange(Other.Handle, -1))
	{
	}
	FFileDescriptor& operator=(FFileDescriptor&& Other) noexcept
	{
		std::swap(Handle, Other.Handle);
		return *this;
	}
	~FFileDescriptor() { Close(); }

	/** @param Flags  Of open, O_CLOEXEC comes by itself. */
	static FFileDescriptor Open(const std::string& Path, int Flags, mode_t Mode = 0);
	static FFileDescriptor OpenAt(int Folder, const std::string& Path, int Flags, mode_t Mode = 0);

	bool IsOpen() const { return Handle >= 0; }
	int Get() const { return Handle; }

	/** Lets go of it: whoever takes it closes it. */
	[[nodiscard]] int Release() { return std::exchange(Handle, -1); }

	/** False with errno when the system reports only now that something could not be written. errno stays otherwise. */
	bool Close();

	/** All bytes, from the current position on. */
	[[nodiscard]] bool Write(std::string_view Bytes) const;

	/** Appends what follows the current position, to the end or until OutBytes has grown by MaxBytes. */
	[[nodiscard]] bool Read(std::string& OutBytes, uint64 MaxBytes) const;

	/** Waits until it is on the disk. */
	[[nodiscard]] bool Flush() const;

private:
	int Handle = -1;
};
