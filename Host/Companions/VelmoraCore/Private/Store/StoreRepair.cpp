#include "Store/ConversationStore.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Text/Utf8Text.h"
#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Store/SqliteConnection.h"
#include "Store/StoreFiles.h"
#include "Store/StoreNotices.h"
#include "Store/StoreSalvage.h"
#include "Store/StoreSchema.h"
#include "Store/StoreTurn.h"

// A store is made, and one that cannot be used is replaced, so that at any moment the file of its name is whole:
// the new file is completed beside it under the name "….new" and then renamed. When the one before is set aside, the new
// one already names it as still to be recovered, and a start that finds no store takes a complete "….new" over.

namespace Velmora
{
	namespace
	{
		constexpr const char* NewSuffix = ".new";

		/** Recovered conversations go into the store in transactions of about this size, so that others can write in between. */
		constexpr int64 RecoveredUnitsPerTransaction = 500'000;

		/** A little more than the log takes until a worker empties it. */
		constexpr int64 ReservedLogBytes = 4'500'000;

		FString DescribeFailure(const TCHAR* What, int Error)
		{
			return FString(What) + TEXT(": ") + Utf8Text::ToString(strerror(Error)) + TEXT(".");
		}

		FString DescribeUnmade(const std::string& Path, const std::string& Reason)
		{
			return Utf8Text::ToString("The conversation store " + Path + " cannot be made: " + Reason + ".");
		}

		/** @param OutPending  The file that it is to recover from, empty without one. */
		bool IsComplete(const std::string& Path, std::string& OutPending)
		{
			bool bIsComplete = false;
			{
				FSqliteConnection Database;
				bIsComplete = Database.Open(Path, false) &&
					Database.ReadInteger("PRAGMA application_id", 0) == StoreSchema::ApplicationId &&
					Database.ReadInteger("PRAGMA user_version", 0) == StoreSchema::Version && StoreSchema::HasTables(Database);
				FSqliteQuery Query = Database.Query("SELECT file FROM recoveries");
				if (bIsComplete && Query.Next())
				{
					OutPending = Query.GetBytes(0);
				}
			}
			StoreFiles::RemoveCompanions(Path);
			return bIsComplete;
		}

		/** A store without conversations, which remembers one to recover from if Pending is not empty. */
		bool MakeEmptyStore(const std::string& Path, const std::string& Pending, int64 Damage, FString& OutProblem)
		{
			StoreFiles::Remove(Path);
			if (!StoreFiles::CreateEmpty(Path))
			{
				OutProblem = DescribeUnmade(Path, strerror(errno));
				return false;
			}
			bool bIsMade = false;
			{
				FSqliteConnection Database;
				bIsMade = Database.Open(Path, false) && StoreSchema::Create(Database) &&
					(Pending.empty() ||
						Database.Query("INSERT INTO recoveries(file, damage) VALUES(?, ?)").BindText(Pending).Bind(Damage).Finish()) &&
					Database.Execute("PRAGMA journal_mode=WAL");
				if (!bIsMade)
				{
					OutProblem = DescribeUnmade(Path, Utf8Text::FromString(Database.DescribeError()));
				}
			}
			if (!bIsMade)
			{
				StoreFiles::Remove(Path);
			}
			// The log is empty yet; under the final name it would be in the way of another program's.
			StoreFiles::RemoveCompanions(Path);
			return bIsMade;
		}

		/** 32 digits like those of any conversation; the same each time, so that a recovery that was cut off does not add it twice. */
		std::string MakeRecoveredId(const std::string& Name, int64 Number)
		{
			const uint64 Hash = StoreSchema::HashConversation(Number, Name, 0, 0, std::string_view());
			char Digits[33];
			snprintf(
				Digits, sizeof(Digits), "%016llX%016llX", static_cast<unsigned long long>(Hash), static_cast<unsigned long long>(Number));
			return Digits;
		}

		/** @param Damage  See FConversationStore::EDamage. */
		const TCHAR* DescribeDamage(int64 Damage)
		{
			return Damage == 3 ? TEXT("The conversation store was written by a later version of this program.")
				: Damage == 2  ? TEXT("The file of the conversation store belongs to another program.")
							   : TEXT("The conversation store was damaged.");
		}
	}

