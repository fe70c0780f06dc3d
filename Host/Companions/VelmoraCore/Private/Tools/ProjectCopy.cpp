#include "Tools/ProjectCopy.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "Changes/ChangeJournal.h"
#include "Changes/SteeringFiles.h"
#include "Host/FileDescriptor.h"
#include "Host/HostSystemErrors.h"

namespace Velmora
{
	namespace
	{
		namespace Files = std::filesystem;

		/** What this program keeps below a project. */
		constexpr std::string_view OwnFolder = "Saved";

		constexpr size_t MaxNotes = 20;

		int64_t InNanoseconds(const timespec& Time)
		{
			return int64_t(Time.tv_sec) * 1000000000 + Time.tv_nsec;
		}

		enum class EVisit
		{
			Continue,
			SkipFolder,
			Stop
		};

		/** Everything below a folder, folders before what is in them; links are met and not followed. False when it was not all. */
		bool Visit(const std::string& Root, const std::function<EVisit(const std::string& Path, const struct stat& Info)>& Meet)
		{
			std::error_code Error;
			Files::recursive_directory_iterator Entry(Root, Files::directory_options::skip_permission_denied, Error);
			for (const Files::recursive_directory_iterator End; !Error && Entry != End; Entry.increment(Error))
			{
				const std::string& Absolute = Entry->path().native();
				struct stat Info = {};
				if (lstat(Absolute.c_str(), &Info) != 0)
				{
					continue;
				}
				const EVisit Next = Meet(Absolute.substr(Root.size() + 1), Info);
				if (Next == EVisit::Stop)
				{
					return false;
				}
				if (Next == EVisit::SkipFolder && S_ISDIR(Info.st_mode))
				{
					Entry.disable_recursion_pending();
				}
			}
			return !Error;
		}

		bool IsBelow(const std::string& Path, const std::string& Folder)
		{
			return Path == Folder ||
				(Path.size() > Folder.size() && Path[Folder.size()] == '/' && Path.compare(0, Folder.size(), Folder) == 0);
		}

		bool Steers(const std::string& Path, bool bIsFolder)
		{
			return !DescribeSteering(bIsFolder ? Path + "/x" : Path).empty();
		}

		std::string ReadLink(const std::string& Path)
		{
			std::error_code Error;
			return Files::read_symlink(Path, Error).native();
		}

		/** False with errno. */
		bool CopyBytes(const FFileDescriptor& From, const FFileDescriptor& To, uint64_t Bytes)
		{
			// 1. The system shares the blocks where the file system can.
			while (Bytes > 0)
			{
				const ssize_t Count =
					HostRetryInterrupted([&] { return copy_file_range(From.Get(), nullptr, To.Get(), nullptr, Bytes, 0); });
				if (Count <= 0)
				{
					break;
				}
				Bytes -= std::min(Bytes, static_cast<uint64_t>(Count));
			}

			// 2. Between two file systems, and where it does not know how, by hand: from where it has come to.
			for (std::string Chunk; Bytes > 0; Chunk.clear())
			{
				if (!From.Read(Chunk, std::min<uint64_t>(Bytes, 1 << 20)) || !To.Write(Chunk))
				{
					return false;
				}
				if (Chunk.empty())
				{
					return true; // It has grown shorter meanwhile.
				}
				Bytes -= Chunk.size();
			}
			return true;
		}

		bool ReadWhole(const std::string& Path, std::string& OutBytes)
		{
			const FFileDescriptor File = FFileDescriptor::Open(Path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
			return File.IsOpen() && File.Read(OutBytes, FChangeJournal::MaxFileBytes + 1);
		}
	}

	FProjectPlan FProjectPlan::Make(const std::string& Root)
	{
		FProjectPlan Plan;
		const bool bIsWhole = Visit(Root,
			[&Plan](const std::string& Path, const struct stat& Info)
			{
				const bool bIsFolder = S_ISDIR(Info.st_mode);
				if (Path == OwnFolder && bIsFolder)
				{
					Plan.OwnFolders.push_back(Path);
					return EVisit::SkipFolder;
				}
				if (Steers(Path, bIsFolder))
				{
					Plan.Steering.push_back(Path);
					return EVisit::SkipFolder;
				}
				if (!bIsFolder && IsSecretName(Path))
				{
					Plan.Secrets.push_back(Path);
					return EVisit::Continue;
				}
				++Plan.Entries;
				Plan.Bytes += S_ISREG(Info.st_mode) ? static_cast<uint64_t>(Info.st_size) : 0;
				return EVisit::Continue;
			});
		Plan.bIsTooLarge = !bIsWhole || Plan.Entries > FProjectCopy::MaxEntries || Plan.Bytes > FProjectCopy::MaxBytes;
		return Plan;
	}

