#include "CodeIntel/CodeIndex.h"

#include <chrono>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Misc/Paths.h"

DEFINE_LOG_CATEGORY_STATIC(LogCodeIndex, Log, All);

// One index of symbols: its thread, its file and who may touch it when.
// Three locks, taken in this order. WriterMutex guards the database as it is written, for as long as a batch of files takes.
// ReaderMutex guards a connection of its own for look-ups, so that a question never waits for the indexer. StateMutex guards
// flags and lists, for moments only.
// Work is asked for by flags and a list of paths and done by the one thread. Requests of one kind melt into one, and a stop
// is seen between two files.
// A database that cannot be trusted is set aside and built anew: everything in it can be made from the project.

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Files taken up at once by the reindexer. */
		constexpr size_t MaxFilesAtOnce = 200;

		int64 GetFileBytes(const std::string& Path)
		{
			struct stat Status = {};
			return stat(Path.c_str(), &Status) == 0 ? static_cast<int64>(Status.st_size) : 0;
		}
	}

	FCodeIndex::FCodeIndex(FCodeIndexSetup InSetup)
		: Setup(std::move(InSetup))
	{
		Stats.RootPath = HostFileNameFromBytes(Setup.Root);
	}

	// The thread is detached and holds the object: a file system that does not answer must not keep the program from ending.
	void FCodeIndex::Start()
	{
		const std::scoped_lock Lock(StateMutex);
		bIsRunning = true;
		bIsOpening = true;
		bThreadHasEnded = false;
		UpdateBusy();
		std::thread(
			[Self = shared_from_this()]
			{
				{
					const std::scoped_lock Beginning(Self->StateMutex);
					Self->Pulse.Add();
				}
				Self->Run();
				const std::scoped_lock Ending(Self->StateMutex);
				Self->Pulse.Remove();
				Self->bIsRunning = false;
				Self->bThreadHasEnded = true;
				Self->Busy.reset();
				Self->Changed.notify_all();
			})
			.detach();
	}

	void FCodeIndex::Stop()
	{
		const std::scoped_lock Lock(StateMutex);
		bStop = true;
		Changed.notify_all();
	}

	// 1. Everybody is told. 2. Thread and look-ups get their time. 3. Whoever waits for a comparison gets an answer. 4. Files are
	// closed, unless the thread still works on them.
	bool FCodeIndex::Shutdown(double TimeoutSeconds)
	{
		std::vector<FReconciled> Unanswered;
		EThreadWait End = EThreadWait::Silent;
		{
			std::unique_lock Lock(StateMutex);
			bStop = true;
			Changed.notify_all();
			End = Pulse.WaitUntil(Lock, Changed, TimeoutSeconds, [this] { return bThreadHasEnded && Operations == 0; });
			Busy.reset();
			Unanswered.swap(Reconciles);
		}
		for (const FReconciled& Done : Unanswered)
		{
			Answer(Done, 0, 0);
		}
		// The thread may still stand in a call of the database, so its files stay open and are left to the process's end.
		if (End != EThreadWait::Ended)
		{
			UE_LOG(LogCodeIndex, Warning, TEXT("%s, so the work on the %s index is left behind"),
				End == EThreadWait::Silent ? TEXT("The file system does not answer") : TEXT("The file system is too slow"),
				UTF8_TO_TCHAR(Setup.Label.c_str()));
			return false;
		}
		bIsReady = false;
		const std::scoped_lock Locks(WriterMutex, ReaderMutex);
		CloseFiles();
		return true;
	}

	FIndexStats FCodeIndex::GetStats() const
	{
		const std::scoped_lock Lock(StateMutex);
		return Stats;
	}

	void FCodeIndex::UpdateBusy()
	{
		// While there is work the program counts as busy, and a quiet program may sleep.
		const bool bIsBusy =
			!bStop && bIsRunning && (bIsOpening || bIsWorking || bEraseWanted || bCompareWanted || !Reconciles.empty() || !Waiting.empty());
		if (bIsBusy && !Busy)
		{
			Busy.emplace();
		}
		else if (!bIsBusy)
		{
			Busy.reset();
		}
	}

	void FCodeIndex::Run()
	{
		Open();
		while (!bStop)
		{
			std::unique_lock Lock(StateMutex);
			bIsOpening = false;
			bIsWorking = false;
			UpdateBusy();
			Changed.notify_all();
			Changed.wait(Lock,
				[this] { return bStop || bEraseWanted || bRepairWanted || bCompareWanted || !Reconciles.empty() || !Waiting.empty(); });
			bIsWorking = true;
			Lock.unlock();
			Work();
		}
		// Clear was asked for on the way out: an index that the user has cleared must not be there at the next start.
		bool bErase = false;
		{
			const std::scoped_lock Lock(StateMutex);
			bErase = bEraseWanted;
		}
		if (bErase)
		{
			Erase();
		}
	}

	// 1. What is asked for is taken under the lock, and paths only when nothing larger waits: a comparison finds them anyway.
	// 2. Each kind in the order in which it makes the next superfluous.
	void FCodeIndex::Work()
	{
		std::vector<FReconciled> Callbacks;
		std::vector<std::string> Paths;
		bool bErase = false;
		bool bRepair = false;
		bool bCompare = false;
		{
			const std::scoped_lock Lock(StateMutex);
			bErase = bEraseWanted;
			bRepair = std::exchange(bRepairWanted, false);
			bCompare = std::exchange(bCompareWanted, false) || !Reconciles.empty();
			Callbacks.swap(Reconciles);
			if (!bErase && !bRepair && !bCompare)
			{
				while (!Waiting.empty() && Paths.size() < MaxFilesAtOnce)
				{
					Paths.push_back(std::move(Waiting.extract(Waiting.begin()).value()));
				}
				InWork = static_cast<int>(Paths.size());
			}
		}
		if (bErase)
		{
			Erase();
		}
		if (bRepair && !bStop)
		{
			{
				const std::scoped_lock Lock(WriterMutex);
				SetAside();
			}
			Rebuild(true);
		}
		if (bCompare)
		{
			CompareWithDisk(Callbacks);
		}
		if (!Paths.empty())
		{
			WorkOnQueue(Paths);
		}
		const std::scoped_lock Lock(StateMutex);
		InWork = 0;
		QueueSize = static_cast<int32>(Waiting.size());
	}

	// 1. What is there is checked. 2. Built when it is damaged or missing. 3. Compared with the project when it is whole.
	void FCodeIndex::Open()
	{
		bool bIsDamaged = false;
		bool bIsComplete = false;
		if (access(Setup.DatabasePath.c_str(), F_OK) == 0)
		{
			const std::scoped_lock Lock(WriterMutex);
			FOutcome Opened = EnsureWriter();
			Opened = Opened ? Writer->CheckWhole() : Opened;
			if (bStop)
			{
				return;
			}
			bIsDamaged = Opened.Is(EOutcome::Damaged);
			if (bIsDamaged)
			{
				SetAside();
			}
			else if (Opened)
			{
				RefreshStats();
				// An index that was never finished is no use: files without symbols would look as if they had none.
				bIsComplete = bIsReady;
			}
			else
			{
				Setup.Tell(Opened.Explain(Say("could not be opened")).GetWords());
			}
		}
		if (bIsDamaged || (Setup.bBuildWhenMissing && !bIsComplete))
		{
			Rebuild(false);
		}
		else if (bIsComplete && Setup.bBuildWhenMissing)
		{
			// Much may have happened since the index was last in use.
			CompareWithDisk({});
		}
	}

	FOutcome FCodeIndex::EnsureWriter()
	{
		if (Writer)
		{
			return FOutcome::Done();
		}
		FString Reason;
		const FString Folder = FPaths::GetPath(HostFileNameFromBytes(Setup.DatabasePath));
		if (!HostMakeFolder(Folder, Reason))
		{
			return FOutcome(EOutcome::Failed, "its folder cannot be made", HostFileNameToBytes(Folder));
		}
		auto Opening = std::make_unique<FIndexDatabase>(bStop);
		FOutcome Opened = Opening->OpenForWriting(Setup.DatabasePath, Setup.Root);
		if (Opened)
		{
			Writer = std::move(Opening);
		}
		return Opened;
	}

	void FCodeIndex::CloseFiles()
	{
		Writer.reset();
		Reader.reset();
	}

	void FCodeIndex::SetAside()
	{
		bIsReady = false;
		// The readers' lock too: a reader that is open holds on to the file under its old name.
		const std::scoped_lock Lock(ReaderMutex);
		CloseFiles();
		const std::string Aside = Setup.DatabasePath + ".damaged";
		rename(Setup.DatabasePath.c_str(), Aside.c_str());
		// They belong to the damaged file and would spoil another.
		unlink((Setup.DatabasePath + "-wal").c_str());
		unlink((Setup.DatabasePath + "-shm").c_str());
		Setup.Tell(Say("was damaged and is built anew. The old file was kept as ") + Aside + '.');
	}

	void FCodeIndex::RefreshStats()
	{
		FIndexFigures Figures;
		if (!Writer->ReadFigures(Figures))
		{
			return;
		}
		const double Megabytes =
			static_cast<double>(GetFileBytes(Setup.DatabasePath) + GetFileBytes(Setup.DatabasePath + "-wal")) / (1024.0 * 1024.0);
		const std::scoped_lock Lock(StateMutex);
		// Cleared meanwhile: figures of a file that goes at once would make it ready again.
		if (bEraseWanted)
		{
			return;
		}
		Stats.bIsReady = Figures.bIsComplete;
		Stats.TotalFiles = Figures.Files;
		Stats.FailedFiles = Figures.FailedFiles;
		Stats.EstimatedSymbols = Figures.Symbols;
		Stats.LastBuildTimeSeconds = Figures.BuildSeconds;
		Stats.IndexSizeMB = Megabytes;
		bIsReady = Figures.bIsComplete;
		Changed.notify_all();
	}

	bool FCodeIndex::WaitUntilOpened(double TimeoutSeconds)
	{
		const FOperation Operation(*this);
		std::unique_lock Lock(StateMutex);
		Changed.wait_for(
			Lock, std::chrono::duration<double>(TimeoutSeconds), [this] { return !bIsOpening || bIsReady || bIsBuilding || bStop; });
		return bIsReady && !bStop;
	}

	// For those who ask, it is empty at once; the file goes when the thread comes to it.
	void FCodeIndex::Clear()
	{
		const std::scoped_lock Lock(StateMutex);
		if (bStop)
		{
			return;
		}
		bIsReady = false;
		// The figures go at once, the file when the worker comes to it: nobody who clears waits for the disk.
		const FString Root = Stats.RootPath;
		Stats = FIndexStats();
		Stats.RootPath = Root;
		Waiting.clear();
		QueueSize = 0;
		bEraseWanted = true;
		UpdateBusy();
		Changed.notify_all();
	}

	void FCodeIndex::Erase()
	{
		const std::scoped_lock Lock(WriterMutex);
		{
			// A build may have begun since.
			const std::scoped_lock StateLock(StateMutex);
			if (!std::exchange(bEraseWanted, false))
			{
				return;
			}
		}
		const std::scoped_lock ReaderLock(ReaderMutex);
		CloseFiles();
		// "-wal" and "-shm" are the database's own companions, and would spoil a new file under the name.
		for (const char* const Ending : { "", "-wal", "-shm" })
		{
			unlink((Setup.DatabasePath + Ending).c_str());
		}
	}

	void FCodeIndex::Reconcile(FReconciled Done)
	{
		{
			const std::scoped_lock Lock(StateMutex);
			if (bIsRunning && !bStop)
			{
				Reconciles.push_back(MoveTemp(Done));
				UpdateBusy();
				Changed.notify_all();
				return;
			}
		}
		Answer(Done, 0, 0);
	}

	void FCodeIndex::Answer(const FReconciled& Done, int32 Deleted, int32 New) const
	{
		if (Done)
		{
			AsyncTask(ENamedThreads::GameThread, [Done, Deleted, New] { Done(Deleted, New); });
		}
	}

	void FCodeIndex::Queue(std::string&& Path)
	{
		Waiting.insert(std::move(Path));
		QueueSize = static_cast<int32>(Waiting.size()) + InWork;
	}

	void FCodeIndex::NoteChanges(const FProjectFileChanges& Changes)
	{
		const std::scoped_lock Lock(StateMutex);
		if (bStop || (!bIsReady && !bIsBuilding))
		{
			return;
		}
		for (const FString& Path : Changes.Written)
		{
			std::string Bytes = HostFileNameToBytes(Path);
			if (IsIndexedFile(Bytes))
			{
				Queue(std::move(Bytes));
			}
		}
		for (const FString& Path : Changes.Removed)
		{
			// May have been a folder.
			Queue(HostFileNameToBytes(Path));
		}
		bCompareWanted |= Changes.bMayBeMore;
		UpdateBusy();
		Changed.notify_all();
	}

	// A failed question closes its connection, since the file may have been replaced; damage is for the thread to mend.
	bool FCodeIndex::Look(FIndexLookup& Out, TFunctionRef<FOutcome(FIndexDatabase&)> Ask)
	{
		const FOperation Operation(*this);
		if (!Operation.IsAllowed() || !bIsReady)
		{
			return false;
		}
		const std::scoped_lock Lock(ReaderMutex);
		// Clearing and setting aside come first and take the lock later.
		if (!bIsReady)
		{
			return false;
		}
		if (!Reader)
		{
			Reader = std::make_unique<FIndexDatabase>(bStop);
			if (!Reader->OpenForReading(Setup.DatabasePath))
			{
				Reader.reset();
				return false;
			}
		}
		Out.Root = Setup.Root;
		const FOutcome Asked = Ask(*Reader);
		if (Asked)
		{
			Out.bIsReady = true;
			return true;
		}
		UE_LOG(LogCodeIndex, Warning, TEXT("%s"), *HostFileNameFromBytes(Asked.Explain(Say("could not be read")).GetWords()));
		// Closed, and the next question opens anew: an error may be that of the connection alone.
		Reader.reset();
		Out = FIndexLookup();
		const std::scoped_lock StateLock(StateMutex);
		bRepairWanted |= Asked.Is(EOutcome::Damaged);
		Changed.notify_all();
		return false;
	}

	FIndexLookup FCodeIndex::FindSymbol(std::string_view Name, int32 MaxCount)
	{
		FIndexLookup Result;
		Look(Result, [&](FIndexDatabase& Database) { return Database.FindSymbol(Name, MaxCount, Result); });
		return Result;
	}

	FIndexLookup FCodeIndex::Outline(std::string_view Path, int32 MaxCount)
	{
		FIndexLookup Result;
		Look(Result, [&](FIndexDatabase& Database) { return Database.ReadOutline(Path, MaxCount, Result); });
		return Result;
	}
}
