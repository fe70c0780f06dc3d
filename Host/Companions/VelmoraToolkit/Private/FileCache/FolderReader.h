#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Host/FileDescriptor.h"

namespace Velmora
{
	/** A regular file or a folder; everything else (links, pipes, devices) is left out of a project. */
	struct FFolderEntry
	{
		std::string Name;
		uint64_t Inode = 0;
		bool bIsFolder = false;
	};

	enum class EFolderRead : uint8_t
	{
		Complete,
		Partly, // An error, more entries than were asked for, or stopped.
		Failed
	};

	/** The entries of an open folder in the order of their names. Closes it. */
	EFolderRead ReadFolderEntries(
		FFileDescriptor Folder, size_t MaxEntries, const std::atomic<bool>& bStop, std::vector<FFolderEntry>& Out);

	/** Opens a folder below another for reading without following a link anywhere on the way. None on failure, errno tells why. */
	FFileDescriptor OpenFolderBeneath(int Root, const std::string& Path);

	/** The same for kernels and sandboxes that do not know or allow the one call it takes otherwise. */
	FFileDescriptor OpenFolderStepByStep(int Root, const std::string& Path);
}
