#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Host/FileDescriptor.h"

namespace Velmora
{
	enum class EFolderEvent : uint8_t
	{
		Entered, // A name has come, by being made or moved.
		Left, // A name has gone.
		Written, // A file has been closed by someone who wrote to it.
		Permissions,
		Gone, // The watched folder itself has been deleted, moved or unmounted, or its watch has ended.
		Overflow // Events were lost.
	};

	struct FFolderChange
	{
		EFolderEvent Event;

		/** Of Add. -1 for an overflow. */
		int Watch = -1;

		/** In the watched folder; empty when it is about the folder itself. Good during the call only. */
		std::string_view Name;
		bool bIsFolder = false;

		/** The watch does not exist any more. */
		bool bWatchEnded = false;
	};

	/** The kernel's queue of changes in folders. One thread. */
	class FFolderWatch
	{
	public:
		/** MaxWatches is a bound of our own, beside that of the system. */
		explicit FFolderWatch(size_t InMaxWatches);
		FFolderWatch(const FFolderWatch&) = delete;
		FFolderWatch& operator=(const FFolderWatch&) = delete;

		/** For poll; -1 when there is no queue. */
		int GetDescriptor() const { return Queue.Get(); }

		/** Watches an open folder. The number is that of an earlier watch if the folder has one. -1 when there are no more to be had. */
		int Add(int Folder);
		void Remove(int Watch);

		/** Hands over everything that waits, without waiting itself. */
		void Read(const std::function<void(const FFolderChange&)>& Take);

	private:
		const size_t MaxWatches;
		size_t WatchCount = 0;
		int HighestWatch = -1;
		const FFileDescriptor Queue;
	};
}
