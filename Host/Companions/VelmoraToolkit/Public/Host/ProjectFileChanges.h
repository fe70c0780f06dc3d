#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

namespace Velmora
{
	/** What has happened to the files of the list since the last report. Paths are those of FProjectFileCacheEntry. */
	struct FProjectFileChanges
	{
		/** Made, written, or moved there. In the list now. */
		TArray<FString> Written;

		/** In the list no longer. */
		TArray<FString> Removed;

		/** More may have changed than is named: after the first scan of a project, a flood of changes, or where watching has gaps. */
		bool bMayBeMore = false;
	};

	/** Tells who wants to know about changes of project files. Any thread. */
	class VELMORATOOLKIT_API FProjectFileListeners
	{
	public:
		using FListener = TFunction<void(const FProjectFileChanges&)>;

		/** The listener is called on the cache's own thread, once the list shows the changes. It must be quick and may call anything here.
		 */
		static int32 Add(FListener Listener);

		/** Afterwards the listener is not called any more; a call that runs on another thread is waited for. Unknown numbers are passed
		 * over. */
		static void Remove(int32 Handle);

		static void Broadcast(const FProjectFileChanges& Changes);
	};
}
