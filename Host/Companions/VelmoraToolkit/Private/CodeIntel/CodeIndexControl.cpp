#include "Host/CodeIndexControl.h"

#include <mutex>

#include "Async/Async.h"
#include "CodeIntel/CodeIndexes.h"
#include "Host/HostFileNames.h"
#include "Host/ProjectFileChanges.h"
#include "Host/ProjectFolder.h"
#include "Misc/Paths.h"

DEFINE_LOG_CATEGORY_STATIC(LogCodeIndexControl, Log, All);

namespace Velmora::CodeIntel
{
	namespace
	{
		constexpr double ShutdownSeconds = 2.0;

		struct FIndexTable
		{
			/** Held for moments only. */
			std::mutex Mutex;
			FCodeIndexOptions Options;
			std::shared_ptr<FCodeIndex> Project;
			std::shared_ptr<FCodeIndex> Engine;
			int32 Listener = 0;
			TFunction<void(const FString&)> ProblemHandler;
		};

		FIndexTable& GetIndexTable()
		{
			// Never destroyed: a thread that was left behind may still come back to it.
			static FIndexTable* const Table = std::make_unique<FIndexTable>().release();
			return *Table;
		}

		void TellProblem(const std::string& Words)
		{
			const FString Sentence = HostFileNameFromBytes(Words);
			UE_LOG(LogCodeIndexControl, Error, TEXT("%s"), *Sentence);
			// On the game thread, since it shows a notice. The handler may have changed by then, so it is looked up there.
			AsyncTask(ENamedThreads::GameThread,
				[Sentence]
				{
					TFunction<void(const FString&)> Handler;
					{
						FIndexTable& Table = GetIndexTable();
						const std::scoped_lock Lock(Table.Mutex);
						Handler = Table.ProblemHandler;
					}
					if (Handler)
					{
						Handler(Sentence);
					}
				});
		}

		std::string MakeRoot(const FString& Folder)
		{
			if (Folder.IsEmpty())
			{
				return std::string();
			}
			// One spelling for one folder: the index keeps the root in the file, and another one would make it start from nothing.
			FString Absolute = FPaths::ConvertRelativePathToFull(Folder);
			FPaths::NormalizeFilename(Absolute);
			std::string Root = HostFileNameToBytes(Absolute);
			while (Root.size() > 1 && Root.back() == '/')
			{
				Root.pop_back();
			}
			return Root;
		}

		FString GetEngineFolder(const FCodeIndexOptions& Options)
		{
			const FString Folder = Options.FindEngineFolder ? Options.FindEngineFolder().TrimStartAndEnd() : FString();
			return Folder.IsEmpty() ? FPaths::EngineDir() / TEXT("Source") : Folder;
		}

		std::shared_ptr<FCodeIndex> MakeIndex(const FCodeIndexOptions& Options, EIndexKind Kind)
		{
			const bool bIsProject = Kind == EIndexKind::Project;
			FCodeIndexSetup Setup;
			Setup.Root = MakeRoot(bIsProject ? Options.ProjectFolder : GetEngineFolder(Options));
			Setup.DatabasePath = HostFileNameToBytes(bIsProject ? Options.ProjectIndexPath : Options.EngineIndexPath);
			Setup.Label = bIsProject ? "project" : "engine";
			Setup.Extractor = Options.Extractor;
			Setup.bBuildWhenMissing = bIsProject && Options.bBuildWhenMissing;
			Setup.Tell = &TellProblem;
			const auto Index = std::make_shared<FCodeIndex>(std::move(Setup));
			Index->Start();
			return Index;
		}

		void TakeChanges(const FProjectFileChanges& Changes)
		{
			FIndexTable& Table = GetIndexTable();
			std::shared_ptr<FCodeIndex> Project;
			std::string Root;
			{
				const std::scoped_lock Lock(Table.Mutex);
				Project = Table.Project;
				Root = MakeRoot(Table.Options.ProjectFolder);
			}
			// The file cache may have gone on to another project.
			if (Project && HostFileNameToBytes(GetProjectFolder()) == Root)
			{
				Project->NoteChanges(Changes);
			}
		}

