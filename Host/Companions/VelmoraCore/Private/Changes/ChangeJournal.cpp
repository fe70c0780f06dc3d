#include "Changes/ChangeJournal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "Changes/ContentHash.h"
#include "Changes/SteeringFiles.h"
#include "Host/FolderLock.h"
#include "Host/HostFileNames.h"
#include "Host/HostSystemErrors.h"
#include "Host/StoreLocation.h"
#include "Misc/Guid.h"

namespace Velmora
{
	namespace
	{
		std::string MakeIdentifier()
		{
			return HostFileNameToBytes(FGuid::NewGuid().ToString(EGuidFormats::DigitsLower));
		}

		/** Neither a deletion nor a folder nor a link. */
		bool MakesFile(const FNewContent& Content)
		{
			return !Content.bIsDeletion && !Content.bIsFolder && Content.LinkTarget.empty();
		}
	}

	FEntryState MakeEntryState(const FEntryInfo& Info, const std::string& Bytes)
	{
		FEntryState State;
		State.Kind = Info.Kind;
		State.Mode = Info.Kind == EEntryKind::File ? Info.Mode : 0;
		State.Hash = Info.Kind == EEntryKind::File ? HashContent(Bytes) : std::string();
		State.LinkTarget = Info.LinkTarget;
		State.Traits = Info.Kind == EEntryKind::File ? Info.Traits : FFileTraits();
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
				RemoveTemporaries(FChangeLog::Read(Folder));
			}
			// A later start undoes it; what cannot be told apart then is worth nothing.
			FTransactions Unlogged;
			if (HasSomethingToUndo() && Log.AppendMessages(ListMessages(Unlogged)).empty())
			{
				return;
			}
			std::error_code Error;
			std::filesystem::remove_all(Folder, Error);
			std::filesystem::remove(UndoFolder, Error); // Only when it is empty.
		}
	}

	bool FChangeJournal::HasSomethingToUndo() const
	{
		return std::any_of(Transactions.begin(), Transactions.end(),
			[](const std::shared_ptr<FChangeTransaction>& Transaction)
			{ return !Transaction->bIsDropped && !Transaction->Records.empty(); });
	}

	void FChangeJournal::SetDurable(bool bInDurable)
	{
		bIsDurable = bInDurable;
		Log.SetDurable(bInDurable);
	}

	void FChangeJournal::OpenTransaction(
		const std::string& Id, const std::string& ConversationId, int MessageIndex, const std::string& MessageMark)
	{
		const auto Transaction = std::make_shared<FChangeTransaction>();
		Transaction->Id = Id;
		Transaction->ConversationId = ConversationId;
		Transaction->MessageIndex = MessageIndex;
		Transaction->MessageMark = MessageMark;
		const std::scoped_lock Guard(ListMutex);
		Transactions.push_back(Transaction);
	}

	void FChangeJournal::AddMessage(const std::string& TransactionId, int MessageIndex)
	{
		const std::scoped_lock Guard(ListMutex);
		for (const std::shared_ptr<FChangeTransaction>& Transaction : Transactions)
		{
			if (Transaction->Id == TransactionId)
			{
				Transaction->LaterMessages.push_back(MessageIndex);
				Transaction->bIsLogged = false;
			}
		}
	}

	std::shared_ptr<FChangeTransaction> FChangeJournal::FindTransaction(const std::string& Id) const
	{
		const std::scoped_lock Guard(ListMutex);
		const auto Found = std::find_if(Transactions.begin(), Transactions.end(),
			[&Id](const std::shared_ptr<FChangeTransaction>& Transaction) { return Transaction->Id == Id; });
		return Found == Transactions.end() ? nullptr : *Found;
	}

	std::optional<FChangeJournal::FKnownMessage> FChangeJournal::FindTransactionOf(
		const std::string& ConversationId, int MessageIndex, const std::string& MessageMark) const
	{
		const std::scoped_lock Guard(ListMutex);
		for (auto It = Transactions.rbegin(); It != Transactions.rend(); ++It)
		{
			const FChangeTransaction& Transaction = **It;
			const bool bOpened = Transaction.MessageIndex == MessageIndex &&
				(MessageMark.empty() || Transaction.MessageMark.empty() || Transaction.MessageMark == MessageMark);
			if (Transaction.ConversationId == ConversationId && !Transaction.bIsDropped &&
				(bOpened || std::count(Transaction.LaterMessages.begin(), Transaction.LaterMessages.end(), MessageIndex) != 0))
			{
				return FKnownMessage{ Transaction.Id, Transaction.MessageIndex };
			}
		}
		return std::nullopt;
	}

	std::string FChangeJournal::ListMessages(FTransactions& OutListed)
	{
		const std::scoped_lock Guard(ListMutex);
		for (const std::shared_ptr<FChangeTransaction>& Transaction : Transactions)
		{
			if (!Transaction->bIsLogged && !Transaction->bIsDropped)
			{
				Transaction->bIsLogged = true;
				OutListed.push_back(Transaction);
			}
		}
		return FChangeLog::ListMessages(OutListed);
	}

	void FChangeJournal::ForgetConversations(const std::function<bool(const std::string& ConversationId)>& IsGone)
	{
		const std::scoped_lock Guard(WorkMutex);
		FTransactions Gone;
		{
			const std::scoped_lock ListGuard(ListMutex);
			std::copy_if(Transactions.begin(), Transactions.end(), std::back_inserter(Gone),
				[&IsGone](const std::shared_ptr<FChangeTransaction>& Transaction) { return IsGone(Transaction->ConversationId); });
		}
		std::vector<std::string> Ids;
		for (const std::shared_ptr<FChangeTransaction>& Transaction : Gone)
		{
			DropTransaction(*Transaction);
			Ids.push_back(Transaction->Id);
		}
		if (Log.IsOpen() && !Ids.empty())
		{
			Log.AppendForgotten(Ids);
		}
	}

	std::vector<FPerformedChange> FChangeJournal::TakePerformed()
	{
		const std::scoped_lock Guard(ListMutex);
		return std::exchange(Performed, {});
	}

	std::string FChangeJournal::Change(const std::string& TransactionId, const FProjectAccess& Access, const std::string& Root,
		const std::string& GivenPath, const FMakeContent& MakeContent, std::string* OutNote)
	{
		const std::scoped_lock Guard(WorkMutex);
		const std::shared_ptr<FChangeTransaction> Transaction = FindTransaction(TransactionId);
		if (!Transaction || Transaction->bIsDropped)
		{
			return "the request it belongs to is over";
		}
		const FFolderLock Turn(Root, FProjectAccess::TurnMilliseconds);
		// Whatever links lead to it, a file has one name here.
		const std::string Path = Access.ResolveFolders(GivenPath);
		FEntryInfo Info;
		std::string Bytes;
		std::string Problem = Access.Look(Path, Info);
		if (Problem.empty() && Info.Kind == EEntryKind::File)
		{
			Problem = Access.Read(Path, MaxFileBytes, Bytes, Info);
		}
		FNewContent Content;
		Problem = Problem.empty() ? MakeContent(Info, Bytes, Content) : Problem;
		if (Problem.empty() && Content.bIsFolder && Info.Kind != EEntryKind::Absent)
		{
			Problem = "something stands there already";
		}
		Problem = Problem.empty() ? OpenFolder() : Problem;
		if (!Problem.empty())
		{
			return Problem;
		}

		std::string Note;
		const FChangeRecord Record = MakeRecord(Access, Root, Path, Info, Bytes, Content, Note);
		std::vector<FChangeRecord> Records = ListByName(Record, !MakesFile(Content));
		Problem = WriteDown(Records, Bytes, *Transaction);
		if (!Problem.empty())
		{
			return Problem;
		}
		Problem = Make(Access, Records, Info, Content, Note);
		if (!Problem.empty())
		{
			Withdraw(Records);
			return Problem;
		}
		if (OutNote)
		{
			*OutNote = Note;
		}
		const EChangeAction Action = Content.bIsDeletion ? EChangeAction::Deleted
			: Info.Kind == EEntryKind::File				 ? EChangeAction::Modified
														 : EChangeAction::Created;
		const std::scoped_lock ListGuard(ListMutex);
		if (!Content.bIsFolder)
		{
			Performed.push_back({ TransactionId, Transaction->ConversationId, Root, Path, Action });
		}
		std::move(Records.begin(), Records.end(), std::back_inserter(Transaction->Records));
		return std::string();
	}

	FChangeRecord FChangeJournal::MakeRecord(const FProjectAccess& Access, const std::string& Root, const std::string& Path,
		const FEntryInfo& Info, const std::string& Bytes, const FNewContent& Content, std::string& OutNote)
	{
		FChangeRecord Record;
		Record.Root = Root;
		Record.RootIdentity = Access.GetIdentity();
		Record.Path = Path;
		Record.Before = MakeEntryState(Info, Bytes);
		const bool bIsFile = MakesFile(Content);
		if (bIsFile)
		{
			Record.After = Record.Before;
			Record.After.Kind = EEntryKind::File;
			Record.After.Hash = HashContent(Content.Bytes);
			Record.After.LinkTarget.clear();
		}
		else if (!Content.LinkTarget.empty())
		{
			Record.After.Kind = EEntryKind::Link;
			Record.After.LinkTarget = Content.LinkTarget;
		}
		if (!Content.bIsDeletion)
		{
			// A folder that was made goes as one of those, if nothing is in it then.
			Record.MadeFolders = Access.ListMissingParents(Content.bIsFolder ? Path + "/x" : Path);
		}
		const bool bHasOtherNames = Info.Kind == EEntryKind::File && Info.NameCount > 1;
		if (bHasOtherNames && !Access.ListOtherNames(Path, Info, Record.OtherNames) && bIsFile)
		{
			// Names outside are none of our business: what they stand for stays as it is.
			Record.OtherNames.clear();
			OutNote = "it is no longer one file with its names outside the project";
		}
		const auto Steering = std::find_if(
			Record.OtherNames.begin(), Record.OtherNames.end(), [](const std::string& Name) { return !DescribeSteering(Name).empty(); });
		if (Steering != Record.OtherNames.end() && bIsFile)
		{
			// Nobody was asked about that one.
			OutNote = "it is no longer one file with `" + *Steering + '`';
			Record.OtherNames.clear();
		}
		return Record;
	}

	void FChangeJournal::Withdraw(const std::vector<FChangeRecord>& Records)
	{
		for (const FChangeRecord& Failed : Records)
		{
			Contents->Release(Failed.Before.Hash);
		}
		Log.AppendFailure(Records.size());
		bMayHaveLeftovers = true;
	}

	std::vector<FChangeRecord> FChangeJournal::ListByName(const FChangeRecord& Record, bool bUnderOneName)
	{
		std::vector<FChangeRecord> Records = { Record };
		for (size_t Index = 0; Index < Record.OtherNames.size() && !bUnderOneName; ++Index)
		{
			FChangeRecord& Other = Records.emplace_back(Record);
			std::swap(Other.Path, Other.OtherNames[Index]);
			Other.MadeFolders.clear();
		}
		for (FChangeRecord& Named : Records)
		{
			Named.TemporaryName = ".velmora-" + std::filesystem::path(Folder).filename().native().substr(0, 12) + '-' +
				std::to_string(++RecordCount) + ".tmp";
		}
		return Records;
	}

	std::string FChangeJournal::WriteDown(
		const std::vector<FChangeRecord>& Records, const std::string& Bytes, const FChangeTransaction& Transaction)
	{
		std::string Problem;
		size_t KeptCount = 0;
		while (KeptCount < Records.size() && Problem.empty() && Records[KeptCount].Before.Kind == EEntryKind::File)
		{
			Problem = Keep(Bytes, Records[KeptCount].Before.Hash, Transaction);
			KeptCount += Problem.empty();
		}
		FTransactions Opened;
		Problem = Problem.empty() ? Log.AppendChanges(Records, Transaction.Id, ListMessages(Opened)) : Problem;
		if (!Problem.empty())
		{
			const std::scoped_lock ListGuard(ListMutex);
			for (const std::shared_ptr<FChangeTransaction>& Unlogged : Opened)
			{
				Unlogged->bIsLogged = false;
			}
		}
		while (!Problem.empty() && KeptCount > 0)
		{
			Contents->Release(Records[--KeptCount].Before.Hash);
		}
		return Problem;
	}

	std::string FChangeJournal::Make(const FProjectAccess& Access, std::vector<FChangeRecord>& Records, const FEntryInfo& Info,
		const FNewContent& Content, std::string& InOutNote)
	{
		FChangeRecord& Record = Records.front();
		const FEntryStamp Stamp = Info.GetStamp();
		if (Content.bIsDeletion)
		{
			return Access.Remove(Record.Path, &Stamp);
		}
		if (Content.bIsFolder || !Content.LinkTarget.empty())
		{
			return MakeNoFile(Access, Record, Stamp, Content);
		}
		const bool bIsNew = Info.Kind != EEntryKind::File;
		const bool bSetsMode = !bIsNew && Content.bSetsMode;
		std::string Lost;
		FProjectAccess::FWriteOptions Options;
		Options.TemporaryName = Record.TemporaryName;
		Options.Mode = bSetsMode ? (Info.Mode & 07000) | Content.Mode : !bIsNew ? Info.Mode : Content.Mode != 0 ? Content.Mode : 0666;
		Options.bObeysMask = bIsNew && Content.Mode == 0;
		Options.bMayReplace = !bIsNew;
		Options.Replaced = &Stamp;
		Options.Traits = bIsNew ? nullptr : &Info.Traits;
		Options.OutLost = &Lost;
		std::vector<std::string> Made;
		std::string Problem = Access.MakeParents(Record.Path, Made);
		Problem = Problem.empty() ? Access.Write(Record.Path, Content.Bytes, Options) : Problem;
		if (!Problem.empty())
		{
			for (; !Made.empty(); Made.pop_back())
			{
				Access.RemoveFolder(Made.back());
			}
			return Problem;
		}
		Record.MadeFolders = Made;
		const auto Add = [&InOutNote](const std::string& Text) { InOutNote += (InOutNote.empty() ? "" : "; ") + Text; };
		if (!Lost.empty())
		{
			Add(Lost + " could not be kept");
		}
		for (size_t Index = 1; Index < Records.size(); ++Index)
		{
			const std::string Refusal = Access.LinkTo(Record.Path, Records[Index].Path, Records[Index].TemporaryName);
			if (!Refusal.empty())
			{
				Add("its other name `" + Records[Index].Path + "` still has the old content (" + Refusal + ')');
			}
		}
		FEntryInfo Now;
		if ((bIsNew || bSetsMode) && Access.Look(Record.Path, Now).empty())
		{
			Record.After.Mode = Now.Mode;
		}
		return std::string();
	}

	std::string FChangeJournal::MakeNoFile(
		const FProjectAccess& Access, FChangeRecord& Record, const FEntryStamp& Replaced, const FNewContent& Content)
	{
		FProjectAccess::FWriteOptions Options;
		Options.TemporaryName = Record.TemporaryName;
		Options.bMayReplace = Replaced.Kind != EEntryKind::Absent;
		Options.Replaced = &Replaced;
		std::vector<std::string> Made;
		std::string Problem = Access.MakeParents(Content.bIsFolder ? Record.Path + "/x" : Record.Path, Made);
		if (Problem.empty() && !Content.bIsFolder)
		{
			Problem = Access.MakeLink(Record.Path, Content.LinkTarget, Options);
		}
		for (; !Problem.empty() && !Made.empty(); Made.pop_back())
		{
			Access.RemoveFolder(Made.back());
		}
		Record.MadeFolders = Made;
		return Problem;
	}

	bool FChangeJournal::IsFolderThere() const
	{
		struct stat Held = {};
		struct stat There = {};
		return fstat(Lock.Get(), &Held) == 0 && stat((Folder + '/' + LockName).c_str(), &There) == 0 && Held.st_ino == There.st_ino &&
			Held.st_dev == There.st_dev;
	}

	std::string FChangeJournal::BeginAnew()
	{
		{
			const std::scoped_lock Guard(ListMutex);
			std::erase_if(
				Transactions, [](const std::shared_ptr<FChangeTransaction>& Transaction) { return !Transaction->Records.empty(); });
			for (const std::shared_ptr<FChangeTransaction>& Transaction : Transactions)
			{
				Transaction->bIsLogged = false;
			}
		}
		Contents.reset();
		Log = FChangeLog();
		Lock = FFileDescriptor();
		Folder.clear();
		return "what was kept for undo has been removed from the disk. Earlier changes cannot be undone any more; ask once more for this "
			   "one";
	}

	std::string FChangeJournal::OpenFolder()
	{
		if (!Folder.empty())
		{
			return IsFolderThere() ? std::string() : BeginAnew();
		}
		const std::string Refusal = "its former content cannot be kept: ";
		if (const FOutcome Made = MakePrivateFolder(HostFileNameFromBytes(UndoFolder)); !Made)
		{
			return Refusal + Made.GetWords();
		}
		const std::string Name = MakeIdentifier();
		const std::string Fresh = UndoFolder + '/' + NewFolderPrefix + Name;
		const std::string Final = UndoFolder + '/' + Name;
		FFileDescriptor NewLock;
		FChangeLog NewLog;
		NewLog.SetDurable(bIsDurable);
		bool bDone = mkdir(Fresh.c_str(), 0700) == 0 && mkdir((Fresh + '/' + FKeptContents::FolderName).c_str(), 0700) == 0;
		if (bDone)
		{
			NewLock = FFileDescriptor::Open(Fresh + '/' + LockName, O_RDWR | O_CREAT | O_EXCL, 0600);
			bDone = NewLog.Create(Fresh) && NewLock.IsOpen() && flock(NewLock.Get(), LOCK_EX | LOCK_NB) == 0 &&
				rename(Fresh.c_str(), Final.c_str()) == 0;
		}
		const int MakeError = errno;
		auto NewContents = std::make_unique<FKeptContents>(Final);
		if (!bDone || !NewContents->DescribeRefusal().empty())
		{
			const std::string Reason = bDone ? NewContents->DescribeRefusal() : HostDescribeSystemError(MakeError);
			std::error_code Error;
			std::filesystem::remove_all(bDone ? Final : Fresh, Error);
			return Refusal + Reason;
		}
		NewContents->SetDurable(bIsDurable);
		if (bIsDurable)
		{
			for (const std::string& Made : { Final, UndoFolder })
			{
				const FFileDescriptor Opened = FFileDescriptor::Open(Made, O_RDONLY | O_DIRECTORY);
				(void)Opened.Flush();
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
}