	bool FConversationStore::CreateFile(FString& OutProblem)
	{
		const std::string Folder = StoreFiles::GetFolder(PathBytes);
		if (!MakePrivateFolder(HostFileNameFromBytes(Folder), OutProblem))
		{
			return false;
		}
		const StoreFiles::FFolderLock Lock(Folder, FramePatienceMilliseconds);
		if (!Lock.IsHeld())
		{
			OutProblem = Lock.GetError() == 0
				? FString(TEXT("The conversation store is busy: another program makes it just now. Try again in a moment."))
				: DescribeFailure(TEXT("The folder of the conversation store cannot be used"), Lock.GetError());
			return false;
		}
		if (StoreFiles::GetFileNumber(PathBytes) != 0)
		{
			return true;
		}
		const std::string NewPath = PathBytes + NewSuffix;
		std::string Pending;
		const bool bIsTakenOver = StoreFiles::GetFileNumber(NewPath) != 0 && IsComplete(NewPath, Pending);
		if (!bIsTakenOver && !MakeEmptyStore(NewPath, std::string(), 0, OutProblem))
		{
			return false;
		}
		// What a store that is gone has left behind must not be taken for the log of the new one.
		StoreFiles::RenameCompanions(PathBytes, Pending.empty() ? StoreFiles::MakeAsideName(PathBytes, "left") : Folder + '/' + Pending);
		if (rename(NewPath.c_str(), PathBytes.c_str()) != 0 || !Lock.Flush())
		{
			OutProblem = DescribeUnmade(PathBytes, strerror(errno));
			return false;
		}
		StoreFiles::FlushFolder(StoreFiles::GetFolder(Folder)); // Where the store's folder may be new.
		if (bIsTakenOver)
		{
			CheckSoon();
		}
		return true;
	}

	bool FConversationStore::SetAside(EDamage Damage, FString& OutProblem)
	{
		const StoreFiles::FFolderLock Lock(StoreFiles::GetFolder(PathBytes), FramePatienceMilliseconds);
		if (!Lock.IsHeld())
		{
			OutProblem = TEXT("The conversation store is damaged and cannot be set aside just now. Try again in a moment.");
			return false;
		}
		if (!IsStillInPlace())
		{
			return true; // Another program was quicker.
		}
		// As long as we could write, nobody else does: whoever waits finds another file afterwards (see Run).
		FSqliteConnection Guard;
		struct stat Status;
		if (stat(PathBytes.c_str(), &Status) == 0 && S_ISREG(Status.st_mode) && Status.st_size > 0 && Guard.Open(PathBytes, false))
		{
			Guard.SetPatience(FramePatienceMilliseconds);
			if (!Guard.Execute("BEGIN IMMEDIATE") && Guard.IsBusy())
			{
				OutProblem = TEXT("The conversation store is damaged and another program is using it. Try again in a moment.");
				return false;
			}
		}
		const std::string NewPath = PathBytes + NewSuffix;
		const std::string AsidePath = StoreFiles::MakeAsideName(PathBytes,
			Damage == EDamage::Broken	   ? "damaged"
				: Damage == EDamage::Newer ? "newer"
										   : "foreign");
		if (!MakeEmptyStore(NewPath, StoreFiles::GetName(AsidePath), static_cast<int64>(Damage), OutProblem))
		{
			return false;
		}
		if (!StoreFiles::Rename(PathBytes, AsidePath) || rename(NewPath.c_str(), PathBytes.c_str()) != 0 || !Lock.Flush())
		{
			OutProblem = DescribeFailure(TEXT("The conversation store is damaged and cannot be set aside"), errno);
			return false;
		}
		return true;
	}

