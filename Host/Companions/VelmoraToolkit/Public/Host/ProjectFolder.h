#pragma once

#include "CoreMinimal.h"

namespace Velmora
{
	/**
	 * The folder that agent and file cache work on: what was set here, else the project folder of the engine paths.
	 * Absolute, with '/' as separator and none at the end. Empty when there is no such folder. Any thread.
	 */
	VELMORATOOLKIT_API FString GetProjectFolder();

	/** The same, also of a folder that is not there at the moment. */
	VELMORATOOLKIT_API FString GetProjectFolderPath();

	/** An empty folder goes back to the engine paths. Takes effect with the next conversation, turn or scan. */
	VELMORATOOLKIT_API void SetProjectFolder(const FString& Folder);
}
