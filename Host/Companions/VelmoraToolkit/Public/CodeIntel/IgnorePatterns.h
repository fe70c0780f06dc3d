#pragma once

#include "CoreMinimal.h"

namespace Velmora::CodeIntel
{
	/**
	 * Tells whether a path is kept out of scans and searches. Pure, any thread.
	 *
	 * @param Path      Absolute or relative to the project, with '/' or '\' as separator.
	 * @param Patterns  Added to the built-in rules, which always leave out the folders of version control, build
	 *                  output and saved data. A pattern with '*' or '?' is a wildcard, one without matches as it
	 *                  stands; one with a '/' is compared with the whole path, one without with each name in it.
	 *                  Letter case counts for nothing. An empty pattern matches nothing.
	 */
	VELMORATOOLKIT_API bool ShouldIgnorePath(const FString& Path, const TArray<FString>& Patterns);
}
