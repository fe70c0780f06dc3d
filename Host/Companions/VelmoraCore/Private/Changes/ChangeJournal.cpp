#include "Changes/ChangeJournal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "Changes/ContentHash.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Misc/Guid.h"

namespace Velmora
{
	namespace
	{
		constexpr const char* LockName = "lock";
		constexpr const char* LogName = "changes.log";
		/** A folder on its way to being a journal has this in front of its name until its lock is held. */
		constexpr const char* NewFolderPrefix = ".new-";

		std::string MakeIdentifier()
		{
			return HostFileNameToBytes(FGuid::NewGuid().ToString(EGuidFormats::DigitsLower));
		}

		/** For a field of the log: no tab, no line feed. */
		std::string EscapeField(std::string_view Text)
		{
			std::string Out;
			for (const char Byte : Text)
			{
				if (Byte == '%' || static_cast<unsigned char>(Byte) < 0x20)
				{
					Out += '%';
					Out += "0123456789abcdef"[static_cast<unsigned char>(Byte) >> 4];
					Out += "0123456789abcdef"[Byte & 15];
				}
				else
				{
					Out += Byte;
				}
			}
			return Out;
		}

		std::string UnescapeField(std::string_view Text)
		{
			std::string Out;
			for (size_t Index = 0; Index < Text.size(); ++Index)
			{
				if (Text[Index] == '%' && Index + 2 < Text.size())
				{
					Out += static_cast<char>(std::strtol(std::string(Text.substr(Index + 1, 2)).c_str(), nullptr, 16));
					Index += 2;
				}
				else
				{
					Out += Text[Index];
				}
			}
			return Out;
		}

		std::string DescribeState(const FEntryState& State)
		{
			constexpr const char* Names[] = { "absent", "file", "folder", "link", "other" };
			return std::string(Names[static_cast<int>(State.Kind)]) + '\t' + std::to_string(State.Mode) + '\t' + State.Hash + '\t' +
				EscapeField(State.LinkTarget);
		}

		/** Removes the half-written files that a log speaks of. Fields: "change", root, path, temporary name … */
		void RemoveTemporaries(const std::string& LogPath)
		{
			std::ifstream Log(LogPath, std::ios::binary);
			std::map<std::string, std::unique_ptr<FProjectAccess>> Accesses;
			for (std::string Line; std::getline(Log, Line);)
			{
				std::vector<std::string> Fields;
				for (size_t Start = 0; Fields.size() < 4 && Start <= Line.size();)
				{
					const size_t End = std::min(Line.find('\t', Start), Line.size());
					Fields.push_back(UnescapeField(std::string_view(Line).substr(Start, End - Start)));
					Start = End + 1;
				}
				if (Fields.size() < 4 || Fields[0] != "change" || Fields[3].find('/') != std::string::npos)
				{
					continue;
				}
				std::unique_ptr<FProjectAccess>& Access = Accesses[Fields[1]];
				if (!Access)
				{
					Access = std::make_unique<FProjectAccess>(Fields[1]);
				}
				std::string Path;
				if (Access->IsOpen() && Access->Normalise(Fields[2].substr(0, Fields[2].rfind('/') + 1) + Fields[3], Path).empty())
				{
					Access->Remove(Path);
					Access->Remove(Path + FChangeJournal::CopyEnding);
				}
			}
		}
	}

	FEntryState MakeEntryState(const FEntryInfo& Info, const std::string& Bytes)
	{
		FEntryState State;
		State.Kind = Info.Kind;
		State.Mode = Info.Kind == EEntryKind::File ? Info.Mode : 0;
		State.Hash = Info.Kind == EEntryKind::File ? HashContent(Bytes) : std::string();
		State.LinkTarget = Info.LinkTarget;
		return State;
	}

	FChangeJournal::FChangeJournal(std::string InUndoFolder, uint64_t InMaxKeptBytes)
		: UndoFolder(std::move(InUndoFolder))
		, Limit(InMaxKeptBytes)
	{
	}

	FChangeJournal::~FChangeJournal()
	{
		if (!Folder.empty())
		{
			if (bMayHaveLeftovers)
			{
				RemoveTemporaries(Folder + '/' + LogName);
			}
			std::error_code Error;
			std::filesystem::remove_all(Folder, Error);
			std::filesystem::remove(UndoFolder, Error); // Only when it is empty.
		}
	}

	void FChangeJournal::OpenTransaction(const std::string& Id, const std::string& ConversationId, int MessageIndex)
	{
		const auto Transaction = std::make_shared<FChangeTransaction>();
		Transaction->Id = Id;
		Transaction->ConversationId = ConversationId;
		Transaction->MessageIndex = MessageIndex;
		const std::scoped_lock Guard(ListMutex);
		Transactions.push_back(Transaction);
	}

