#include "Store/ConversationStore.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "Text/Utf8Text.h"
#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Misc/ScopeExit.h"
#include "Store/SqliteConnection.h"
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

		const TCHAR* const BusyProblem = TEXT("The conversation store is busy: another program is using it. Try again in a moment.");
		/** The store has one user at a time; on a slow disk the first opening, or a message of the agent's, can take longer than a frame
		 * may wait. */
		const TCHAR* const OccupiedProblem = TEXT("The conversation store is still at work on the disk. Try again in a moment.");
		const TCHAR* const DamagedProblem =
			TEXT("The conversation store is damaged. It is being set aside and what can be read is recovered. Try again in a moment.");

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

		FString DescribeSystemError(int Error)
		{
			return Utf8Text::ToString(strerror(Error));
		}
	}

	TSharedRef<FConversationStore> FConversationStore::GetDefault()
	{
		const FString Path = GetStoreLocation().GetDatabasePath();
		FDefaultStore& Default = GetDefaultStore();
		const std::scoped_lock Lock(Default.Mutex);
		TSharedPtr<FConversationStore> Known = Default.Store.Pin();
		if (!Known.IsValid() || !Known->Path.Equals(Path, ESearchCase::CaseSensitive))
		{
			Known = MakeShared<FConversationStore>(Path);
			Default.Store = Known;
		}
		return Known.ToSharedRef();
	}

	FConversationStore::FConversationStore(const FString& InPath)
		: Path(InPath)
		, PathBytes(HostFileNameToBytes(InPath))
	{
	}

	FConversationStore::~FConversationStore()
	{
		Close();
	}

	void FConversationStore::Close()
	{
		const FTurn Turn(*this, WorkerPatienceMilliseconds);
		if (Turn.IsMine() && Connection)
		{
			Connection->SetPatience(FramePatienceMilliseconds);
			Connection->Checkpoint(true);
			Connection.reset();
		}
	}

	EStoreResult FConversationStore::Append(FConversationMetadata& InOutConversation, int32 First, FString& OutProblem)
	{
		const FDateTime Now = FDateTime::UtcNow();
		const EStoreResult Result = Run(EAccess::Write, FramePatienceMilliseconds, OutProblem,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				const StoreSchema::EFound Found = StoreSchema::FindConversation(Database, InOutConversation.Id, Row);
				if (Found == StoreSchema::EFound::Failed || Found == StoreSchema::EFound::Damaged)
				{
					bHasFoundRot = Found == StoreSchema::EFound::Damaged;
					return EStoreResult::Failed;
				}
				const bool bIsNew = Found == StoreSchema::EFound::No;
				const int32 Start = bIsNew ? 0 : First;
				Row.Mode = static_cast<int64>(InOutConversation.Mode);
				Row.Updated = Now.GetTicks();
				Row.Opening = StoreSchema::MakeOpening(InOutConversation.Messages);
				if (bIsNew)
				{
					Row.Id = StoreSchema::EncodeId(InOutConversation.Id);
				}
				if (!(bIsNew ? StoreSchema::InsertConversation(Database, Row) : StoreSchema::UpdateConversation(Database, Row)))
				{
					return EStoreResult::Failed;
				}
				for (int32 Index = Start; Index < InOutConversation.Messages.Num(); ++Index)
				{
					int64 Key = 0;
					if (!StoreSchema::AddMessage(Database, Row.Number, InOutConversation.Messages[Index], Key))
					{
						return EStoreResult::Failed;
					}
				}
				return EStoreResult::Done;
			});
		if (Result == EStoreResult::Done)
		{
			InOutConversation.LastUpdated = StoreSchema::ToLocalTime(Now.GetTicks());
		}
		return Result;
	}

	EStoreResult FConversationStore::AppendMessage(
		const FString& Id, const FConversationMessage& Message, int64& OutKey, FString& OutProblem)
	{
		return Run(EAccess::Write, WorkerPatienceMilliseconds, OutProblem,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				const StoreSchema::EFound Found = StoreSchema::FindConversation(Database, Id, Row);
				if (Found != StoreSchema::EFound::Yes)
				{
					bHasFoundRot = Found == StoreSchema::EFound::Damaged;
					return Found == StoreSchema::EFound::No ? EStoreResult::Missing : EStoreResult::Failed;
				}
				Row.Updated = FDateTime::UtcNow().GetTicks();
				return StoreSchema::UpdateConversation(Database, Row) && StoreSchema::AddMessage(Database, Row.Number, Message, OutKey)
					? EStoreResult::Done
					: EStoreResult::Failed;
			});
	}

	EStoreResult FConversationStore::Withdraw(const FString& Id, int64 Key, FString& OutProblem)
	{
		return Run(EAccess::Write, FramePatienceMilliseconds, OutProblem,
			[&](FSqliteConnection& Database)
			{
				// Deleted meanwhile, its number may belong to another conversation.
				StoreSchema::FConversationRow Row;
				const StoreSchema::EFound Found = StoreSchema::FindConversation(Database, Id, Row);
				if (Found != StoreSchema::EFound::Yes || Row.Number != StoreSchema::GetNumber(Key))
				{
					return Found == StoreSchema::EFound::Failed ? EStoreResult::Failed : EStoreResult::Missing;
				}
				return StoreSchema::DeleteMessage(Database, Key) ? EStoreResult::Done : EStoreResult::Failed;
			});
	}

	EStoreResult FConversationStore::TruncateMessages(const FString& Id, int32 KeepCount, FString& OutProblem)
	{
		return Truncate(Id, KeepCount, nullptr, FramePatienceMilliseconds, OutProblem);
	}

	EStoreResult FConversationStore::TruncateMessagesIf(
		const FString& Id, int32 KeepCount, const TFunction<bool(const TArray<FConversationMessage>&)>& MayDrop, FString& OutProblem)
	{
		return Truncate(Id, KeepCount, MayDrop, WorkerPatienceMilliseconds, OutProblem);
	}

	EStoreResult FConversationStore::Truncate(const FString& Id, int32 KeepCount,
		const TFunction<bool(const TArray<FConversationMessage>&)>& MayDrop, int32 PatienceMilliseconds, FString& OutProblem)
	{
		return Run(EAccess::Write, PatienceMilliseconds, OutProblem,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				const StoreSchema::EFound Found = StoreSchema::FindConversation(Database, Id, Row);
				if (Found != StoreSchema::EFound::Yes)
				{
					bHasFoundRot = Found == StoreSchema::EFound::Damaged;
					return Found == StoreSchema::EFound::No ? EStoreResult::Missing : EStoreResult::Failed;
				}
				if (MayDrop)
				{
					TArray<FConversationMessage> Messages;
					const StoreSchema::EFound Read = StoreSchema::ReadMessages(Database, Row.Number, -1, Messages);
					bHasFoundRot = Read == StoreSchema::EFound::Damaged;
					if (Read != StoreSchema::EFound::Yes || !MayDrop(Messages))
					{
						return Read == StoreSchema::EFound::Yes ? EStoreResult::Missing : EStoreResult::Failed;
					}
				}
				if (KeepCount <= 0)
				{
					return StoreSchema::DeleteConversation(Database, Row.Number) ? EStoreResult::Done : EStoreResult::Failed;
				}
				TArray<FConversationMessage> Head;
				if (!StoreSchema::DeleteMessagesBehind(Database, Row.Number, KeepCount) ||
					StoreSchema::ReadMessages(Database, Row.Number, StoreSchema::MaxOpeningMessages, Head) != StoreSchema::EFound::Yes)
				{
					return EStoreResult::Failed;
				}
				Row.Opening = StoreSchema::MakeOpening(Head);
				Row.Updated = FDateTime::UtcNow().GetTicks();
				return StoreSchema::UpdateConversation(Database, Row) ? EStoreResult::Done : EStoreResult::Failed;
			});
	}

	EStoreResult FConversationStore::Load(const FString& Id, FConversationMetadata& OutConversation, FString& OutProblem)
	{
		return Run(EAccess::Read, FramePatienceMilliseconds, OutProblem,
			[&](FSqliteConnection& Database)
			{
				StoreSchema::FConversationRow Row;
				StoreSchema::EFound Found = StoreSchema::FindConversation(Database, Id, Row);
				if (Found == StoreSchema::EFound::Yes)
				{
					OutConversation = StoreSchema::ToMetadata(Row);
					Found = StoreSchema::ReadMessages(Database, Row.Number, -1, OutConversation.Messages);
				}
				bHasFoundRot = Found == StoreSchema::EFound::Damaged;
				return Found == StoreSchema::EFound::Yes ? EStoreResult::Done
					: Found == StoreSchema::EFound::No	 ? EStoreResult::Missing
														 : EStoreResult::Failed;
			});
	}

	EStoreResult FConversationStore::Delete(const FString& Id, FString& OutProblem)
	{
		return TruncateMessages(Id, 0, OutProblem);
	}

	EStoreResult FConversationStore::Clear(FString& OutProblem)
	{
		return Run(EAccess::Write, FramePatienceMilliseconds, OutProblem,
			[](FSqliteConnection& Database) { return StoreSchema::DeleteAll(Database) ? EStoreResult::Done : EStoreResult::Failed; });
	}

	EStoreResult FConversationStore::GetSummaries(TArray<FConversationMetadata>& OutSummaries, FString& OutProblem)
	{
		return Run(EAccess::Read, FramePatienceMilliseconds, OutProblem,
			[&](FSqliteConnection& Database)
			{
				const StoreSchema::EFound Found = StoreSchema::ReadSummaries(Database, OutSummaries);
				bHasFoundRot = Found == StoreSchema::EFound::Damaged;
				return Found == StoreSchema::EFound::Yes ? EStoreResult::Done : EStoreResult::Failed;
			});
	}

	bool FConversationStore::ReadSummaries(const FString& Path, TArray<FConversationMetadata>& OutSummaries, bool& bOutIsDamaged)
	{
		bOutIsDamaged = false;
		const std::string Bytes = HostFileNameToBytes(Path);
		struct stat Status;
		if (stat(Bytes.c_str(), &Status) != 0)
		{
			return errno == ENOENT;
		}
		if (!S_ISREG(Status.st_mode) || Status.st_size == 0)
		{
			bOutIsDamaged = true;
			return false;
		}
		FSqliteConnection Database;
		if (Database.Open(Bytes, true))
		{
			Database.SetPatience(WorkerPatienceMilliseconds);
			if (Database.ReadInteger("PRAGMA application_id", 0) == StoreSchema::ApplicationId &&
				Database.ReadInteger("PRAGMA user_version", 0) == StoreSchema::Version)
			{
				const StoreSchema::EFound Found = StoreSchema::ReadSummaries(Database, OutSummaries);
				bOutIsDamaged = Found == StoreSchema::EFound::Damaged || (Found == StoreSchema::EFound::Failed && Database.IsDamaged());
				return Found == StoreSchema::EFound::Yes;
			}
			bOutIsDamaged = !Database.IsBusy();
			return false;
		}
		bOutIsDamaged = Database.IsDamaged();
		return false;
	}

	EStoreResult FConversationStore::Run(
		EAccess Access, int32 PatienceMilliseconds, FString& OutProblem, const TFunction<EStoreResult(FSqliteConnection&)>& Work)
	{
		OutProblem.Empty();
		const FTurn Turn(*this, PatienceMilliseconds);
		if (!Turn.IsMine())
		{
			OutProblem = OccupiedProblem;
			return EStoreResult::Failed;
		}
		bool bHasBegun = false;
		for (int Attempt = 0; Attempt < 3 && !bHasBegun; ++Attempt)
		{
			if (!Open(Turn.GetMilliseconds(), OutProblem))
			{
				return EStoreResult::Failed;
			}
			if (!Connection->Execute(Access == EAccess::Write ? "BEGIN IMMEDIATE" : "BEGIN"))
			{
				break;
			}
			// Another program may have set the file aside until we had the lock: what is written to it now would be lost.
			bHasBegun = Access == EAccess::Read || IsStillInPlace();
			if (!bHasBegun)
			{
				Connection.reset();
			}
		}
		bHasFoundRot = false;
		EStoreResult Result = bHasBegun ? Work(*Connection) : EStoreResult::Failed;
		if (Result != EStoreResult::Failed && Connection->Execute(Result == EStoreResult::Done ? "COMMIT" : "ROLLBACK"))
		{
			const int32 MaxPages = PatienceMilliseconds > FramePatienceMilliseconds ? PagesBeforeCheckpoint : MaxWaitingPages;
			if (Connection->GetWaitingPages() > MaxPages)
			{
				Connection->Checkpoint(false);
			}
			return Result;
		}
		OutProblem = Connection ? Explain(*Connection) : FString(BusyProblem);
		// A commit whose flush failed may be complete in the log: this connection overwrites it next, a new one would
		// take it for done. So it stays, unless it cannot even begin.
		if (Connection)
		{
			const bool bIsOfUse =
				Connection->IsBusy() || (bHasBegun && !bHasFoundRot && !Connection->IsDamaged() && !Connection->IsReadOnly());
			if (bHasBegun)
			{
				Connection->Execute("ROLLBACK");
			}
			if (!bIsOfUse)
			{
				Connection.reset();
			}
		}
		return EStoreResult::Failed;
	}

	FString FConversationStore::Explain(const FSqliteConnection& Failed)
	{
		if (bHasFoundRot || Failed.IsDamaged())
		{
			bNeedsCheck = true;
			CheckSoon();
			return DamagedProblem;
		}
		if (Failed.IsBusy())
		{
			return BusyProblem;
		}
		return FString(TEXT("The conversation store ")) + Path + TEXT(" cannot be used: ") + Failed.DescribeError() + TEXT(".");
	}

	bool FConversationStore::IsStillInPlace() const
	{
		return StoreFiles::GetFileNumber(PathBytes) == FileNumber;
	}

	bool FConversationStore::Open(int32 PatienceMilliseconds, FString& OutProblem)
	{
		constexpr int MaxAttempts = 3;
		ON_SCOPE_EXIT
		{
			bIsOpening = false;
		};
		for (int Attempt = 0; Attempt < MaxAttempts; ++Attempt)
		{
			struct stat Status;
			if (stat(PathBytes.c_str(), &Status) != 0)
			{
				const int Error = errno;
				Connection.reset();
				if (Error != ENOENT)
				{
					OutProblem = FString(TEXT("The conversation store ")) + Path + TEXT(" cannot be used: ") + DescribeSystemError(Error) +
						TEXT(".");
					return false;
				}
				bIsOpening = true;
				if (!CreateFile(OutProblem))
				{
					return false;
				}
				continue;
			}
			if (Connection && FileNumber == static_cast<uint64>(Status.st_ino))
			{
				Connection->SetPatience(PatienceMilliseconds);
				return true;
			}
			Connection.reset();
			bIsOpening = true;
			EDamage Damage = EDamage::None;
			if (!S_ISREG(Status.st_mode))
			{
				Damage = EDamage::Foreign;
			}
			else if (Status.st_size == 0)
			{
				Damage = EDamage::Broken;
			}
			else
			{
				FileNumber = static_cast<uint64>(Status.st_ino);
				Damage = Connect(PatienceMilliseconds, OutProblem);
				if (Damage != EDamage::None && OutProblem.IsEmpty())
				{
					Damage = Connect(PatienceMilliseconds, OutProblem); // A fault of the disk can look like damage once.
				}
				if (!OutProblem.IsEmpty())
				{
					Connection.reset();
					return false;
				}
			}
			if (Damage == EDamage::None)
			{
				return true;
			}
			Connection.reset();
			FileNumber = static_cast<uint64>(Status.st_ino);
			if (!SetAside(Damage, OutProblem))
			{
				return false;
			}
			CheckSoon();
		}
		OutProblem = BusyProblem;
		return false;
	}

	FConversationStore::EDamage FConversationStore::Connect(int32 PatienceMilliseconds, FString& OutProblem)
	{
		Connection = std::make_unique<FSqliteConnection>();
		if (!Connection->Open(PathBytes, false))
		{
			if (!Connection->IsDamaged())
			{
				OutProblem = Explain(*Connection);
			}
			return EDamage::Broken;
		}
		Connection->SetPatience(PatienceMilliseconds);
		constexpr int64 Unreadable = -1;
		const int64 Application = Connection->ReadInteger("PRAGMA application_id", Unreadable);
		const int64 Version = Application == Unreadable ? Unreadable : Connection->ReadInteger("PRAGMA user_version", Unreadable);
		const bool bHasTables = Version != Unreadable && StoreSchema::HasTables(*Connection);
		if (bHasTables && Application == StoreSchema::ApplicationId && Version == StoreSchema::Version)
		{
			return EDamage::None;
		}
		if (!bHasTables && !Connection->IsDamaged() && !Connection->LacksTable())
		{
			OutProblem = Explain(*Connection);
			return EDamage::Broken;
		}
		if (Application == StoreSchema::ApplicationId)
		{
			return Version > StoreSchema::Version ? EDamage::Newer : EDamage::Broken;
		}
		return bHasTables || Version == Unreadable ? EDamage::Broken : EDamage::Foreign;
	}
}