	FProjectCopy::FProjectCopy(const std::string& InRoot, const FProjectPlan& InPlan)
		: Root(InRoot)
		, Plan(InPlan)
	{
	}

	FProjectCopy::~FProjectCopy()
	{
		if (!Folder.empty())
		{
			// A command may have taken the right to write from its own folders, without which they cannot be emptied.
			std::error_code Error;
			Visit(Folder,
				[this](const std::string& Path, const struct stat& Info)
				{
					if (S_ISDIR(Info.st_mode))
					{
						chmod((Folder + '/' + Path).c_str(), 0700);
					}
					return EVisit::Continue;
				});
			Files::remove_all(Folder, Error);
		}
	}

	std::string FProjectCopy::Make(const std::function<bool()>& IsCancelled)
	{
		std::error_code Error;
		std::string Pattern = Files::temp_directory_path(Error).native() + "/velmora-command-XXXXXX";
		if (Error || !mkdtemp(Pattern.data()))
		{
			return "no folder for a copy of the project could be made: " + HostDescribeSystemError(errno);
		}
		Folder = Pattern;
		std::string Problem;
		Visit(Root,
			[&](const std::string& Path, const struct stat& Info)
			{
				if (IsCancelled())
				{
					Problem = "the request was stopped";
				}
				else if (IsLeftOut(Path))
				{
					return EVisit::SkipFolder;
				}
				else if (S_ISDIR(Info.st_mode))
				{
					struct stat Made = {};
					const std::string Copy = Folder + '/' + Path;
					Problem = mkdir(Copy.c_str(), (Info.st_mode & 0777) | 0700) == 0 && lstat(Copy.c_str(), &Made) == 0
						? std::string()
						: HostDescribeSystemError(errno);
					CopiedFolders[Path] = Made.st_mode & 0777;
				}
				else if (S_ISLNK(Info.st_mode))
				{
					Problem = CopyLink(Path);
				}
				else if (S_ISREG(Info.st_mode))
				{
					Problem = CopyFile(Path);
				}
				return Problem.empty() ? EVisit::Continue : EVisit::Stop;
			});
		return Problem;
	}

	bool FProjectCopy::IsLeftOut(const std::string& Path) const
	{
		for (const std::vector<std::string>* List : { &Plan.Steering, &Plan.Secrets, &Plan.OwnFolders })
		{
			if (std::any_of(List->begin(), List->end(), [&Path](const std::string& Other) { return IsBelow(Path, Other); }))
			{
				return true;
			}
		}
		return false;
	}

	std::string FProjectCopy::CopyLink(const std::string& Path)
	{
		FCopied Entry;
		Entry.bIsLink = true;
		Entry.LinkTarget = ReadLink(Root + '/' + Path);
		if (symlink(Entry.LinkTarget.c_str(), (Folder + '/' + Path).c_str()) != 0)
		{
			return HostDescribeSystemError(errno);
		}
		Copied[Path] = Entry;
		return std::string();
	}

