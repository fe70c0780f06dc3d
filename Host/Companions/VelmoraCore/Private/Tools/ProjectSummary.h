#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/ProjectFiles.h"

namespace Velmora
{
	/** Files of one kind. */
	struct FKindCount
	{
		std::string Kind; // Extension with its dot in lower case, or the whole name of a file without one.
		size_t Files = 0;
		size_t Lines = 0;
	};

	/** What is in a folder, all levels. */
	struct FFolderCount
	{
		/** The most files first. */
		std::vector<FKindCount> Kinds;
		size_t Files = 0;
		size_t Folders = 0;

		/** Of text files. */
		size_t Lines = 0;
		size_t TextFiles = 0;

		/** Binary, too large or unreadable: counted as files, without lines. */
		size_t OtherFiles = 0;

		/** Folders whose contents could not be read, the counted one included. */
		size_t UnreadableFolders = 0;
		bool bTruncated = false;

		/** "3 files in 2 folders, 120 lines of text". */
		std::string Describe() const;
	};

	FFolderCount CountFolder(const FProjectFiles& Files, const FProjectPath& Folder, const std::function<bool()>& IsCancelled);

	/** One entry of a folder. */
	struct FListedEntry
	{
		FProjectPath Path;
		std::string Name;

		/** Of a folder: files directly and further down. */
		size_t FilesInside = 0;
	};

	/** What stands directly in a folder, folders first. Ignored folders, links and special files are left out. False when it cannot be
	 * read. */
	bool ListFolder(const FProjectFiles& Files, const FProjectPath& Folder, const std::function<bool()>& IsCancelled,
		std::vector<FListedEntry>& OutEntries);

	/** Relative paths of all files that match a pattern of '*' and '?', letter case aside. One without '/' is compared with names. */
	std::vector<FProjectPath> ListMatching(const FProjectFiles& Files, std::string_view Pattern, const std::function<bool()>& IsCancelled);

	/** First heading of a README and the first sentence below it; empty when there is none. */
	struct FReadmeText
	{
		FProjectPath File;
		std::string Title;
		std::string FirstLine;
	};
	FReadmeText ReadReadme(const FProjectFiles& Files);

	/** Lines of a file that define or declare something at its outer level, bounded. */
	struct FOutlineLine
	{
		int Line = 0;
		std::string Text;
	};
	std::vector<FOutlineLine> OutlineOf(std::string_view Text, size_t MaxLines);
}
