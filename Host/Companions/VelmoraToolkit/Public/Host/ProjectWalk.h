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
	 * Visits all regular files and folders below Root in the order of their names, each folder before what is in
	 * it and files before folders. Ignored folders (IsIgnoredFolderName) are not visited. Symbolic links are not
	 * followed: what they point to is either visited in its own place or lies outside. Any thread.
	 */
	VELMORATOOLKIT_API FProjectWalkResult WalkProject(
		const std::string& Root, const std::function<EProjectWalkStep(const FProjectWalkEntry&)>& Visit);

	/** Version control, build output, saved data and package folders, in any letter case. */
	VELMORATOOLKIT_API bool IsIgnoredFolderName(std::string_view Name);
}
