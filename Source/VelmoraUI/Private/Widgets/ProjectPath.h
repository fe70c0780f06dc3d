#pragma once

#include "CoreMinimal.h"
#include "Misc/Paths.h"

/** The folder of the project is relative in the editor ("../../../Project/"): what is joined to it has to begin with an absolute one. */
inline FString GetFullProjectDir()
{
	return FPaths::ConvertRelativePathToFull(FPaths::ProjectDir());
}

/** A path from the project folder, or one that is absolute already, as an absolute one. */
inline FString ToFullProjectPath(const FString& Path)
{
	return FPaths::ConvertRelativePathToFull(GetFullProjectDir(), Path);
}
