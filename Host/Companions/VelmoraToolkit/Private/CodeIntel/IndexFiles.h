#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Velmora::CodeIntel
{
	/** Larger files are generated data; they are counted as failed. In bytes. */
	constexpr int64_t MaxIndexedBytes = 8 * 1024 * 1024;

	/** A file that belongs in an index, as it is on the disk. */
	struct FIndexFile
	{
		/** Below the root, bytes as on disk. */
		std::string Path;

		/** In nanoseconds. */
		int64_t Modified = 0;
		int64_t Size = 0;
	};

	/** C, C++, C#, Python, ini and JSON, told by the name's end. */
	bool IsIndexedFile(std::string_view Path);

	/** False when there is no such regular file. Links do not count. */
	bool ReadFileStamp(const std::string& Root, FIndexFile& InOutFile);

	enum class EFileListing
	{
		Complete,
		Stopped,
		NoFolder
	};

	/** All files below the root that belong in an index, by the rules of the project file cache, in the order of their paths. */
	EFileListing ListIndexFiles(const std::string& Root, const std::atomic<bool>& bStop, std::vector<FIndexFile>& Out);
}