	std::shared_ptr<FChangeTransaction> FChangeJournal::FindTransaction(const std::string& Id) const
	{
		const std::scoped_lock Guard(ListMutex);
		const auto Found = std::find_if(Transactions.begin(), Transactions.end(),
			[&Id](const std::shared_ptr<FChangeTransaction>& Transaction) { return Transaction->Id == Id; });
		return Found == Transactions.end() ? nullptr : *Found;
	}

	std::vector<FPerformedChange> FChangeJournal::TakePerformed()
	{
		const std::scoped_lock Guard(ListMutex);
		return std::exchange(Performed, {});
	}

	std::string FChangeJournal::Change(const std::string& TransactionId, const FProjectAccess& Access, const std::string& Root,
		const std::string& GivenPath, const FMakeContent& MakeContent)
	{
		const std::scoped_lock Guard(WorkMutex);
		// Whatever links lead to it, a file has one name here.
		const std::string Path = Access.ResolveFolders(GivenPath);
		const std::shared_ptr<FChangeTransaction> Transaction = FindTransaction(TransactionId);
		if (!Transaction || Transaction->bIsDropped)
		{
			return "the request it belongs to is over";
		}

		FEntryInfo Info;
		std::string Bytes;
		std::string Problem = Access.Look(Path, Info);
		if (Problem.empty() && Info.Kind == EEntryKind::File)
		{
			Problem = Access.Read(Path, MaxFileBytes, Bytes, Info);
		}
		FNewContent Content;
		if (Problem.empty())
		{
			Problem = MakeContent(Info, Bytes, Content);
		}
		if (!Problem.empty())
		{
			return Problem;
		}

		FChangeRecord Record;
		Record.Root = Root;
		Record.RootIdentity = Access.GetIdentity();
		Record.Path = Path;
		Record.Before = MakeEntryState(Info, Bytes);
		if (!Content.bIsDeletion)
		{
			Record.After.Kind = EEntryKind::File;
			Record.After.Mode = Info.Kind == EEntryKind::File ? Info.Mode : 0;
			Record.After.Hash = HashContent(Content.Bytes);
			Record.MadeFolders = Access.ListMissingParents(Path);
		}
		Problem = OpenFolder();
		if (Problem.empty() && Info.Kind == EEntryKind::File)
		{
			Problem = Keep(Bytes, Record.Before.Hash, *Transaction);
		}
		if (!Problem.empty())
		{
			return Problem;
		}
		Record.TemporaryName =
			".velmora-" + std::filesystem::path(Folder).filename().native().substr(0, 12) + '-' + std::to_string(++RecordCount) + ".tmp";
		std::string Line = "change\t" + EscapeField(Root) + '\t' + EscapeField(Path) + '\t' + Record.TemporaryName + '\t' + TransactionId +
			'\t' + DescribeState(Record.Before) + '\t' + DescribeState(Record.After);
		for (const std::string& Made : Record.MadeFolders)
		{
			Line += '\t' + EscapeField(Made);
		}
		Problem = AppendToLog(Line + '\n');

		std::vector<std::string> Made;
		if (Problem.empty() && Content.bIsDeletion)
		{
			Problem = Access.Remove(Path);
		}
		else if (Problem.empty())
		{
			const bool bIsNew = Info.Kind != EEntryKind::File;
			FProjectAccess::FWriteOptions Options;
			Options.TemporaryName = Record.TemporaryName;
			Options.Mode = !bIsNew ? Info.Mode : Content.Mode != 0 ? Content.Mode : 0666;
			Options.bObeysMask = bIsNew && Content.Mode == 0;
			Options.bMayReplace = !bIsNew;
			Problem = Access.MakeParents(Path, Made);
			Problem = Problem.empty() ? Access.Write(Path, Content.Bytes, Options) : Problem;
		}
		if (!Problem.empty())
		{
			for (; !Made.empty(); Made.pop_back())
			{
				Access.RemoveFolder(Made.back());
			}
			Contents->Release(Record.Before.Hash);
			bMayHaveLeftovers = true;
			return Problem;
		}

		FEntryInfo Now;
		if (Record.After.Kind == EEntryKind::File && Record.After.Mode == 0 && Access.Look(Path, Now).empty())
		{
			Record.After.Mode = Now.Mode;
		}
		Record.MadeFolders = Made;
		const EChangeAction Action = Content.bIsDeletion ? EChangeAction::Deleted
			: Info.Kind == EEntryKind::File				 ? EChangeAction::Modified
														 : EChangeAction::Created;
		const std::scoped_lock ListGuard(ListMutex);
		Performed.push_back({ TransactionId, Transaction->ConversationId, Root, Path, Action });
		Transaction->Records.push_back(std::move(Record));
		return std::string();
	}

