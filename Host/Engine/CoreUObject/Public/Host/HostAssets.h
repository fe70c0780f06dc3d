#pragma once

#include "Containers/StringView.h"
#include "Containers/UnrealString.h"

/** Between object paths and the files of the content folder. */
class COREUOBJECT_API FHostAssets
{
public:
	/**
	 * Checks an object path by its text: "/Game/" in front, no empty, "." or ".." part, no backslash. A class name
	 * with quotes around the path (Texture2D'/Game/A.A') is taken off.
	 *
	 * @param OutPackageName  "/Game/Folder/Asset".
	 * @param OutAssetName    What stands behind the dot, else the last part.
	 */
	static bool SplitObjectPath(FStringView ObjectPath, FString& OutPackageName, FString& OutAssetName);
	/** Absolute path of the asset's file. @return Empty when the path is not valid or no such file is there. */
	static FString FindAssetFile(FStringView ObjectPath);
};