	std::string FProjectCopy::CopyFile(const std::string& Path)
	{
		const FFileDescriptor From = FFileDescriptor::Open(Root + '/' + Path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
		struct stat Info = {};
		if (!From.IsOpen() || fstat(From.Get(), &Info) != 0)
		{
			return std::string(); // It cannot be read, or is gone: for the command it is not there.
		}
		const FFileDescriptor To = FFileDescriptor::Open(Folder + '/' + Path, O_WRONLY | O_CREAT | O_EXCL, Info.st_mode & 0777);
		if (!To.IsOpen() || !CopyBytes(From, To, static_cast<uint64_t>(Info.st_size)))
		{
			return HostDescribeSystemError(errno);
		}
		// What builds by times must find them as they are; the mode may say less than it did, by the user's mask.
		const timespec Times[2] = { Info.st_atim, Info.st_mtim };
		struct stat Made = {};
		if (fchmod(To.Get(), Info.st_mode & 0777) != 0 || futimens(To.Get(), Times) != 0 || fstat(To.Get(), &Made) != 0)
		{
			return HostDescribeSystemError(errno);
		}
		FCopied Entry;
		Entry.Mode = Info.st_mode & 0777;
		Entry.OriginalSize = static_cast<uint64_t>(Info.st_size);
		Entry.OriginalTime = InNanoseconds(Info.st_ctim);
		Entry.Inode = Made.st_ino;
		Entry.Size = static_cast<uint64_t>(Made.st_size);
		Entry.ChangeTime = InNanoseconds(Made.st_ctim);
		Copied[Path] = Entry;
		return std::string();
	}

	bool FProjectCopy::HasOriginalChanged(const std::string& Path) const
	{
		struct stat Info = {};
		const bool bIsThere = lstat((Root + '/' + Path).c_str(), &Info) == 0;
		const auto Known = Copied.find(Path);
		if (Known == Copied.end() || !bIsThere)
		{
			return bIsThere || Known != Copied.end();
		}
		return Known->second.bIsLink ? !S_ISLNK(Info.st_mode) || ReadLink(Root + '/' + Path) != Known->second.LinkTarget
									 : static_cast<uint64_t>(Info.st_size) != Known->second.OriginalSize ||
				InNanoseconds(Info.st_ctim) != Known->second.OriginalTime;
	}

	bool FProjectCopy::CompareFile(const std::string& Path, const struct stat& Info, FDifference& OutDifference, std::string& OutNote) const
	{
		const auto Known = Copied.find(Path);
		const bool bWasFile = Known != Copied.end() && !Known->second.bIsLink;
		if (bWasFile && Known->second.Inode == Info.st_ino && Known->second.Size == static_cast<uint64_t>(Info.st_size) &&
			Known->second.ChangeTime == InNanoseconds(Info.st_ctim))
		{
			return false;
		}
		OutDifference.Content.Mode = Info.st_mode & 0777;
		OutDifference.Content.bSetsMode = bWasFile && Known->second.Mode != OutDifference.Content.Mode;
		// As the project's own user a file that nobody may read can still be taken over.
		chmod((Folder + '/' + Path).c_str(), 0600);
		if (static_cast<uint64_t>(Info.st_size) > FChangeJournal::MaxFileBytes ||
			!ReadWhole(Folder + '/' + Path, OutDifference.Content.Bytes))
		{
			OutNote = "it is too large";
			return false;
		}
		// Written again, and as it was?
		std::string Original;
		return OutDifference.Content.bSetsMode || Known == Copied.end() || !ReadWhole(Root + '/' + Path, Original) ||
			Original != OutDifference.Content.Bytes;
	}

	std::string FProjectCopy::RefuseLink(const std::string& Path, const std::string& Target)
	{
		// Upwards first, then down: what goes up again in between may lead anywhere by the links that it passes.
		Files::path Place = Files::path(Path).parent_path();
		bool bGoesDown = false;
		for (const Files::path& Part : Files::path(Target))
		{
			const bool bIsUp = Part == "..";
			if (Part.is_absolute() || (bIsUp && (bGoesDown || Place.empty())))
			{
				return "it is a link that leads out of the project";
			}
			bGoesDown = bGoesDown || (!bIsUp && Part != ".");
			Place = bIsUp ? Place.parent_path() : Part == "." || Part.empty() ? Place : Place / Part;
		}
		const std::string& To = Place.native();
		const bool bIsOwn = To.empty() || IsBelow(To, std::string(OwnFolder));
		return bIsOwn || Steers(To, false) || Steers(To, true) || IsSecretName(To) ? "it is a link to what commands may not write"
																				   : std::string();
	}

	bool FProjectCopy::CompareLink(const std::string& Path, FDifference& OutDifference, std::string& OutNote) const
	{
		const auto Known = Copied.find(Path);
		OutDifference.Content.LinkTarget = ReadLink(Folder + '/' + Path);
		if (Known != Copied.end() && Known->second.bIsLink && Known->second.LinkTarget == OutDifference.Content.LinkTarget)
		{
			return false;
		}
		OutNote = RefuseLink(Path, OutDifference.Content.LinkTarget);
		return OutNote.empty();
	}

	bool FProjectCopy::CompareFolder(
		const std::string& Path, const struct stat& Info, FDifference& OutDifference, std::string& OutNote) const
	{
		// What is in it must be seen, whatever right the command has taken from it.
		const std::string Copy = Folder + '/' + Path;
		chmod(Copy.c_str(), 0700);
		const auto Known = CopiedFolders.find(Path);
		if (Known != CopiedFolders.end() && Known->second != (Info.st_mode & 0777))
		{
			OutNote = "undo does not know the mode of folders";
		}
		std::error_code Error;
		OutDifference.Content.bIsFolder = Known == CopiedFolders.end() && Files::is_empty(Copy, Error) && !Error;
		return OutDifference.Content.bIsFolder;
	}

	bool FProjectCopy::FindDifferences(std::vector<FDifference>& OutDifferences, std::vector<std::string>& OutNotes) const
	{
		std::set<std::string> Seen;
		std::set<std::string> SeenFolders;
		uint64_t Bytes = 0;
		const bool bIsWhole = Visit(Folder,
			[&](const std::string& Path, const struct stat& Info)
			{
				const bool bIsFolder = S_ISDIR(Info.st_mode);
				(bIsFolder ? SeenFolders : Seen).insert(Path);
				if (IsLeftOut(Path))
				{
					return EVisit::SkipFolder; // What stands there is the place that the sandbox put the original into.
				}
				if (Steers(Path, bIsFolder) || (Path == OwnFolder && bIsFolder))
				{
					OutNotes.push_back(Path + " was not taken over: " + DescribeSteering(bIsFolder ? Path + "/x" : Path) + '.');
					return EVisit::SkipFolder;
				}
				FDifference Difference;
				Difference.Path = Path;
				std::string Note;
				const bool bDiffers = bIsFolder ? CompareFolder(Path, Info, Difference, Note)
					: S_ISLNK(Info.st_mode)		? CompareLink(Path, Difference, Note)
												: S_ISREG(Info.st_mode) && CompareFile(Path, Info, Difference, Note);
				if (!Note.empty())
				{
					OutNotes.push_back((bIsFolder ? "The mode of " : "") + Path + " was not taken over: " + Note + '.');
				}
				if (!bDiffers)
				{
					return EVisit::Continue;
				}
				Bytes += Difference.Content.Bytes.size();
				OutDifferences.push_back(std::move(Difference));
				return Bytes > MaxAppliedBytes || OutDifferences.size() > MaxAppliedFiles ? EVisit::Stop : EVisit::Continue;
			});
		for (const auto& [Path, Entry] : Copied)
		{
			if (bIsWhole && Seen.count(Path) == 0)
			{
				// Deletions first, so that a folder can take the place of a file.
				FDifference Deletion;
				Deletion.Path = Path;
				Deletion.Content.bIsDeletion = true;
				OutDifferences.insert(OutDifferences.begin(), std::move(Deletion));
			}
		}
		for (const auto& [Path, Mode] : CopiedFolders)
		{
			const std::string Above = Path.substr(0, std::min(Path.rfind('/'), Path.size()));
			if (SeenFolders.count(Path) == 0 && (Above == Path || SeenFolders.count(Above) != 0))
			{
				OutNotes.push_back("The folder " + Path + " stays, without its files: undo could not bring it back as it was.");
			}
		}
		return bIsWhole && OutDifferences.size() <= MaxAppliedFiles;
	}

	FCopyChanges FProjectCopy::Apply(FChangeJournal& Journal, const std::string& TransactionId) const
	{
		FCopyChanges Changes;
		std::vector<FDifference> Differences;
		if (!FindDifferences(Differences, Changes.Notes))
		{
			Changes.Notes = { "Nothing of what the command wrote was taken over: it is more than can be undone." };
			return Changes;
		}
		const FProjectAccess Access(Root);
		for (FDifference& Difference : Differences)
		{
			const std::string Problem = !Access.IsOpen()
				? Access.DescribeRefusal()
				: Journal.Change(TransactionId, Access, Root, Difference.Path,
					  [&](const FEntryInfo&, const std::string&, FNewContent& OutContent) -> std::string
					  {
						  if (HasOriginalChanged(Difference.Path))
						  {
							  return "somebody else has changed it while the command ran";
						  }
						  OutContent = std::move(Difference.Content);
						  return std::string();
					  });
			if (Problem.empty())
			{
				Changes.Applied.push_back(Difference.Path);
			}
			else
			{
				Changes.Notes.push_back(Difference.Path + " was not taken over: " + Problem + '.');
			}
		}
		if (Changes.Notes.size() > MaxNotes)
		{
			const size_t More = Changes.Notes.size() - MaxNotes;
			Changes.Notes.resize(MaxNotes);
			Changes.Notes.push_back(std::to_string(More) + " more files were not taken over.");
		}
		return Changes;
	}
}
