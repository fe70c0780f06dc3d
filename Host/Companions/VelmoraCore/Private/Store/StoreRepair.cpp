#include "Store/ConversationStore.h"

#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Text/Utf8Text.h"
#include "Async/Async.h"
#include "Host/FileDescriptor.h"
#include "Host/FolderLock.h"
#include "Host/HostFileNames.h"
#include "Host/HostSystemErrors.h"
#include "Host/Sqlite.h"
#include "Host/StoreLocation.h"
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

		FOutcome ExplainUnmade(const std::string& Path, const FOutcome& Failure)
		{
			return Failure.Explain("The conversation store " + Path + " cannot be made");
		}

		/** @param OutPending  The file that it is to recover from, empty without one. */
		bool IsComplete(const std::string& Path, std::string& OutPending)
		{
			bool bIsComplete = false;
			{
				FSqliteConnection Database;
				bIsComplete = StoreSchema::Open(Database, Path, ESqliteAccess::Write, 0) &&
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

		FOutcome FillEmptyStore(const std::string& Path, const std::string& Pending, int64 Damage)
		{
			FSqliteConnection Database;
			FOutcome Step = StoreSchema::Open(Database, Path, ESqliteAccess::Write, 0);
			Step = Step ? StoreSchema::Create(Database) : Step;
			if (Step && !Pending.empty())
			{
				Step = Database.Query("INSERT INTO recoveries(file, damage) VALUES(?, ?)").BindText(Pending).Bind(Damage).Finish();
			}
			return Step ? Database.Execute("PRAGMA journal_mode=WAL") : Step;
		}

		/** A store without conversations, which remembers one to recover from if Pending is not empty. */
		FOutcome MakeEmptyStore(const std::string& Path, const std::string& Pending, int64 Damage)
		{
			StoreFiles::Remove(Path);
			FOutcome Made = StoreFiles::CreateEmpty(Path);
			if (Made)
			{
				Made = FillEmptyStore(Path, Pending, Damage);
				if (!Made)
				{
					StoreFiles::Remove(Path);
				}
			}
			// The log is empty yet; under the final name it would be in the way of another program's.
			StoreFiles::RemoveCompanions(Path);
			return Made ? Made : ExplainUnmade(Path, Made);
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

		/** The last of a disk is for what is said and done, here and by everybody else. */
		bool HasRoomToSpare(const FFileDescriptor& File)
		{
			constexpr uint64 Spare = 64 << 20;
			struct statvfs Disk;
			return HostRetryInterrupted([&] { return fstatvfs(File.Get(), &Disk); }) == 0 &&
				static_cast<uint64>(Disk.f_bavail) * Disk.f_frsize > Spare;
		}

		/** @param Damage  See FConversationStore::EDamage. */
		std::string DescribeDamage(int64 Damage)
		{
			return Damage == 4 ? "Conversations had been kept in another store for a time."
				: Damage == 3  ? "The conversation store was written by a later version of this program."
				: Damage == 2  ? "The file of the conversation store belongs to another program."
							   : "The conversation store was damaged.";
		}
	}

	FOutcome FConversationStore::CreateFile()
	{
		const std::string Folder = StoreFiles::GetFolder(GetPath());
		if (FOutcome Made = MakePrivateFolder(HostFileNameFromBytes(Folder)); !Made)
		{
			return Made;
		}
		const FFolderLock Lock(Folder, FrameTimeoutMilliseconds);
		if (Lock.GetOutcome().Is(EOutcome::Busy))
		{
			return FOutcome(
				EOutcome::Busy, "The conversation store is busy: another program makes it just now. Try again in a moment.", GetPath());
		}
		if (!Lock.GetOutcome())
		{
			return Lock.GetOutcome().Explain("The folder of the conversation store cannot be used");
		}
		if (StoreFiles::GetFileNumber(GetPath()) != 0)
		{
			return FOutcome::Done();
		}
		const std::string NewPath = GetPath() + NewSuffix;
		std::string Pending;
		const bool bIsTakenOver = StoreFiles::GetFileNumber(NewPath) != 0 && IsComplete(NewPath, Pending);
		if (FOutcome Made = bIsTakenOver ? FOutcome::Done() : MakeEmptyStore(NewPath, std::string(), 0); !Made)
		{
			return Made;
		}
		// What a store that is gone has left behind must not be taken for the log of the new one.
		StoreFiles::RenameCompanions(GetPath(), Pending.empty() ? StoreFiles::MakeAsideName(GetPath(), "left") : Folder + '/' + Pending);
		FOutcome Placed = StoreFiles::Move(NewPath, GetPath());
		Placed = Placed ? Lock.Flush() : Placed;
		if (!Placed)
		{
			return ExplainUnmade(GetPath(), Placed);
		}
		StoreFiles::FlushFolder(StoreFiles::GetFolder(Folder)); // Where the store's folder may be new.
		if (bIsTakenOver)
		{
			CheckSoon();
		}
		return FOutcome::Done();
	}

	FOutcome FConversationStore::SetAside(EDamage Damage)
	{
		const FFolderLock Lock(StoreFiles::GetFolder(GetPath()), FrameTimeoutMilliseconds);
		if (!Lock.GetOutcome())
		{
			return FOutcome(
				EOutcome::Busy, "The conversation store is damaged and cannot be set aside just now. Try again in a moment.", GetPath());
		}
		if (!IsStillInPlace())
		{
			return FOutcome::Done(); // Another program was quicker.
		}
		// As long as we could write, nobody else does: whoever waits finds another file afterwards (see Begin).
		FSqliteConnection Guard;
		struct stat Status;
		if (stat(GetPath().c_str(), &Status) == 0 && S_ISREG(Status.st_mode) && Status.st_size > 0)
		{
			const FOutcome Opened = StoreSchema::Open(Guard, GetPath(), ESqliteAccess::Write, FrameTimeoutMilliseconds);
			if ((Opened ? Guard.Execute("BEGIN IMMEDIATE") : Opened).Is(EOutcome::Busy))
			{
				return FOutcome(
					EOutcome::Busy, "The conversation store is damaged and another program is using it. Try again in a moment.", GetPath());
			}
		}
		const std::string NewPath = GetPath() + NewSuffix;
		const std::string AsidePath = StoreFiles::MakeAsideName(GetPath(),
			Damage == EDamage::Broken	   ? "damaged"
				: Damage == EDamage::Newer ? "newer"
										   : "foreign");
		if (FOutcome Made = MakeEmptyStore(NewPath, StoreFiles::GetName(AsidePath), static_cast<int64>(Damage)); !Made)
		{
			return Made;
		}
		FOutcome Step = StoreFiles::Rename(GetPath(), AsidePath);
		Step = Step ? StoreFiles::Move(NewPath, GetPath()) : Step;
		Step = Step ? Lock.Flush() : Step;
		return Step ? Step : Step.Explain("The conversation store is damaged and cannot be set aside");
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
		if (!Run(EAccess::Read, WorkerTimeoutMilliseconds, [](FSqliteConnection&) { return FOutcome::Done(); }))
		{
			return; // Whoever uses the store is told.
		}
		ReserveLog();
		if (bNeedsCheck.exchange(false) || !bIsChecked)
		{
			const uint64 CheckedFile = StoreFiles::GetFileNumber(GetPath());
			EVerdict Verdict = CheckWholeFile();
			if (Verdict == EVerdict::Damaged)
			{
				Verdict = CheckWholeFile(); // A fault of the disk can look like damage once.
			}
			bIsChecked = Verdict == EVerdict::Sound;
			if (Verdict == EVerdict::Damaged)
			{
				const FTurn Turn(*this, WorkerTimeoutMilliseconds);
				if (Turn.IsMine() && StoreFiles::GetFileNumber(GetPath()) == CheckedFile)
				{
					Connection.reset();
					FileNumber = CheckedFile;
					bIsChecked = SetAside(EDamage::Broken).IsDone();
				}
			}
		}
		if (!bIsBeside)
		{
			TakeOverSideStores();
		}
		RecoverPending();
	}

	void FConversationStore::ReserveLog()
	{
		const std::string LogPath = GetPath() + "-wal";
		const std::vector<char> Zeros(ReservedLogBytes / 16);
		FFileDescriptor Log;
		bool bIsLong = false;
		while (!bIsLong && !bStopsChecking)
		{
			LetOthersGoFirst();
			bIsLong = true;
			// Zeros at the end of the log mean nothing to readers. The lock keeps them from falling on what others write.
			(void)Run(EAccess::Write, WorkerTimeoutMilliseconds,
				[&](FSqliteConnection&)
				{
					struct stat Status;
					if (!Log.IsOpen())
					{
						Log = FFileDescriptor::Open(LogPath, O_WRONLY);
					}
					if (Log.IsOpen() && fstat(Log.Get(), &Status) == 0 && Status.st_size < ReservedLogBytes && HasRoomToSpare(Log))
					{
						// Without the room the log grows as it is written, as it would have done.
						const auto Extend = [&] { return pwrite(Log.Get(), Zeros.data(), Zeros.size(), Status.st_size); };
						bIsLong = HostRetryInterrupted(Extend) <= 0;
					}
					return FOutcome(EOutcome::Missing, "nothing is to be kept of it");
				});
		}
		if (Log.IsOpen())
		{
			HostRetryInterrupted([&Log] { return fdatasync(Log.Get()); });
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
		const auto Judge = [](const FOutcome& Outcome) {
			return Outcome.Is(EOutcome::Damaged) ? EVerdict::Damaged : Outcome ? EVerdict::Sound : EVerdict::Unknown;
		};
		FSqliteConnection Database;
		if (const FOutcome Opened = StoreSchema::Open(Database, GetPath(), ESqliteAccess::Read, WorkerTimeoutMilliseconds); !Opened)
		{
			return Judge(Opened);
		}
		Database.SetStopFlag(&bStopsChecking);
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
		return Judge(StoreSchema::VerifyRows(Database));
	}

	void FConversationStore::RecoverPending()
	{
		while (!bStopsChecking)
		{
			std::string Name;
			int64 Damage = 0;
			const FOutcome Found = Run(EAccess::Read, WorkerTimeoutMilliseconds,
				[&Name, &Damage](FSqliteConnection& Database)
				{
					FSqliteQuery Query = Database.Query("SELECT file, damage FROM recoveries LIMIT 1");
					if (!Query.Next())
					{
						return Query.HasFailed() ? Query.GetOutcome() : FOutcome(EOutcome::Missing, "there is nothing to recover");
					}
					Name = Query.GetBytes(0);
					Damage = Query.GetInteger(1);
					return FOutcome::Done();
				});
			if (!Found || !RecoverFile(Name, static_cast<EDamage>(Damage)))
			{
				return;
			}
		}
	}

	FOutcome FConversationStore::TakeOver(
		const FConversationSource& Source, const std::vector<int64>& Numbers, const FTakenName& MakeId, EKnown Known, int32& OutCount)
	{
		OutCount = 0;
		for (size_t Next = 0; Next < Numbers.size();)
		{
			if (bStopsChecking)
			{
				return FOutcome(EOutcome::Stopped, "it was stopped");
			}
			LetOthersGoFirst();
			size_t End = Next;
			int32 Added = 0;
			FOutcome Stored = Run(EAccess::Write, WorkerTimeoutMilliseconds,
				[&](FSqliteConnection& Database)
				{
					End = Next;
					Added = 0;
					FOutcome Step;
					for (int64 Units = 0; Step && End < Numbers.size() && Units < RecoveredUnitsPerTransaction; ++End)
					{
						StoreSchema::FConversationRow Row;
						TArray<FConversationMessage> Messages;
						Source(Numbers[End], Row, Messages);
						if (Row.Id.empty())
						{
							MakeId(Numbers[End], Row);
						}
						Step = AddRecovered(Database, Row, Messages, Known, Units, Added);
					}
					return Step;
				});
			if (!Stored)
			{
				return Stored;
			}
			OutCount += Added;
			Next = End;
		}
		return FOutcome::Done();
	}

	FOutcome FConversationStore::AddRecovered(FSqliteConnection& Database, StoreSchema::FConversationRow& Row,
		const TArray<FConversationMessage>& Messages, EKnown Known, int64& InOutUnits, int32& InOutAdded)
	{
		StoreSchema::FConversationRow Stored;
		const FOutcome Found = StoreSchema::FindConversation(Database, Utf8Text::ToString(Row.Id), Stored);
		if (Found && Known == EKnown::GoesOn)
		{
			return GoOnWith(Database, Stored, Row, Messages, InOutUnits, InOutAdded);
		}
		if (Found || Messages.Num() == 0)
		{
			return FOutcome::Done();
		}
		Row.Opening = StoreSchema::MakeOpening(Messages);
		FOutcome Step = Found.Is(EOutcome::Missing) ? StoreSchema::InsertConversation(Database, Row) : Found;
		for (int32 Index = 0; Step && Index < Messages.Num(); ++Index)
		{
			Step = StoreSchema::AddMessage(Database, Row.Number, Messages[Index]);
			InOutUnits += Messages[Index].Content.Len() + 100;
		}
		++InOutAdded;
		return Step;
	}

	FOutcome FConversationStore::GoOnWith(FSqliteConnection& Database, StoreSchema::FConversationRow& Stored,
		StoreSchema::FConversationRow& Row, const TArray<FConversationMessage>& Messages, int64& InOutUnits, int32& InOutAdded)
	{
		TArray<FConversationMessage> Known;
		if (FOutcome Read = StoreSchema::ReadMessages(Database, Stored.Number, -1, Known); !Read)
		{
			return Read;
		}
		int32 Same = 0;
		while (Same < Known.Num() && Same < Messages.Num() && Known[Same].Role == Messages[Same].Role &&
			Known[Same].Content.Equals(Messages[Same].Content))
		{
			++Same;
		}
		if (Same == Messages.Num())
		{
			return FOutcome::Done();
		}
		if (Same < Known.Num())
		{
			// It went on in both: the other one becomes a conversation of its own.
			Row.Id = MakeRecoveredId(Row.Id, Same);
			return AddRecovered(Database, Row, Messages, EKnown::IsLeft, InOutUnits, InOutAdded);
		}
		Stored.Mode = Row.Mode;
		Stored.Updated = FMath::Max(Stored.Updated, Row.Updated);
		Stored.Opening = StoreSchema::MakeOpening(Messages);
		FOutcome Step = StoreSchema::UpdateConversation(Database, Stored);
		for (int32 Index = Same; Step && Index < Messages.Num(); ++Index)
		{
			Step = StoreSchema::AddMessage(Database, Stored.Number, Messages[Index]);
			InOutUnits += Messages[Index].Content.Len() + 100;
		}
		++InOutAdded;
		return Step;
	}

	bool FConversationStore::RecoverFile(const std::string& Name, EDamage Damage)
	{
		const std::string AsidePath = StoreFiles::GetFolder(GetPath()) + '/' + Name;
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
		const auto MakeId = [&Name, &FileTime](int64 Number, StoreSchema::FConversationRow& Row)
		{
			Row.Id = MakeRecoveredId(Name, Number);
			Row.Mode = static_cast<int64>(EConversationMode::General);
			Row.Updated = FileTime.GetTicks();
		};
		const auto Read = [&Salvage](int64 Number, StoreSchema::FConversationRow& OutRow, TArray<FConversationMessage>& OutMessages)
		{ Salvage.Read(Number, OutRow, OutMessages); };
		int32 RecoveredCount = 0;
		const FOutcome Taken = TakeOver(Read, Numbers, MakeId, Damage == EDamage::Beside ? EKnown::GoesOn : EKnown::IsLeft, RecoveredCount);
		if (bStopsChecking)
		{
			return false;
		}
		const std::string What = DescribeDamage(static_cast<int64>(Damage));
		if (!Taken)
		{
			StoreNotices::Add(What + " It is kept as " + AsidePath +
				". What can be read of it could not be taken over yet: " + Taken.GetWords() + " This is tried again at the next start.");
			return false;
		}
		// Taken over whole, it is of no more use.
		const bool bIsKept = Damage != EDamage::Beside || !RemoveSideStore(AsidePath);
		const auto Forget = [&Name](FSqliteConnection& Database)
		{ return Database.Query("DELETE FROM recoveries WHERE file=?").BindText(Name).Finish(); };
		if (!Run(EAccess::Write, WorkerTimeoutMilliseconds, Forget))
		{
			return false;
		}
		if (!bIsKept)
		{
			if (RecoveredCount > 0)
			{
				StoreNotices::AddNews(What + ' ' +
					Utf8Text::Count(static_cast<size_t>(RecoveredCount), "conversation was", "conversations were") + " taken over.");
			}
			return true;
		}
		const std::string Result = Damage == EDamage::Beside ? "What could be read of it was taken over."
			: Damage != EDamage::Broken						 ? std::string("A new store begins.")
			: RecoveredCount == 0
			? "Nothing could be recovered from it; a new store begins."
			: Utf8Text::Count(static_cast<size_t>(RecoveredCount), "conversation was", "conversations were") + " recovered from it.";
		StoreNotices::Add(What + " The old file is kept as " + AsidePath + ". " + Result);
		return true;
	}
}
