#pragma once

#include "CoreMinimal.h"

namespace Velmora::CodeIntel
{
	/**
	 * Tells whether a path is kept out of scans and searches: by the built-in rules, which leave out the folders of version
	 * control, build output, saved data and fetched packages in any letter case, by the ".gitignore" files of the project on the
	 * way to it, or by the patterns given. What lies in an ignored folder is ignored, whatever else is said about it. Any thread.
	 *
	 * The ignore files are read from the disk in every call; a scan of a whole project keeps them instead.
	 *
	 * @param Path      Absolute or relative to the project, with '/' or '\' as separator. A '/' at the end says that it is a
	 *                  folder, which otherwise only the disk can tell.
	 * @param Patterns  Lines as of an ignore file in the project folder, the last one that matches deciding.
	 */
	VELMORATOOLKIT_API bool ShouldIgnorePath(const FString& Path, const TArray<FString>& Patterns);
}
