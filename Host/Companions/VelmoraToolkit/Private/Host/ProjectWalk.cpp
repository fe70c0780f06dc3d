#include "Host/ProjectWalk.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <vector>

#include <fcntl.h>

#include "FileCache/FolderReader.h"

namespace Velmora
{
	namespace
	{
		/** Lower case. */
		// clang-format off
		constexpr std::string_view IgnoredFolderNames[] = {
			// Version control.
			".git", ".hg", ".svn", ".bzr", ".jj", "_darcs", "cvs",
			// Build output and saved data.
			"binaries", "build", "cmake-build-debug", "cmake-build-release", "deriveddatacache", "intermediate", "saved",
			// What tools keep for themselves.
			".cache", ".gradle", ".idea", ".mypy_cache", ".pytest_cache", ".tox", ".vs", "__pycache__",
			// Fetched packages.
			".venv", "bower_components", "node_modules",
		};
		// clang-format on

		char ToLowerAscii(char Byte)
		{
			return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte;
		}

		struct FPendingFolder
		{
			std::string AbsolutePath;
			int Depth = 0;
		};

		/** The names in a folder, sorted, links and special files left out. False when it cannot be read. */
		bool ReadFolder(const std::string& Folder, std::vector<std::string>& OutFiles, std::vector<std::string>& OutFolders)
		{
			FFileDescriptor Opened = FFileDescriptor::Open(Folder, O_RDONLY | O_DIRECTORY);
			const std::atomic<bool> bStop = false;
			std::vector<FFolderEntry> Entries;
			if (!Opened.IsOpen())
			{
				return false;
			}
			const EFolderRead Result = ReadFolderEntries(std::move(Opened), SIZE_MAX, bStop, Entries);
			for (FFolderEntry& Entry : Entries)
			{
				(Entry.bIsFolder ? OutFolders : OutFiles).push_back(std::move(Entry.Name));
			}
			return Result == EFolderRead::Complete;
		}
	}

	bool IsIgnoredFolderName(std::string_view Name)
	{
		return std::any_of(std::begin(IgnoredFolderNames), std::end(IgnoredFolderNames),
			[Name](std::string_view Ignored) {
				return std::equal(
					Name.begin(), Name.end(), Ignored.begin(), Ignored.end(), [](char A, char B) { return ToLowerAscii(A) == B; });
			});
	}

	FProjectWalkResult WalkProject(const std::string& Root, const std::function<EProjectWalkStep(const FProjectWalkEntry&)>& Visit)
	{
		FProjectWalkResult Result;
		const std::string Base = Root.empty() || Root.back() != '/' ? Root + '/' : Root;
		int VisitedCount = 0;

		// Folders wait on a stack, the next one on top, so that a deep tree costs no call depth. Each folder is
		// visited when it leaves the stack, the root excepted.
		std::vector<FPendingFolder> Pending;
		Pending.push_back({ Base.substr(0, Base.size() - 1), 0 });
		while (!Pending.empty())
		{
			const FPendingFolder Folder = std::move(Pending.back());
			Pending.pop_back();
			if (VisitedCount >= MaxProjectEntries)
			{
				Result.bTruncated = true;
				return Result;
			}
			if (Folder.Depth > 0)
			{
				++VisitedCount;
				const EProjectWalkStep Step =
					Visit({ Folder.AbsolutePath, std::string_view(Folder.AbsolutePath).substr(Base.size()), true });
				if (Step == EProjectWalkStep::Stop)
				{
					return Result;
				}
				if (Step == EProjectWalkStep::SkipFolder)
				{
					continue;
				}
			}
			if (Folder.Depth >= MaxProjectDepth)
			{
				Result.bTruncated = true;
				continue;
			}

			std::vector<std::string> Files;
			std::vector<std::string> Folders;
			if (!ReadFolder(Folder.Depth == 0 ? Base : Folder.AbsolutePath, Files, Folders))
			{
				++Result.UnreadableFolders;
			}
			for (const std::string& Name : Files)
			{
				if (VisitedCount >= MaxProjectEntries)
				{
					Result.bTruncated = true;
					return Result;
				}
				++VisitedCount;
				const std::string Path = Folder.AbsolutePath + '/' + Name;
				if (Visit({ Path, std::string_view(Path).substr(Base.size()), false }) == EProjectWalkStep::Stop)
				{
					return Result;
				}
			}
			for (auto Name = Folders.rbegin(); Name != Folders.rend(); ++Name)
			{
				if (!IsIgnoredFolderName(*Name))
				{
					Pending.push_back({ Folder.AbsolutePath + '/' + *Name, Folder.Depth + 1 });
				}
			}
		}
		return Result;
	}
}
