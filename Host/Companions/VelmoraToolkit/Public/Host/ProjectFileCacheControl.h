#pragma once

#include "CoreMinimal.h"
#include "FileCache/ProjectFileCache.h"

namespace Velmora
{
	/** The side of the project file cache that programs drive. */
	class VELMORATOOLKIT_API FProjectFileCacheControl
	{
	public:
		/**
		 * Ends scan and watching and joins their thread; the list stays readable. A thread that a dead file system holds is left
		 * behind after a second. A later request starts anew. Any thread but that of a listener.
		 */
		static void Shutdown();

		/**
		 * Copies the list if it is that of a project and nothing is known to be missing from it; false otherwise. Any thread.
		 *
		 * @param Root  The project folder, as GetProjectFolder gives it.
		 */
		static bool GetSnapshot(const FString& Root, TArray<FProjectFileCacheEntry>& Out);
	};
}
