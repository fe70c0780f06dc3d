#include "Store/ConversationStore.h"

#include <cerrno>
#include <sys/stat.h>

#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/Sqlite.h"
#include "Host/StoreLocation.h"
#include "Misc/ScopeExit.h"
#include "Store/StoreFiles.h"
#include "Store/StoreSchema.h"
#include "Store/StoreTurn.h"

namespace Velmora
{
	namespace
	{
		/** 4 MB of the log: beyond, a worker moves it into the main file after its commit. */
		constexpr int32 PagesBeforeCheckpoint = 1000;

		/** And anybody does, when no worker has come along. */
		constexpr int32 MaxWaitingPages = 8000;

		constexpr const char* BusyProblem = "The conversation store is busy: another program is using it. Try again in a moment.";

		/** On a slow disk the first opening, or a message of the agent's, can take longer than a frame may wait. */
		constexpr const char* OccupiedProblem = "The conversation store is still at work on the disk. Try again in a moment.";
		constexpr const char* DamagedProblem =
			"The conversation store is damaged. It is being set aside and what can be read is recovered. Try again in a moment.";

		/** How often a transaction is begun anew that a signal has ended. */
		constexpr int MaxInterruptedRuns = 20;

		/** Weak, so that the last one who uses a store closes it. */
		struct FDefaultStore
		{
			std::mutex Mutex;
			TWeakPtr<FConversationStore> Store;
		};

		FDefaultStore& GetDefaultStore()
		{
			static FDefaultStore Instance;
			return Instance;
		}
	}

	TSharedRef<FConversationStore> FConversationStore::GetDefault()
	{
		const std::string Path = HostFileNameToBytes(GetStoreLocation().GetDatabasePath());
		FDefaultStore& Default = GetDefaultStore();
		const std::scoped_lock Lock(Default.Mutex);
		TSharedPtr<FConversationStore> Known = Default.Store.Pin();
		if (!Known.IsValid() || Known->BasePath != Path)
		{
			Known = MakeShared<FConversationStore>(Path);
			Default.Store = Known;
		}
		return Known.ToSharedRef();
	}

	FConversationStore::FConversationStore(const std::string& InPath)
		: BasePath(InPath)
		, SidePath(StoreFiles::MakeSideName(InPath, StoreSchema::Version))
	{
	}

	FConversationStore::~FConversationStore()
	{
		Close();
	}

	void FConversationStore::Close()
	{
		const FTurn Turn(*this, WorkerTimeoutMilliseconds);
		if (Turn.IsMine() && Connection)
		{
			Connection->SetTimeout(FrameTimeoutMilliseconds);
			(void)Connection->Checkpoint(true); // What stays in the log is as safe there.
			Connection.reset();
		}
	}

