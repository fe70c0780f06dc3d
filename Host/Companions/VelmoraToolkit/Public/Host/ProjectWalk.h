#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace Velmora
{
	/** One file or folder met by a walk. The views are good during the visit only. */
	struct FProjectWalkEntry
	{
		/** As on disk: bytes that need not be UTF-8. */
		std::string_view AbsolutePath;

		/** Below the root, without a leading '/'. */
		std::string_view RelativePath;
		bool bIsDirectory = false;
	};

	enum class EProjectWalkStep
	{
		Continue,
		SkipFolder, // Do not go into the folder just visited.
		Stop
	};

	struct FProjectWalkResult
	{
		/** Folders that could not be read. */
		int UnreadableFolders = 0;

		/** The walk met its bound of entries or depth, so something was left out. */
		bool bTruncated = false;
	};

	/** Folders and links deeper than this are left out. */
	constexpr int MaxProjectDepth = 64;

	/** Entries after which a walk ends. */
	constexpr int MaxProjectEntries = 200000;

	/**
	 * Visits all files and folders of the project below one folder in the order of their names, each folder before what is in it
	 * and files before folders. They are those of the file cache; while that has no list of this project, or one that may lack
	 * what was changed a moment ago, the disk is read under the same rules: built-in names (IsIgnoredFolderName) and the
	 * project's ignore files leave out what is no source. Below a folder that is itself left out those above it do not count:
	 * who names it means it. Symbolic links are not followed: what they point to is either visited in its own place or lies
	 * outside. Any thread.
	 *
	 * @param Root   The project folder.
	 * @param Below  A folder below it, empty for the project itself. Relative paths of the visit are below this folder.
	 */
	VELMORATOOLKIT_API FProjectWalkResult WalkProject(
		const std::string& Root, const std::string& Below, const std::function<EProjectWalkStep(const FProjectWalkEntry&)>& Visit);

	/** Whether such a walk of the whole project would leave a path out. Reads the ignore files on its way. Any thread. */
	VELMORATOOLKIT_API bool IsLeftOutOfProject(const std::string& Root, std::string_view Path, bool bIsFolder);

	/** The agent has just changed files: for a moment walks read the disk instead of a list that may not show it yet. Any thread. */
	VELMORATOOLKIT_API void NoteProjectChange();

	/** Version control, build output, saved data and package folders, in any letter case. */
	VELMORATOOLKIT_API bool IsIgnoredFolderName(std::string_view Name);
}