	void FConversationStore::CheckSoon()
	{
		bStopsChecking = false;
		if (!bIsCheckComing.exchange(true))
		{
			AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask, [Self = AsShared()] { Self->Check(); });
		}
	}

	void FConversationStore::Check()
	{
		const std::scoped_lock Lock(CheckMutex);
		bIsCheckComing = false;
		FString Problem;
		if (Run(EAccess::Read, WorkerPatienceMilliseconds, Problem, [](FSqliteConnection&) { return EStoreResult::Done; }) !=
			EStoreResult::Done)
		{
			return;
		}
		ReserveLog();
		if (bNeedsCheck.exchange(false) || !bIsChecked)
		{
			const uint64 CheckedFile = StoreFiles::GetFileNumber(PathBytes);
			EVerdict Verdict = CheckWholeFile();
			if (Verdict == EVerdict::Damaged)
			{
				Verdict = CheckWholeFile(); // A fault of the disk can look like damage once.
			}
			bIsChecked = Verdict == EVerdict::Sound;
			if (Verdict == EVerdict::Damaged)
			{
				const FTurn Turn(*this, WorkerPatienceMilliseconds);
				if (Turn.IsMine() && StoreFiles::GetFileNumber(PathBytes) == CheckedFile)
				{
					Connection.reset();
					FileNumber = CheckedFile;
					bIsChecked = SetAside(EDamage::Broken, Problem);
				}
			}
		}
		RecoverPending();
	}

	void FConversationStore::ReserveLog()
	{
		const std::string LogPath = PathBytes + "-wal";
		const std::vector<char> Zeros(ReservedLogBytes / 16);
		int Log = -1;
		bool bIsLong = false;
		while (!bIsLong && !bStopsChecking)
		{
			LetOthersGoFirst();
			bIsLong = true;
			FString Problem;
			// Zeros at the end of the log mean nothing to readers. The lock keeps them from falling on what others write.
			Run(EAccess::Write, WorkerPatienceMilliseconds, Problem,
				[&](FSqliteConnection&)
				{
					struct stat Status;
					Log = Log >= 0 ? Log : open(LogPath.c_str(), O_WRONLY | O_CLOEXEC);
					if (Log >= 0 && fstat(Log, &Status) == 0 && Status.st_size < ReservedLogBytes)
					{
						// Without the room the log grows as it is written, as it would have done.
						bIsLong = pwrite(Log, Zeros.data(), Zeros.size(), Status.st_size) <= 0;
					}
					return EStoreResult::Missing;
				});
		}
		if (Log >= 0)
		{
			fdatasync(Log);
			close(Log);
		}
	}

	void FConversationStore::LetOthersGoFirst() const
	{
		constexpr int MaxMilliseconds = 100;
		for (int Passed = 0; Passed < MaxMilliseconds && WaitingCount > 0; ++Passed)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(1));
		}
	}

	FConversationStore::EVerdict FConversationStore::CheckWholeFile() const
	{
		FSqliteConnection Database;
		if (!Database.Open(PathBytes, true))
		{
			return Database.IsDamaged() ? EVerdict::Damaged : EVerdict::Unknown;
		}
		Database.SetPatience(WorkerPatienceMilliseconds);
		Database.SetStopCheck([](const void* Stops) { return static_cast<const std::atomic<bool>*>(Stops)->load(); }, &bStopsChecking);
		{
			FSqliteQuery Query = Database.Query("PRAGMA quick_check(1)");
			if (!Query.Next())
			{
				return Database.IsDamaged() ? EVerdict::Damaged : EVerdict::Unknown;
			}
			if (Query.GetBytes(0) != "ok")
			{
				return EVerdict::Damaged;
			}
		}
		const StoreSchema::EFound Found = StoreSchema::VerifyRows(Database);
		const bool bIsDamaged = Found == StoreSchema::EFound::Damaged || (Found == StoreSchema::EFound::Failed && Database.IsDamaged());
		return bIsDamaged ? EVerdict::Damaged : Found == StoreSchema::EFound::Yes ? EVerdict::Sound : EVerdict::Unknown;
	}

	void FConversationStore::RecoverPending()
	{
		while (!bStopsChecking)
		{
			std::string Name;
			int64 Damage = 0;
			FString Problem;
			const EStoreResult Result = Run(EAccess::Read, WorkerPatienceMilliseconds, Problem,
				[&Name, &Damage](FSqliteConnection& Database)
				{
					FSqliteQuery Query = Database.Query("SELECT file, damage FROM recoveries LIMIT 1");
					if (!Query.Next())
					{
						return Query.HasFailed() ? EStoreResult::Failed : EStoreResult::Missing;
					}
					Name = Query.GetBytes(0);
					Damage = Query.GetInteger(1);
					return EStoreResult::Done;
				});
			if (Result != EStoreResult::Done || !RecoverFile(Name, static_cast<EDamage>(Damage)))
			{
				return;
			}
		}
	}

	bool FConversationStore::RecoverFile(const std::string& Name, EDamage Damage)
	{
		const std::string AsidePath = StoreFiles::GetFolder(PathBytes) + '/' + Name;
		FStoreSalvage Salvage(AsidePath);
		std::vector<int64> Numbers;
		// A later version may mean something else by the same rows.
		if (Damage != EDamage::Newer && Salvage.Scan(bStopsChecking))
		{
			Numbers = Salvage.GetNumbers();
		}
		struct stat Status;
		const FDateTime FileTime =
			stat(AsidePath.c_str(), &Status) == 0 ? FDateTime::FromUnixTimestamp(Status.st_mtime) : FDateTime::UtcNow();
		FString Problem;
		int32 RecoveredCount = 0;
		for (size_t Next = 0; Next < Numbers.size();)
		{
			if (bStopsChecking)
			{
				return false;
			}
			LetOthersGoFirst();
			size_t End = Next;
			int32 Added = 0;
			const EStoreResult Result = Run(EAccess::Write, WorkerPatienceMilliseconds, Problem,
				[&](FSqliteConnection& Database)
				{
					End = Next;
					Added = 0;
					for (int64 Units = 0; End < Numbers.size() && Units < RecoveredUnitsPerTransaction; ++End)
					{
						StoreSchema::FConversationRow Row;
						TArray<FConversationMessage> Messages;
						Salvage.Read(Numbers[End], Row, Messages);
						if (Row.Id.empty())
						{
							Row.Id = MakeRecoveredId(Name, Numbers[End]);
							Row.Mode = static_cast<int64>(EConversationMode::General);
							Row.Updated = FileTime.GetTicks();
						}
						StoreSchema::FConversationRow Known;
						const StoreSchema::EFound Found = StoreSchema::FindConversation(Database, Utf8Text::ToString(Row.Id), Known);
						if (Found == StoreSchema::EFound::Yes || Messages.Num() == 0)
						{
							continue;
						}
						Row.Opening = StoreSchema::MakeOpening(Messages);
						if (Found != StoreSchema::EFound::No || !StoreSchema::InsertConversation(Database, Row))
						{
							return EStoreResult::Failed;
						}
						for (const FConversationMessage& Message : Messages)
						{
							int64 Key = 0;
							if (!StoreSchema::AddMessage(Database, Row.Number, Message, Key))
							{
								return EStoreResult::Failed;
							}
							Units += Message.Content.Len() + 100;
						}
						++Added;
					}
					return EStoreResult::Done;
				});
			if (Result != EStoreResult::Done)
			{
				StoreNotices::Add(FString(DescribeDamage(static_cast<int64>(Damage))) + TEXT(" It is kept as ") +
					HostFileNameFromBytes(AsidePath) + TEXT(". What can be read of it could not be taken over yet: ") + Problem +
					TEXT(" This is tried again at the next start."));
				return false;
			}
			RecoveredCount += Added;
			Next = End;
		}
		if (bStopsChecking ||
			Run(EAccess::Write, WorkerPatienceMilliseconds, Problem,
				[&Name](FSqliteConnection& Database) {
					return Database.Query("DELETE FROM recoveries WHERE file=?").BindText(Name).Finish() ? EStoreResult::Done
																										 : EStoreResult::Failed;
				}) != EStoreResult::Done)
		{
			return false;
		}
		const FString What = Damage != EDamage::Broken ? FString(TEXT("A new store begins."))
			: RecoveredCount == 0
			? FString(TEXT("Nothing could be recovered from it; a new store begins."))
			: Utf8Text::ToString(
				  Utf8Text::Count(static_cast<size_t>(RecoveredCount), "conversation was", "conversations were") + " recovered from it.");
		StoreNotices::Add(FString(DescribeDamage(static_cast<int64>(Damage))) + TEXT(" The old file is kept as ") +
			HostFileNameFromBytes(AsidePath) + TEXT(". ") + What);
		return true;
	}
}
