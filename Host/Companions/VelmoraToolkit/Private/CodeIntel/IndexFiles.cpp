#include "CodeIntel/IndexFiles.h"

#include <algorithm>

#include <sys/stat.h>

#include "FileCache/ProjectTree.h"
#include "Host/HostFileNames.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Lower case. */
		// clang-format off
		constexpr std::string_view IndexedExtensions[] = {
			"c", "cc", "cpp", "cxx", "h", "hh", "hpp", "hxx", "inl", "ipp", "cs", "py", "ini", "json", "uplugin", "uproject",
		};
		// clang-format on
	}

	bool IsIndexedFile(std::string_view Path)
	{
		const std::string_view Name = Path.substr(Path.rfind('/') + 1);
		const size_t Dot = Name.rfind('.');
		if (Dot == std::string_view::npos)
		{
			return false;
		}
		std::string Extension(Name.substr(Dot + 1));
		std::transform(Extension.begin(), Extension.end(), Extension.begin(),
			[](char Byte) { return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte; });
		return std::find(std::begin(IndexedExtensions), std::end(IndexedExtensions), Extension) != std::end(IndexedExtensions);
	}

	bool ReadFileStamp(const std::string& Root, FIndexFile& InOutFile)
	{
		struct stat Status = {};
		if (lstat((Root + '/' + InOutFile.Path).c_str(), &Status) != 0 || !S_ISREG(Status.st_mode))
		{
			return false;
		}
		const FDiskStamp Stamp = FDiskStamp::Of(Status);
		InOutFile.Modified = Stamp.Modified;
		InOutFile.Size = Stamp.Size;
		return true;
	}

	EFileListing ListIndexFiles(const std::string& Root, const std::atomic<bool>& bStop, std::vector<FIndexFile>& Out)
	{
		FProjectTreeLimits Limits;
		Limits.MaxWatches = 0;
		FProjectTree Tree(Limits, bStop);
		Tree.SetRoot(Root);
		if (!Tree.IsRootInPlace())
		{
			return EFileListing::NoFolder;
		}
		Tree.QueueChanged();
		if (!Tree.Update())
		{
			return EFileListing::Stopped;
		}
		TArray<FProjectFileCacheEntry> Entries;
		Tree.MakeList()->CopyTo(Entries);
		for (const FProjectFileCacheEntry& Entry : Entries)
		{
			if (bStop)
			{
				return EFileListing::Stopped;
			}
			FIndexFile File;
			File.Path = HostFileNameToBytes(Entry.Path);
			if (!Entry.bIsDirectory && IsIndexedFile(File.Path) && ReadFileStamp(Root, File))
			{
				Out.push_back(std::move(File));
			}
		}
		std::sort(Out.begin(), Out.end(), [](const FIndexFile& A, const FIndexFile& B) { return A.Path < B.Path; });
		return EFileListing::Complete;
	}
}