		std::shared_ptr<FCodeIndex> GetIndex(EIndexKind Kind)
		{
			return Kind == EIndexKind::Project ? FCodeIndexes::GetProject() : FCodeIndexes::GetEngine();
		}
	}

	std::shared_ptr<FCodeIndex> FCodeIndexes::GetProject()
	{
		FIndexTable& Table = GetIndexTable();
		const std::scoped_lock Lock(Table.Mutex);
		return Table.Project;
	}

	std::shared_ptr<FCodeIndex> FCodeIndexes::GetEngine()
	{
		FIndexTable& Table = GetIndexTable();
		const std::scoped_lock Lock(Table.Mutex);
		return Table.Engine;
	}

	void FCodeIndexes::MakeEngine()
	{
		FIndexTable& Table = GetIndexTable();
		const std::scoped_lock Lock(Table.Mutex);
		// Made at the first question for it only: the engine's sources are large, and few ask.
		if (Table.Project && !Table.Engine)
		{
			Table.Engine = MakeIndex(Table.Options, EIndexKind::Engine);
		}
	}

	void FCodeIndexControl::Initialize(const FCodeIndexOptions& Options)
	{
		Shutdown();
		FIndexTable& Table = GetIndexTable();
		{
			const std::scoped_lock Lock(Table.Mutex);
			Table.Options = Options;
			Table.Project = MakeIndex(Options, EIndexKind::Project);
		}
		// Told outside the lock: the file cache calls listeners under one of its own.
		const int32 Listener = FProjectFileListeners::Add(&TakeChanges);
		const std::scoped_lock Lock(Table.Mutex);
		Table.Listener = Listener;
	}

	void FCodeIndexControl::Shutdown()
	{
		// Both are taken out under the lock and waited for without it: a worker that is about to end may need the table.
		FIndexTable& Table = GetIndexTable();
		std::shared_ptr<FCodeIndex> Project;
		std::shared_ptr<FCodeIndex> Engine;
		int32 Listener = 0;
		{
			const std::scoped_lock Lock(Table.Mutex);
			Project.swap(Table.Project);
			Engine.swap(Table.Engine);
			Listener = std::exchange(Table.Listener, 0);
		}
		FProjectFileListeners::Remove(Listener);
		// The engine's work ends while the project's is waited for.
		if (Engine)
		{
			Engine->Stop();
		}
		for (const std::shared_ptr<FCodeIndex>& Index : { Project, Engine })
		{
			if (Index)
			{
				Index->Shutdown(ShutdownSeconds / 2.0);
			}
		}
	}

	bool FCodeIndexControl::WaitUntilOpened(double TimeoutSeconds)
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject();
		return Index && Index->WaitUntilOpened(TimeoutSeconds);
	}

	void FCodeIndexControl::SetProblemHandler(TFunction<void(const FString&)> Handler)
	{
		FIndexTable& Table = GetIndexTable();
		const std::scoped_lock Lock(Table.Mutex);
		Table.ProblemHandler = MoveTemp(Handler);
	}

	FIndexLookup FCodeIndexControl::FindSymbol(std::string_view Name, int32 MaxCount, EIndexKind Kind)
	{
		const std::shared_ptr<FCodeIndex> Index = GetIndex(Kind);
		return Index ? Index->FindSymbol(Name, MaxCount) : FIndexLookup();
	}

	FIndexLookup FCodeIndexControl::Outline(std::string_view Path, int32 MaxCount, EIndexKind Kind)
	{
		const std::shared_ptr<FCodeIndex> Index = GetIndex(Kind);
		return Index ? Index->Outline(Path, MaxCount) : FIndexLookup();
	}

	bool FCodeIndexControl::OutlineFile(const std::string& AbsolutePath, std::vector<FIndexSymbol>& Out, std::string& OutReason)
	{
		FExtractorOptions Options;
		{
			FIndexTable& Table = GetIndexTable();
			const std::scoped_lock Lock(Table.Mutex);
			Options = Table.Options.Extractor;
		}
		const std::atomic<bool> bNever = false;
		const FOutcome Outlined = FSymbolExtractor(std::string(), Options, bNever).ExtractAny(AbsolutePath, Out);
		OutReason = Outlined.GetWords();
		return Outlined.IsDone();
	}
}
