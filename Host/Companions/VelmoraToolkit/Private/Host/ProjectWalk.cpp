#include "Host/ProjectWalk.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "FileCache/FolderReader.h"
#include "FileCache/IgnoreRules.h"
#include "Host/HostFileNames.h"
#include "Host/ProjectFileCacheControl.h"

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

		/** The list of the file cache shows a change within this; it gathers for a fraction of it. */
		constexpr int64_t ShowingNanoseconds = 2'000'000'000;

		std::atomic<int64_t> LastOwnChange = INT64_MIN / 2;

		int64_t GetSteadyNanoseconds()
		{
			return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
		}

		using FScope = std::shared_ptr<const FIgnoreScope>;

		struct FPendingFolder
		{
			/** Below the project. */
			std::string Path;
			int Depth = 0;

			/** The ignore files that hold around it. */
			FScope Scope;
		};

		std::string JoinPath(const std::string& Folder, std::string_view Name)
		{
			return Folder.empty() ? std::string(Name) : Folder + '/' + std::string(Name);
		}

		/** The ignore files that hold in a folder, given those around it. */
		FScope TakeIgnoreFile(const std::string& Base, const std::string& Folder, const FScope& Above)
		{
			std::string Text;
			const FFileDescriptor Opened = FFileDescriptor::Open(Base + Folder, O_RDONLY | O_DIRECTORY);
			const bool bHasText = Opened.IsOpen() && ReadIgnoreFile(Opened.Get(), Text);
			return bHasText ? std::make_shared<const FIgnoreScope>(
								  FIgnoreScope{ Above, FIgnoreFile(std::move(Text)), Folder.empty() ? 0 : Folder.size() + 1 })
							: Above;
		}

		bool IsLeftOut(const FScope& Scope, const std::string& Path, std::string_view Name, bool bIsFolder)
		{
			// A worktree or submodule has a file where a repository has a folder.
			return Name == ".git" || (bIsFolder && IsIgnoredFolderName(Name)) || (Scope && IsIgnored(Scope.get(), Path, bIsFolder));
		}

		/** Goes from the project folder down to a path: the ignore files around it, and whether it or a folder on the way is left out. */
		FScope Descend(const std::string& Base, std::string_view Path, bool bIsFolder, bool& bOutIsLeftOut)
		{
			bOutIsLeftOut = false;
			FScope Scope;
			std::string Folder;
			for (size_t Start = 0; Start < Path.size();)
			{
				Scope = TakeIgnoreFile(Base, Folder, Scope);
				const size_t End = std::min(Path.find('/', Start), Path.size());
				const std::string_view Name = Path.substr(Start, End - Start);
				Folder = JoinPath(Folder, Name);
				if (IsLeftOut(Scope, Folder, Name, bIsFolder || End < Path.size()))
				{
					bOutIsLeftOut = true;
					Scope.reset();
				}
				Start = End + 1;
			}
			return Scope;
		}

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

	namespace
	{
		using FVisitor = std::function<EProjectWalkStep(const FProjectWalkEntry&)>;

		/** Reads the disk, folder by folder. */
		class FDiskWalk
		{
		public:
			/** Base is the project folder with a '/' at the end. */
			FDiskWalk(const std::string& InBase, const std::string& InBelow, const FVisitor& InVisit)
				: Base(InBase)
				, Shared(InBase.size() + (InBelow.empty() ? 0 : InBelow.size() + 1))
				, Visit(InVisit)
			{
				bool bIsLeftOut = false;
				Pending.push_back({ InBelow, 0, Descend(Base, InBelow, true, bIsLeftOut) });
			}

			FProjectWalkResult Run()
			{
				// Folders wait on a stack, the next one on top, so that a deep tree costs no call depth. Each folder is
				// visited when it leaves the stack, the first one excepted.
				while (!Pending.empty() && !bIsOver)
				{
					const FPendingFolder Folder = std::move(Pending.back());
					Pending.pop_back();
					if (Folder.Depth > 0 && VisitNext(Folder.Path, true) != EProjectWalkStep::Continue)
					{
						continue;
					}
					if (Folder.Depth >= MaxProjectDepth)
					{
						Result.bTruncated = true;
						continue;
					}
					ReadOne(Folder);
				}
				return Result;
			}

		private:
			EProjectWalkStep VisitNext(const std::string& Path, bool bIsFolder)
			{
				if (VisitedCount >= MaxProjectEntries)
				{
					Result.bTruncated = true;
					bIsOver = true;
					return EProjectWalkStep::Stop;
				}
				++VisitedCount;
				const std::string Absolute = Base + Path;
				const EProjectWalkStep Step = Visit({ Absolute, std::string_view(Absolute).substr(Shared), bIsFolder });
				bIsOver = Step == EProjectWalkStep::Stop;
				return Step;
			}

			/** Visits the files of a folder, then has its folders wait. */
			void ReadOne(const FPendingFolder& Folder)
			{
				std::vector<std::string> Files;
				std::vector<std::string> Folders;
				if (!ReadFolder(Base + Folder.Path, Files, Folders))
				{
					++Result.UnreadableFolders;
				}
				const bool bHasIgnoreFile = std::find(Files.begin(), Files.end(), IgnoreFileName) != Files.end();
				const FScope Scope = bHasIgnoreFile ? TakeIgnoreFile(Base, Folder.Path, Folder.Scope) : Folder.Scope;
				for (auto Name = Files.begin(); Name != Files.end() && !bIsOver; ++Name)
				{
					const std::string Path = JoinPath(Folder.Path, *Name);
					if (!IsLeftOut(Scope, Path, *Name, false))
					{
						VisitNext(Path, false);
					}
				}
				for (auto Name = Folders.rbegin(); Name != Folders.rend(); ++Name)
				{
					std::string Path = JoinPath(Folder.Path, *Name);
					if (!IsLeftOut(Scope, Path, *Name, true))
					{
						Pending.push_back({ std::move(Path), Folder.Depth + 1, Scope });
					}
				}
			}

			const std::string& Base;

			/** Bytes of an absolute path before what is below the folder that the walk began in. */
			const size_t Shared;
			const FVisitor& Visit;
			std::vector<FPendingFolder> Pending;
			FProjectWalkResult Result;
			int VisitedCount = 0;
			bool bIsOver = false;
		};

		/** Goes through the list of the file cache. False when it cannot be used, and nothing has been visited. */
		bool WalkList(const std::string& Root, const std::string& Base, const std::string& Below, const FVisitor& Visit,
			FProjectWalkResult& OutResult)
		{
			TArray<FProjectFileCacheEntry> Entries;
			if (GetSteadyNanoseconds() - LastOwnChange < ShowingNanoseconds ||
				!FProjectFileCacheControl::GetSnapshot(HostFileNameFromBytes(Root), Entries))
			{
				return false;
			}
			const std::string Prefix = Below.empty() ? std::string() : Below + '/';
			std::string Skipped;
			int VisitedCount = 0;
			for (const FProjectFileCacheEntry& Entry : Entries)
			{
				const std::string Path = HostFileNameToBytes(Entry.Path);
				const bool bIsElsewhere =
					Path.compare(0, Prefix.size(), Prefix) != 0 || (!Skipped.empty() && Path.compare(0, Skipped.size(), Skipped) == 0);
				if (bIsElsewhere)
				{
					continue;
				}
				if (VisitedCount >= MaxProjectEntries)
				{
					OutResult.bTruncated = true;
					break;
				}
				++VisitedCount;
				const std::string Absolute = Base + Path;
				const EProjectWalkStep Step =
					Visit({ Absolute, std::string_view(Absolute).substr(Base.size() + Prefix.size()), Entry.bIsDirectory });
				if (Step == EProjectWalkStep::Stop)
				{
					break;
				}
				Skipped = Step == EProjectWalkStep::SkipFolder ? Path + '/' : Skipped;
			}
			// A folder without an entry may be left out itself, or not be readable: the disk tells.
			return VisitedCount > 0;
		}
	}

	FProjectWalkResult WalkProject(
		const std::string& Root, const std::string& Below, const std::function<EProjectWalkStep(const FProjectWalkEntry&)>& Visit)
	{
		const std::string Base = Root.empty() || Root.back() != '/' ? Root + '/' : Root;
		FProjectWalkResult Result;
		return WalkList(Root, Base, Below, Visit, Result) ? Result : FDiskWalk(Base, Below, Visit).Run();
	}

	bool IsLeftOutOfProject(const std::string& Root, std::string_view Path, bool bIsFolder)
	{
		bool bIsLeftOut = false;
		Descend(Root.empty() || Root.back() != '/' ? Root + '/' : Root, Path, bIsFolder, bIsLeftOut);
		return bIsLeftOut;
	}

	void NoteProjectChange()
	{
		LastOwnChange = GetSteadyNanoseconds();
	}
}
