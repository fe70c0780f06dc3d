#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CoreMinimal.h"

#include "CodeIntel/CodeIntelIndexManager.h"
#include "CodeIntel/IndexDatabase.h"
#include "CodeIntel/SymbolExtractor.h"
#include "Host/CodeIndexControl.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFileChanges.h"
#include "Threads/ThreadPulse.h"

namespace Velmora::CodeIntel
{
	struct FCodeIndexSetup
	{
		/** Absolute, without a '/' at the end; may be missing. */
		std::string Root;
		std::string DatabasePath;

		/** For sentences: "project" or "engine". */
		std::string Label;
		FExtractorOptions Extractor;
		bool bBuildWhenMissing = false;

		/** Told what the user should know, on any thread. */
		TFunction<void(const std::string&)> Tell;
	};

	/**
	 * The index of one folder: its file, and a thread that opens it, keeps it true and compares it with the disk. Builds and
	 * compactions run on the thread that asks for them. Any thread.
	 */
	class FCodeIndex : public std::enable_shared_from_this<FCodeIndex>
	{
	public:
		using FReconciled = TFunction<void(int32 Deleted, int32 New)>;

		explicit FCodeIndex(FCodeIndexSetup InSetup);

		void Start();

		/** Lets everything that runs come to its end soon, without waiting for it. */
		void Stop();

		/**
		 * Ends everything that runs; false when something did not end, which then goes on by itself: because it stood still for the
		 * whole time, or was at work for FThreadPulse::SlowFactor times as long. Nothing works afterwards.
		 */
		bool Shutdown(double TimeoutSeconds);

		bool IsReady() const { return bIsReady; }
		bool IsBuilding() const { return bIsBuilding; }
		bool IsReindexerRunning() const { return bIsRunning && bIsReady && !bStop; }
		int32 GetQueueSize() const { return QueueSize; }
		FIndexStats GetStats() const;

		/** Waits while the index is being opened, not for a build. True when it can be asked then. */
		bool WaitUntilOpened(double TimeoutSeconds);

		/** Returns when the build, or one that ran already, is over. */
		void Rebuild(bool bForce);
		void Compact();

		/** Not ready from here on; the file is gone soon. */
		void Clear();

		/** Done is called on the game thread. */
		void Reconcile(FReconciled Done);
		void NoteChanges(const FProjectFileChanges& Changes);

		FIndexLookup FindSymbol(std::string_view Name, int32 MaxCount);
		FIndexLookup Outline(std::string_view Path, int32 MaxCount);

	private:
		class FOperation;

		void Run();
		void Open();
		void Work();
		void WorkOnQueue(const std::vector<std::string>& Paths);
		void CompareWithDisk(const std::vector<FReconciled>& Callbacks);
		FOutcome ApplyChanges(const std::vector<FIndexFile>& Files, const std::vector<std::string>& Gone);

		/** Takes out those whose answer cannot be trusted, though the files had symbols: what is known of them stays. */
		FOutcome DropUntrusted(const FSymbolExtractor& Extractor, std::vector<std::pair<FIndexFile, FFileSymbols>>& InOutExtracted);
		void Erase();

		// With the writer's lock held.
		FOutcome EnsureWriter();
		FOutcome BuildAll(bool bForce);
		FOutcome FillBuild();
		/** "The project index could not be built", for Explain. */
		std::string Say(const char* What) const { return "The " + Setup.Label + " index " + What; }
		std::string GetProbePath() const { return Setup.DatabasePath + ".probe.cpp"; }
		void SetAside();
		void CloseFiles();
		void RefreshStats();

		bool Look(FIndexLookup& Out, TFunctionRef<FOutcome(FIndexDatabase&)> Ask);
		void Answer(const FReconciled& Done, int32 Deleted, int32 New) const;
		void Queue(std::string&& Path);

		/** With the state's lock held: keeps those waiting who wait for background work. */
		void UpdateBusy();

		const FCodeIndexSetup Setup;
		std::atomic<bool> bStop = false;
		std::atomic<bool> bIsReady = false;
		std::atomic<bool> bIsBuilding = false;
		std::atomic<bool> bIsRunning = false;
		std::atomic<int32> QueueSize = 0;

		/** Held for a whole build; never asked for on the game thread. */
		std::mutex WriterMutex;
		std::unique_ptr<FIndexDatabase> Writer;

		/** What kept the index from following the files the last time: told once, not at every save. */
		std::string LastProblem;

		std::mutex ReaderMutex;
		std::unique_ptr<FIndexDatabase> Reader;

		mutable std::mutex StateMutex;
		std::condition_variable Changed;

		/** Of the index's thread and of those that work on the index. */
		FThreadPulse Pulse;
		FIndexStats Stats;
		std::set<std::string> Waiting;
		std::vector<FReconciled> Reconciles;
		std::optional<FHostBackgroundWork> Busy;
		int Operations = 0;
		int InWork = 0;
		bool bIsOpening = false;
		bool bIsWorking = false;
		bool bCompareWanted = false;
		bool bEraseWanted = false;
		bool bRepairWanted = false;
		bool bThreadHasEnded = true;
	};

	/** Work on another's thread, which Shutdown waits for. */
	class FCodeIndex::FOperation
	{
	public:
		explicit FOperation(FCodeIndex& InIndex)
			: Index(InIndex)
		{
			const std::scoped_lock Lock(Index.StateMutex);
			bIsAllowed = !Index.bStop;
			if (bIsAllowed)
			{
				++Index.Operations;
				Index.Pulse.Add();
			}
		}
		~FOperation()
		{
			const std::scoped_lock Lock(Index.StateMutex);
			if (bIsAllowed)
			{
				--Index.Operations;
				Index.Pulse.Remove();
			}
			Index.Changed.notify_all();
		}
		FOperation(const FOperation&) = delete;
		FOperation& operator=(const FOperation&) = delete;

		bool IsAllowed() const { return bIsAllowed; }

	private:
		FCodeIndex& Index;
		bool bIsAllowed = false;
	};
}
