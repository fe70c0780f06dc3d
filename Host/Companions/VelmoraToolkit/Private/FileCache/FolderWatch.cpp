#include "FileCache/FolderWatch.h"

#include <cstring>

#include <sys/inotify.h>
#include <unistd.h>

#include "Host/HostSystemErrors.h"

namespace Velmora
{
	namespace
	{
		constexpr uint32_t WatchedEvents =
			IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF;

		bool ToFolderEvent(uint32_t Mask, EFolderEvent& OutEvent)
		{
			OutEvent = (Mask & IN_Q_OVERFLOW) != 0										  ? EFolderEvent::Overflow
				: (Mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) != 0 ? EFolderEvent::Gone
				: (Mask & (IN_CREATE | IN_MOVED_TO)) != 0								  ? EFolderEvent::Entered
				: (Mask & (IN_DELETE | IN_MOVED_FROM)) != 0								  ? EFolderEvent::Left
				: (Mask & IN_CLOSE_WRITE) != 0											  ? EFolderEvent::Written
																						  : EFolderEvent::Permissions;
			return OutEvent != EFolderEvent::Permissions || (Mask & IN_ATTRIB) != 0;
		}
	}

	FFolderWatch::FFolderWatch(size_t InMaxWatches)
		: MaxWatches(InMaxWatches)
		, Queue(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
	{
	}

	int FFolderWatch::Add(int Folder)
	{
		if (!Queue.IsOpen() || WatchCount >= MaxWatches)
		{
			return -1;
		}
		// By its descriptor, so that what is watched is what is read, whatever happens to the path meanwhile.
		const std::string Path = "/proc/self/fd/" + std::to_string(Folder);
		const int Watch = inotify_add_watch(Queue.Get(), Path.c_str(), WatchedEvents | IN_ONLYDIR | IN_EXCL_UNLINK);
		if (Watch > HighestWatch)
		{
			// Numbers only go up, so a lower one is a folder that is watched already.
			HighestWatch = Watch;
			++WatchCount;
		}
		return Watch;
	}

	void FFolderWatch::Remove(int Watch)
	{
		// The end of the watch comes through the queue, like every other, and is counted there.
		inotify_rm_watch(Queue.Get(), Watch);
	}

	void FFolderWatch::Read(const std::function<void(const FFolderChange&)>& Take)
	{
		alignas(inotify_event) char Buffer[65536];
		for (;;)
		{
			const ssize_t Count = Queue.IsOpen() ? HostRetryInterrupted([&] { return read(Queue.Get(), Buffer, sizeof(Buffer)); }) : 0;
			if (Count <= 0)
			{
				return;
			}
			for (ssize_t At = 0; At < Count;)
			{
				inotify_event Event;
				std::memcpy(&Event, Buffer + At, sizeof(Event));
				const char* const Name = Buffer + At + sizeof(Event);
				At += static_cast<ssize_t>(sizeof(Event) + Event.len);
				FFolderChange Change;
				if (ToFolderEvent(Event.mask, Change.Event))
				{
					Change.Watch = Event.wd;
					Change.Name = std::string_view(Name, strnlen(Name, Event.len));
					Change.bIsFolder = (Event.mask & IN_ISDIR) != 0;
					Change.bWatchEnded = (Event.mask & IN_IGNORED) != 0;
					WatchCount -= Change.bWatchEnded ? 1 : 0;
					Take(Change);
				}
			}
		}
	}
}