	std::string FChangeJournal::OpenFolder()
	{
		if (!Folder.empty())
		{
			return std::string();
		}
		const std::string Refusal = "its former content cannot be kept: ";
		FString Problem;
		if (!MakePrivateFolder(HostFileNameFromBytes(UndoFolder), Problem))
		{
			return Refusal + HostFileNameToBytes(Problem);
		}
		const std::string Name = MakeIdentifier();
		const std::string Fresh = UndoFolder + '/' + NewFolderPrefix + Name;
		const std::string Final = UndoFolder + '/' + Name;
		FFileDescriptor NewLock;
		FFileDescriptor NewLog;
		bool bDone = mkdir(Fresh.c_str(), 0700) == 0 && mkdir((Fresh + '/' + FKeptContents::FolderName).c_str(), 0700) == 0;
		if (bDone)
		{
			NewLock = FFileDescriptor(open((Fresh + '/' + LockName).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
			NewLog = FFileDescriptor(open((Fresh + '/' + LogName).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0600));
			bDone = NewLock.IsOpen() && NewLog.IsOpen() && flock(NewLock.Get(), LOCK_EX | LOCK_NB) == 0 &&
				rename(Fresh.c_str(), Final.c_str()) == 0;
		}
		const int MakeError = errno;
		auto NewContents = std::make_unique<FKeptContents>(Final);
		if (!bDone || !NewContents->DescribeRefusal().empty())
		{
			const std::string Reason = bDone ? NewContents->DescribeRefusal() : strerror(MakeError);
			std::error_code Error;
			std::filesystem::remove_all(bDone ? Final : Fresh, Error);
			return Refusal + Reason;
		}
		NewContents->SetDurable(bIsDurable);
		if (bIsDurable)
		{
			for (const std::string& Made : { Final, UndoFolder })
			{
				const FFileDescriptor Opened(open(Made.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
				fsync(Opened.Get());
			}
		}
		Lock = std::move(NewLock);
		Log = std::move(NewLog);
		Contents = std::move(NewContents);
		Folder = Final;
		return std::string();
	}

	std::string FChangeJournal::Keep(const std::string& Bytes, const std::string& Hash, const FChangeTransaction& ForTransaction)
	{
		const uint64_t Needed = Contents->Holds(Hash) ? 0 : Bytes.size();
		FTransactions Snapshot;
		{
			const std::scoped_lock Guard(ListMutex);
			Snapshot = Transactions;
		}
		for (auto Oldest = Snapshot.begin(); Oldest != Snapshot.end() && Contents->GetBytes() + Needed > Limit; ++Oldest)
		{
			if (Oldest->get() != &ForTransaction && !(*Oldest)->Records.empty())
			{
				DropTransaction(**Oldest);
			}
		}
		return Contents->GetBytes() + Needed <= Limit
			? Contents->Keep(Bytes, Hash)
			: "its former content cannot be kept: the undo store holds " + std::to_string(Limit / (1024 * 1024)) + " MB and is full";
	}

	void FChangeJournal::DropTransaction(FChangeTransaction& Transaction)
	{
		std::vector<FChangeRecord> Records;
		{
			const std::scoped_lock Guard(ListMutex);
			Records = std::exchange(Transaction.Records, {});
			Transaction.bIsDropped = true;
		}
		for (const FChangeRecord& Record : Records)
		{
			Contents->Release(Record.Before.Hash);
		}
	}

	std::string FChangeJournal::AppendToLog(const std::string& Line)
	{
		struct stat Before = {};
		fstat(Log.Get(), &Before);
		const ssize_t Count = write(Log.Get(), Line.data(), Line.size());
		if (Count != static_cast<ssize_t>(Line.size()) || (bIsDurable && fdatasync(Log.Get()) != 0))
		{
			const std::string Reason = Count >= 0 && Count < static_cast<ssize_t>(Line.size()) ? "the disk is full" : strerror(errno);
			// Half a line would spoil the next one.
			[[maybe_unused]] const int Ignored = ftruncate(Log.Get(), Before.st_size);
			return "it cannot be written down for undo: " + Reason;
		}
		return std::string();
	}

	void FChangeJournal::RemoveDeadJournals(const std::string& UndoFolder)
	{
		std::error_code Error;
		for (std::filesystem::directory_iterator It(UndoFolder, Error), End; !Error && It != End; It.increment(Error))
		{
			const std::string Path = It->path().native();
			if (It->path().filename().native().rfind(NewFolderPrefix, 0) == 0)
			{
				// Another process may be making it right now; it takes no time.
				std::error_code Ignored;
				if (std::filesystem::last_write_time(It->path(), Ignored) <
					std::filesystem::file_time_type::clock::now() - std::chrono::hours(1))
				{
					std::filesystem::remove_all(Path, Ignored);
				}
				continue;
			}
			const FFileDescriptor TheirLock(open((Path + '/' + LockName).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
			// Every journal has had a lock since it took its name; one without is half removed.
			const bool bIsHalfRemoved = !TheirLock.IsOpen() && errno == ENOENT;
			if (bIsHalfRemoved || (TheirLock.IsOpen() && flock(TheirLock.Get(), LOCK_EX | LOCK_NB) == 0))
			{
				RemoveTemporaries(Path + '/' + LogName);
				std::error_code Ignored;
				std::filesystem::remove_all(Path, Ignored);
			}
		}
	}
}
