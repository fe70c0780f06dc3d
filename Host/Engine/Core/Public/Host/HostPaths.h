#pragma once

#include "Containers/UnrealString.h"

/**
 * Sets the folders that FPaths answers with. Relative paths are taken from the working directory of the process; all
 * are stored absolute, with slashes and a final one, and handed out so, unless asked for as in the editor. Until set, the project folder is
 * the working directory and the engine's is the executable's folder. Any thread, but meant for start-up.
 */
class CORE_API FHostPaths
{
public:
	/** Sets content, config and saved folder below it too. */
	static void SetProjectDir(const FString& Path);
	static void SetProjectSavedDir(const FString& Path);
	/** Sets the engine's saved folder below it too. */
	static void SetEngineDir(const FString& Path);
	static void SetEngineSavedDir(const FString& Path);
	/** What FPaths::ConvertRelativePathToFull resolves against. Until set: the executable's folder. */
	static void SetBaseDir(const FString& Path);
	static FString GetBaseDir();
	/**
	 * Hands the folders out as the editor does, relative to the base folder ("../../../Project/"). File functions then take relative
	 * paths from the base folder, too, which is the working directory there. False until set.
	 */
	static void UseRelativeFolders(bool bRelative);
	static bool AreFoldersRelative();
};
