#pragma once

#include "CoreMinimal.h"
#include "FileCache/ProjectFileCache.h"

#include <memory>

namespace Velmora
{
	/**
	 * Stands between the list of project files and those who ask for it: to write down what they see, or to answer in its place. Any
	 * thread; the front end asks on the game thread.
	 */
	class VELMORATOOLKIT_API IProjectFileSeam
	{
	public:
		virtual ~IProjectFileSeam() = default;
		virtual void GetStatus(bool& bReady, bool& bIndexing, int32& Count) = 0;

		/** Given the list as it is, in the form of FProjectFileCache::GetCachedFiles. */
		virtual void GetFiles(TArray<FProjectFileCacheEntry>& Files) = 0;

		/** False where no scan shall run. */
		virtual bool MayScan() const = 0;
	};

	/** The side of the project file cache that programs drive. */
	class VELMORATOOLKIT_API FProjectFileCacheControl
	{
	public:
		/**
		 * Ends scan and watching and joins their thread; the list stays readable. A thread that a dead file system holds is left
		 * behind after a second. A later request starts anew. Any thread but that of a listener.
		 */
		static void Shutdown();

		/** Null for none. Before others ask, and after. Game thread. */
		static void SetSeam(std::shared_ptr<IProjectFileSeam> Seam);

		/**
		 * Copies the list if it is that of a project and nothing is known to be missing from it; false otherwise. Any thread.
		 *
		 * @param Root  The project folder, as GetProjectFolder gives it.
		 */
		static bool GetSnapshot(const FString& Root, TArray<FProjectFileCacheEntry>& Out);
	};
}
