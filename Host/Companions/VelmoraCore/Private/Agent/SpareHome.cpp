#include "Changes/ChangeJournal.h"
#include "Host/FileDescriptor.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/Sqlite.h"
#include "Host/StoreLocation.h"
#include "Store/ConversationStore.h"
#include "Store/StoreFiles.h"
#include "Store/StoreSchema.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace Velmora
{
	namespace
	{
		constexpr uint64 MaxDraftBytes = 1ull << 30;

		/** Makes a whole copy with nothing in a log, and makes it last. */
		FOutcome CopyStore(const std::string& From, const std::string& To)
		{
			StoreFiles::Remove(To);
			FSqliteConnection Source;
			FOutcome Step = StoreSchema::Open(Source, From, ESqliteAccess::Read, FConversationStore::WorkerTimeoutMilliseconds);
			if (Step && StoreSchema::ReadVersion(Source) != StoreSchema::Version)
			{
				Step = FOutcome(EOutcome::Damaged, "it is no store of this version", From);
			}
			Step = Step ? StoreFiles::CreateEmpty(To) : Step;
			Step = Step ? Source.Query("VACUUM INTO ?").BindText(To).Finish() : Step;
			return !Step || FFileDescriptor::Open(To, O_RDONLY).Flush() ? Step : FOutcome::FromSystem(errno, To);
		}

		FOutcome BringConversations(const std::string& Spare, const std::string& Home)
		{
			const std::string Side = StoreFiles::MakeSideName(Home, StoreSchema::Version);
			if (access(Spare.c_str(), F_OK) != 0 || access(Side.c_str(), F_OK) == 0)
			{
				return FOutcome::Done(); // Nothing to bring, or one thing after the other: the next start brings it.
			}
			// 1. As long as we could write, nobody else does; who has it open finds it gone afterwards, and makes another.
			FSqliteConnection Guard;
			FOutcome Step = StoreSchema::Open(Guard, Spare, ESqliteAccess::Write, FConversationStore::FrameTimeoutMilliseconds);
			Step = Step ? Guard.Execute("BEGIN IMMEDIATE") : Step;
			// 2. Whole under a name that nobody looks for, then under the one whose conversations the store takes over.
			const std::string Unfinished = Side + ".new";
			Step = Step ? CopyStore(Spare, Unfinished) : Step;
			Step = Step ? StoreFiles::Move(Unfinished, Side) : Step;
			if (!Step)
			{
				StoreFiles::Remove(Unfinished);
				return Step;
			}
			StoreFiles::FlushFolder(StoreFiles::GetFolder(Side));
			// 3. Only now. Cut off before, it is brought twice and stored once, since conversations go on where they are known.
			StoreFiles::Remove(Spare);
			return FOutcome::Done();
		}

		/** What stands in the prompt here is newer. */
		FOutcome BringDraft(const std::string& Spare, const std::string& Home)
		{
			const FFileDescriptor File = FFileDescriptor::Open(Spare, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
			if (!File.IsOpen() || access(Home.c_str(), F_OK) == 0)
			{
				return FOutcome::Done();
			}
			std::string Text;
			if (!File.Read(Text, MaxDraftBytes + 1))
			{
				return FOutcome::FromSystem(errno, Spare);
			}
			if (Text.size() > MaxDraftBytes)
			{
				return FOutcome(EOutcome::Refused, "it is larger than 1 GiB", Spare);
			}
			FString Reason;
			if (!HostSaveFile(HostFileNameFromBytes(Home), Text.data(), static_cast<int64>(Text.size()), HostWritePrivate, Reason))
			{
				return FOutcome(EOutcome::Failed, HostFileNameToBytes(Reason), Home);
			}
			unlink(Spare.c_str());
			return FOutcome::Done();
		}
	}

	FOutcome BringHome(const FString& SpareFolder)
	{
		FStoreLocation There = GetStoreLocation();
		const FStoreLocation Here = There;
		There.ConversationFolder = SpareFolder;
		const std::string Spare = HostFileNameToBytes(There.GetDatabasePath());
		const FOutcome Conversations = BringConversations(Spare, HostFileNameToBytes(Here.GetDatabasePath()));
		// An undo that was cut short is finished in its conversation, which so comes first.
		const bool bCanUndoCome = access(Spare.c_str(), F_OK) != 0;
		const FOutcome Undo = bCanUndoCome
			? FChangeJournal::BringDeadJournals(HostFileNameToBytes(There.GetUndoFolder()), HostFileNameToBytes(Here.GetUndoFolder()))
			: FOutcome::Done();
		const FOutcome Draft = BringDraft(HostFileNameToBytes(There.GetDraftPath()), HostFileNameToBytes(Here.GetDraftPath()));
		rmdir(HostFileNameToBytes(SpareFolder).c_str()); // Only when it is empty.
		return !Conversations ? Conversations : !Undo ? Undo : Draft;
	}
}