	FOutcome FConversationStore::Append(
		FConversationMetadata& InOutConversation, int32 First, int32 TimeoutMilliseconds, const FAttachedFiles& Attached)
	{
		const FDateTime Now = FDateTime::UtcNow();
		bool bMayBeStored = false;
		FOutcome Stored = Run(
			EAccess::Write, TimeoutMilliseconds,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				FOutcome Found = StoreSchema::FindConversation(Database, InOutConversation.Id, Row);
				const bool bIsNew = Found.Is(EOutcome::Missing);
				if (!Found && !bIsNew)
				{
					return Found;
				}
				Row.Mode = static_cast<int64>(InOutConversation.Mode);
				Row.Updated = Now.GetTicks();
				Row.Opening = StoreSchema::MakeOpening(InOutConversation.Messages);
				if (bIsNew)
				{
					Row.Id = StoreSchema::EncodeId(InOutConversation.Id);
				}
				// A commit that failed may have reached the log all the same, and a new connection takes it for done.
				int32 Next = bIsNew ? 0 : First;
				if (!bIsNew && IsInDoubt(InOutConversation.Id))
				{
					const TOutcome<int32> Known = StoreSchema::CountStored(Database, Row.Number, InOutConversation.Messages, First);
					if (!Known)
					{
						return FOutcome(Known);
					}
					Next += *Known;
				}
				FOutcome Step = bIsNew ? StoreSchema::InsertConversation(Database, Row) : StoreSchema::UpdateConversation(Database, Row);
				for (int32 Index = Next; Step && Index < InOutConversation.Messages.Num(); ++Index)
				{
					const TOutcome<int64> Key = StoreSchema::AddMessage(Database, Row.Number, InOutConversation.Messages[Index]);
					const TArray<FString>* const Files = Attached.Find(Index);
					Step = Key && Files && !Files->IsEmpty() ? AttachedFiles::Add(Database, *Key, *Files) : FOutcome(Key);
				}
				return Step;
			},
			&bMayBeStored);
		NoteDoubt(InOutConversation.Id, Stored, bMayBeStored);
		if (Stored)
		{
			InOutConversation.LastUpdated = StoreSchema::ToLocalTime(Now.GetTicks());
		}
		return Stored;
	}

	TOutcome<int64> FConversationStore::AppendMessage(const FString& Id, const FConversationMessage& Message)
	{
		int64 Key = 0;
		bool bMayBeStored = false;
		const FOutcome Stored = Run(
			EAccess::Write, WorkerTimeoutMilliseconds,
			[&](FSqliteConnection& Database) -> FOutcome
			{
				StoreSchema::FConversationRow Row;
				if (FOutcome Found = StoreSchema::FindConversation(Database, Id, Row); !Found)
				{
					return Found;
				}
				Row.Updated = FDateTime::UtcNow().GetTicks();
				if (FOutcome Updated = StoreSchema::UpdateConversation(Database, Row); !Updated)
				{
					return Updated;
				}
				TOutcome<int64> Added = StoreSchema::AddMessage(Database, Row.Number, Message);
				Key = Added ? *Added : 0;
				return Added;
			},
			&bMayBeStored);
		NoteDoubt(Id, Stored, bMayBeStored);
		return Stored ? TOutcome<int64>(Key) : TOutcome<int64>(Stored);
	}

	bool FConversationStore::IsInDoubt(const FString& Id)
	{
		const std::scoped_lock Lock(DoubtMutex);
		return InDoubt.Contains(Id);
	}

	void FConversationStore::NoteDoubt(const FString& Id, const FOutcome& Stored, bool bMayBeStored)
	{
		const std::scoped_lock Lock(DoubtMutex);
		if (Stored)
		{
			InDoubt.Remove(Id);
		}
		else if (bMayBeStored)
		{
			InDoubt.AddUnique(Id);
		}
	}

	FOutcome FConversationStore::Withdraw(const FString& Id, int64 Key)
	{
		return Run(EAccess::Write, FrameTimeoutMilliseconds,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				if (FOutcome Found = StoreSchema::FindConversation(Database, Id, Row); !Found)
				{
					return Found;
				}
				// Deleted meanwhile, its number may belong to another conversation.
				return Row.Number == StoreSchema::GetNumber(Key) ? StoreSchema::DeleteMessage(Database, Key)
																 : FOutcome(EOutcome::Missing, "The message is no longer in the store.");
			});
	}

	FOutcome FConversationStore::TruncateMessages(const FString& Id, int32 KeepCount, int32 TimeoutMilliseconds)
	{
		return Truncate(Id, KeepCount, nullptr, TimeoutMilliseconds);
	}

	FOutcome FConversationStore::TruncateMessagesIf(const FString& Id, int32 KeepCount, const FMayDrop& MayDrop)
	{
		return Truncate(Id, KeepCount, MayDrop, WorkerTimeoutMilliseconds);
	}

	FOutcome FConversationStore::Truncate(const FString& Id, int32 KeepCount, const FMayDrop& MayDrop, int32 TimeoutMilliseconds)
	{
		return Run(EAccess::Write, TimeoutMilliseconds,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				FOutcome Step = StoreSchema::FindConversation(Database, Id, Row);
				if (Step && MayDrop)
				{
					TArray<FConversationMessage> Messages;
					Step = StoreSchema::ReadMessages(Database, Row.Number, -1, Messages);
					if (Step && !MayDrop(Messages))
					{
						return FOutcome(EOutcome::Missing, "The messages are not those that were to go.");
					}
				}
				if (Step && KeepCount <= 0)
				{
					return StoreSchema::DeleteConversation(Database, Row.Number);
				}
				Step = Step ? StoreSchema::DeleteMessagesAfter(Database, Row.Number, KeepCount) : Step;
				TArray<FConversationMessage> Head;
				Step = Step ? StoreSchema::ReadMessages(Database, Row.Number, StoreSchema::MaxOpeningMessages, Head) : Step;
				if (!Step)
				{
					return Step;
				}
				Row.Opening = StoreSchema::MakeOpening(Head);
				Row.Updated = FDateTime::UtcNow().GetTicks();
				return StoreSchema::UpdateConversation(Database, Row);
			});
	}

	TOutcome<FConversationMetadata> FConversationStore::Load(const FString& Id)
	{
		FConversationMetadata Loaded;
		const FOutcome Read = Run(EAccess::Read, FrameTimeoutMilliseconds,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				if (FOutcome Found = StoreSchema::FindConversation(Database, Id, Row); !Found)
				{
					return Found;
				}
				Loaded = StoreSchema::ToMetadata(Row);
				return StoreSchema::ReadMessages(Database, Row.Number, -1, Loaded.Messages);
			});
		return Read ? TOutcome<FConversationMetadata>(MoveTemp(Loaded)) : TOutcome<FConversationMetadata>(Read);
	}

	TOutcome<FAttachedFiles> FConversationStore::LoadAttached(const FString& Id)
	{
		FAttachedFiles Loaded;
		const FOutcome Read = Run(EAccess::Read, FrameTimeoutMilliseconds,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				const FOutcome Found = StoreSchema::FindConversation(Database, Id, Row);
				return Found ? AttachedFiles::Read(Database, Row.Number, Loaded) : Found;
			});
		return Read ? TOutcome<FAttachedFiles>(MoveTemp(Loaded)) : TOutcome<FAttachedFiles>(Read);
	}

	FOutcome FConversationStore::Delete(const FString& Id)
	{
		return TruncateMessages(Id, 0);
	}

	FOutcome FConversationStore::Clear()
	{
		return Run(EAccess::Write, FrameTimeoutMilliseconds, [](FSqliteConnection& Database) { return StoreSchema::DeleteAll(Database); });
	}

	TOutcome<TArray<FConversationMetadata>> FConversationStore::GetSummaries()
	{
		using FSummaries = TArray<FConversationMetadata>;
		FSummaries Summaries;
		const FOutcome Read = Run(EAccess::Read, FrameTimeoutMilliseconds,
			[&](FSqliteConnection& Database)
			{
				Summaries.Empty();
				return StoreSchema::ReadSummaries(Database, Summaries);
			});
		return Read ? TOutcome<FSummaries>(MoveTemp(Summaries)) : TOutcome<FSummaries>(Read);
	}

	FOutcome FConversationStore::ReadSummaries(const std::string& Path, TArray<FConversationMetadata>& OutSummaries)
	{
		struct stat Status;
		if (stat(Path.c_str(), &Status) != 0)
		{
			return errno == ENOENT ? FOutcome::Done() : FOutcome::FromSystem(errno, Path);
		}
		const FOutcome NoStore(EOutcome::Damaged, "it is no store of conversations", Path);
		if (!S_ISREG(Status.st_mode) || Status.st_size == 0)
		{
			return NoStore;
		}
		FSqliteConnection Database;
		if (FOutcome Opened = StoreSchema::Open(Database, Path, ESqliteAccess::Read, WorkerTimeoutMilliseconds); !Opened)
		{
			return Opened;
		}
		if (Database.ReadInteger("PRAGMA application_id", 0) == StoreSchema::ApplicationId)
		{
			const int64 Version = StoreSchema::ReadVersion(Database);
			const std::string SidePath = StoreFiles::MakeSideName(Path, StoreSchema::Version);
			if (Version == StoreSchema::Version)
			{
				return StoreSchema::ReadSummaries(Database, OutSummaries);
			}
			if (Version > StoreSchema::Version && Path != SidePath)
			{
				return ReadSummaries(SidePath, OutSummaries);
			}
		}
		return Database.IsBusy() ? Database.GetError() : NoStore;
	}

	FOutcome FConversationStore::Run(EAccess Access, int32 TimeoutMilliseconds, const FWork& Work, bool* OutMayBeStored)
	{
		const FTurn Turn(*this, TimeoutMilliseconds);
		if (!Turn.IsMine())
		{
			return FOutcome(EOutcome::Busy, OccupiedProblem, GetPath());
		}
		bHasCommitFailed = false;
		const bool bMayTakeTime = TimeoutMilliseconds > FrameTimeoutMilliseconds;
		FOutcome Result = RunOnce(Access, Turn.GetMilliseconds(), bMayTakeTime, Work);
		// The database library takes a flush that a signal interrupts for a failed one; nothing has changed then.
		for (int Count = 0; !Result && bWasInterrupted && Count < MaxInterruptedRuns; ++Count)
		{
			Result = RunOnce(Access, Turn.GetMilliseconds(), bMayTakeTime, Work);
		}
		if (OutMayBeStored)
		{
			*OutMayBeStored = !Result && bHasCommitFailed;
		}
		return Result;
	}

	FOutcome FConversationStore::Begin(EAccess Access, int32 TimeoutMilliseconds)
	{
		constexpr int MaxAttempts = 3;
		for (int Attempt = 0; Attempt < MaxAttempts; ++Attempt)
		{
			if (FOutcome Opened = Open(TimeoutMilliseconds); !Opened)
			{
				Connection.reset();
				return Opened;
			}
			if (FOutcome Begun = Connection->Execute(Access == EAccess::Write ? "BEGIN IMMEDIATE" : "BEGIN"); !Begun)
			{
				return Explain(Begun);
			}
			// Another program may have set the file aside until we had the lock: what is written to it now would be lost.
			// A later version may have made it its own, too.
			if ((Access == EAccess::Read || IsStillInPlace()) && StoreSchema::ReadVersion(*Connection) == StoreSchema::Version)
			{
				return FOutcome::Done();
			}
			Connection.reset();
		}
		return FOutcome(EOutcome::Busy, BusyProblem, GetPath());
	}

	FOutcome FConversationStore::RunOnce(EAccess Access, int32 TimeoutMilliseconds, bool bMayTakeTime, const FWork& Work)
	{
		bWasInterrupted = false;
		const FOutcome Begun = Begin(Access, TimeoutMilliseconds);
		FOutcome Result = Begun ? Work(*Connection) : Begun;
		if (Begun && (Result || Result.Is(EOutcome::Missing)))
		{
			const FOutcome Ended = Connection->Execute(Result ? "COMMIT" : "ROLLBACK");
			bHasCommitFailed = Result ? !Ended : bHasCommitFailed;
			if (Ended)
			{
				if (Connection->GetWaitingPages() > (bMayTakeTime ? PagesBeforeCheckpoint : MaxWaitingPages))
				{
					(void)Connection->Checkpoint(false); // The log only grows a little longer.
				}
				return Result;
			}
			Result = Ended;
		}
		// A commit whose flush failed may be complete in the log: this connection overwrites it next, a new one would
		// take it for done. So it stays, unless it cannot even begin.
		if (Connection)
		{
			const bool bIsOfUse = Result.Is(EOutcome::Busy) || (Begun && !Result.Is(EOutcome::Damaged) && !Connection->IsReadOnly());
			bWasInterrupted = Connection->WasInterruptedBySignal();
			if (Begun)
			{
				(void)Connection->Execute("ROLLBACK"); // Perhaps the library has done it.
			}
			if (!bIsOfUse)
			{
				Connection.reset();
			}
		}
		return Begun ? Explain(Result) : Result;
	}

	FOutcome FConversationStore::Explain(const FOutcome& Failure)
	{
		switch (Failure.GetCode())
		{
		case EOutcome::Damaged:
			bNeedsCheck = true;
			CheckSoon();
			return FOutcome(EOutcome::Damaged, DamagedProblem, GetPath());
		case EOutcome::Busy:
			return FOutcome(EOutcome::Busy, BusyProblem, GetPath());
		default:
			return FOutcome(Failure.Is(EOutcome::Missing) ? EOutcome::Failed : Failure.GetCode(),
				"The conversation store " + GetPath() + " cannot be used: " + Failure.GetWords() + ".", GetPath());
		}
	}

	bool FConversationStore::IsStillInPlace() const
	{
		return StoreFiles::GetFileNumber(GetPath()) == FileNumber;
	}

	FOutcome FConversationStore::Open(int32 TimeoutMilliseconds)
	{
		constexpr int MaxAttempts = 3;
		ON_SCOPE_EXIT
		{
			bIsOpening = false;
		};
		for (int Attempt = 0; Attempt < MaxAttempts; ++Attempt)
		{
			struct stat Status;
			if (stat(GetPath().c_str(), &Status) != 0)
			{
				const int Error = errno;
				Connection.reset();
				if (Error != ENOENT)
				{
					return Explain(FOutcome::FromSystem(Error));
				}
				bIsOpening = true;
				if (FOutcome Created = CreateFile(); !Created)
				{
					return Created;
				}
				continue;
			}
			if (Connection && FileNumber == static_cast<uint64>(Status.st_ino))
			{
				Connection->SetTimeout(TimeoutMilliseconds);
				return FOutcome::Done();
			}
			Connection.reset();
			bIsOpening = true;
			FileNumber = static_cast<uint64>(Status.st_ino);
			const TOutcome<EDamage> Connected = !S_ISREG(Status.st_mode) ? TOutcome<EDamage>(EDamage::Foreign)
				: Status.st_size == 0									 ? TOutcome<EDamage>(EDamage::Broken)
																		 : ConnectSurely(TimeoutMilliseconds);
			if (!Connected)
			{
				Connection.reset();
				return Connected;
			}
			if (*Connected == EDamage::None)
			{
				return FOutcome::Done();
			}
			Connection.reset();
			if (*Connected == EDamage::Newer && !bIsBeside)
			{
				GoBeside();
				continue;
			}
			if (FOutcome Aside = SetAside(*Connected); !Aside)
			{
				return Aside;
			}
			CheckSoon();
		}
		return FOutcome(EOutcome::Busy, BusyProblem, GetPath());
	}

	TOutcome<FConversationStore::EDamage> FConversationStore::ConnectSurely(int32 TimeoutMilliseconds)
	{
		TOutcome<EDamage> Connected = Connect(TimeoutMilliseconds);
		// A fault of the disk can look like damage once.
		return Connected && *Connected != EDamage::None ? Connect(TimeoutMilliseconds) : Connected;
	}

	TOutcome<FConversationStore::EDamage> FConversationStore::Connect(int32 TimeoutMilliseconds)
	{
		StoreFiles::MakePrivate(GetPath());
		Connection = std::make_unique<FSqliteConnection>();
		if (const FOutcome Opened = StoreSchema::Open(*Connection, GetPath(), ESqliteAccess::Write, TimeoutMilliseconds); !Opened)
		{
			return Opened.Is(EOutcome::Damaged) ? TOutcome<EDamage>(EDamage::Broken) : TOutcome<EDamage>(Explain(Opened));
		}
		constexpr int64 Unreadable = -1;
		const int64 Application = Connection->ReadInteger("PRAGMA application_id", Unreadable);
		int64 Version = Application == Unreadable ? Unreadable : StoreSchema::ReadVersion(*Connection);
		const bool bHasTables = Version != Unreadable && StoreSchema::HasTables(*Connection);
		if (bHasTables && Application == StoreSchema::ApplicationId && Version > 0 && Version < StoreSchema::Version)
		{
			if (const FOutcome Upgraded = StoreSchema::Upgrade(*Connection); !Upgraded)
			{
				return Explain(Upgraded);
			}
			Version = StoreSchema::Version;
		}
		if (bHasTables && Application == StoreSchema::ApplicationId && Version == StoreSchema::Version)
		{
			return EDamage::None;
		}
		if (!bHasTables && !Connection->IsDamaged() && !Connection->LacksTable())
		{
			return Explain(Connection->GetError());
		}
		if (Application == StoreSchema::ApplicationId)
		{
			return Version > StoreSchema::Version ? EDamage::Newer : EDamage::Broken;
		}
		return bHasTables || Version == Unreadable ? EDamage::Broken : EDamage::Foreign;
	}
}
