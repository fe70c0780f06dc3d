#pragma once

#include "Containers/UnrealString.h"

/**
 * The folders of engine and project, and pure operations on path texts. The folders end with a slash; the program sets them, and
 * whether they come absolute or relative to the base folder, through FHostPaths. Both '/' and '\' separate the parts of a path text.
 */
class CORE_API FPaths
{
public:
	static FString ProjectDir();
	static FString ProjectContentDir();
	static FString ProjectSavedDir();
	static FString EngineDir();
	static FString EngineSavedDir();

	static bool FileExists(const FString& Path);
	static bool DirectoryExists(const FString& Path);
	/** True unless the path starts with a separator or a drive letter and colon. */
	static bool IsRelative(const FString& Path);
	/** True for "X:", "X:/" and a lone separator. */
	static bool IsDrive(const FString& Path);

	/** Extension of the last part, without its dot unless asked for. Empty when there is none. */
	static FString GetExtension(const FString& Path, bool bIncludeDot = false);
	/** The part behind the last separator. */
	static FString GetCleanFilename(const FString& Path);
	/** The last part without its last extension; with bRemovePath false the folder stays in front. */
	static FString GetBaseFilename(const FString& Path, bool bRemovePath = true);
	/** What stands before the last separator, without it. Empty when there is none. */
	static FString GetPath(const FString& Path);
	static void Split(const FString& Path, FString& OutPath, FString& OutFilename, FString& OutExtension);

	/** Backslashes become slashes. */
	static void NormalizeFilename(FString& Path);
	/** The same, and a final slash goes, except from a root. */
	static void NormalizeDirectoryName(FString& Path);
	/**
	 * Resolves "." and ".." in a normalised path, by text alone.
	 * @return False, with Path left as it was, when ".." climbs above a root. Relative paths keep a leading "..".
	 */
	static bool CollapseRelativeDirectories(FString& Path);
	/** Against the base folder (see FHostPaths). Normalises and collapses too. */
	static FString ConvertRelativePathToFull(const FString& Path);
	static FString ConvertRelativePathToFull(const FString& Base, const FString& Path);
	/**
	 * Writes Path as seen from the folder of RelativeTo; what stands behind the last slash of RelativeTo counts as a
	 * file, so a folder needs its final slash.
	 * @return False, with Path left as it was, when the two share no root.
	 */
	static bool MakePathRelativeTo(FString& Path, const TCHAR* RelativeTo);

	/** Joins with exactly one slash between the parts; empty parts vanish. */
	template <typename... TParts>
	static FString Combine(const TParts&... Parts)
	{
		FString Result;
		(AppendPart(Result, FString(Parts)), ...);
		return Result;
	}

private:
	static void AppendPart(FString& Path, const FString& Part);
};
