#include "Commands/CodeIntelCommandActions.h"

#include "Async/Async.h"
#include "CodeIntel/CodeIntelIndexManager.h"
#include "Commands/CodeIntelCommands.h"
#include "Commands/CodeIntelNotifications.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Commands/UICommandList.h"
#include "HAL/PlatformTime.h"
#include "ISettingsModule.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/Timespan.h"
#include "Modules/ModuleManager.h"
#include "Settings/VelmoraSettings.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SWindow.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "CodeIntelCommands"

using Velmora::CodeIntel::FCodeIntelIndexManager;
using Velmora::CodeIntel::FIndexStats;

namespace
{

	bool IsEngineSourceIncluded()
	{
		const UVelmoraSettings* Settings = GetDefault<UVelmoraSettings>();
		return Settings && Settings->bIncludeEngineSource;
	}

	/** Lives until the module ends, and work that outlives it has nobody to report to. */
	struct FIndexWorkOwner
	{
	};

	/** Game thread. */
	TSharedPtr<FIndexWorkOwner>& GetIndexWorkOwner()
	{
		static TSharedPtr<FIndexWorkOwner> Owner;
		if (!Owner.IsValid())
		{
			Owner = MakeShared<FIndexWorkOwner>();
		}
		return Owner;
	}

	/** What may still run on threads of their own. Game thread. */
	TArray<TFuture<void>>& GetRunningWork()
	{
		static TArray<TFuture<void>> Running;
		return Running;
	}

	/** Work on a thread of its own, then Done with the seconds that it took on the game thread, unless the module has ended meanwhile. */
	void RunIndexWork(TFunction<void(FCodeIntelIndexManager&)> Work, TFunction<void(FCodeIntelIndexManager&, double)> Done)
	{
		FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
		TArray<TFuture<void>>& Running = GetRunningWork();
		Running.RemoveAll([](const TFuture<void>& Future) { return Future.IsReady(); });
		Running.Add(Async(EAsyncExecution::Thread,
			[&Manager, Owner = TWeakPtr<FIndexWorkOwner>(GetIndexWorkOwner()), Work = MoveTemp(Work), Done = MoveTemp(Done)]() mutable
			{
				if (!Owner.IsValid())
				{
					return;
				}
				// The figures of the manager are those of the last full build; what this run took is measured here.
				const double StartTime = FPlatformTime::Seconds();
				Work(Manager);
				const double Seconds = FPlatformTime::Seconds() - StartTime;
				AsyncTask(ENamedThreads::GameThread,
					[&Manager, Owner = MoveTemp(Owner), Done = MoveTemp(Done), Seconds]
					{
						if (Owner.IsValid())
						{
							Done(Manager, Seconds);
						}
					});
			}));
	}

	/** A reconcile is reported in the words of a build or, when it found nothing, of a compaction. */
	void ShowReconcileResult(const TCHAR* Scope, int32 Deleted, int32 New)
	{
		// Found files are indexed by what follows, which the words of a build describe.
		if (Deleted > 0 || New > 0)
		{
			[[maybe_unused]] const FString Summary =
				FString::Printf(TEXT("%s reconciliation complete: %d deleted, %d new files queued"), Scope, Deleted, New);
			FCodeIntelNotifications::ShowBuildComplete(Deleted + New, 0.0);
			return;
		}
		FCodeIntelNotifications::ShowCompactionComplete(0.0);
	}

	/** What a reconcile calls at its end. */
	TFunction<void(int32, int32)> MakeReconcileReport(const TCHAR* Scope)
	{
		return [Owner = TWeakPtr<FIndexWorkOwner>(GetIndexWorkOwner()), Scope](int32 Deleted, int32 New)
		{
			if (Owner.IsValid())
			{
				ShowReconcileResult(Scope, Deleted, New);
			}
		};
	}

	FString DescribeReadyIndex(const FIndexStats& Stats, const TCHAR* RootName)
	{
		return FString::Printf(TEXT("Status: Ready\nTotal Files: %d\nFailed Files: %d\nEstimated Symbols: %d\nIndex Size: %.2f MB\nLast "
									"Build Time: %.2f seconds\n%s Root: %s\n"),
			Stats.TotalFiles, Stats.FailedFiles, Stats.EstimatedSymbols, Stats.IndexSizeMB, Stats.LastBuildTimeSeconds, RootName,
			*Stats.RootPath);
	}

	FString DescribeProjectIndex(const FCodeIntelIndexManager& Manager)
	{
		if (Manager.IsBuilding())
		{
			return TEXT("Status: Building...\n");
		}
		const FIndexStats Stats = Manager.GetIndexStats();
		return Stats.bIsReady ? DescribeReadyIndex(Stats, TEXT("Project"))
							  : FString(TEXT("Status: Not Ready\nThe project index has not been built yet.\n"));
	}

	FString DescribeEngineIndex(const FCodeIntelIndexManager& Manager)
	{
		// From what the user can change to what only waiting helps.
		if (!IsEngineSourceIncluded())
		{
			return TEXT("Status: Disabled\nEnable 'Include Engine Source' in Settings to use engine index.\n");
		}
		if (!Manager.IsEngineIndexInitialized())
		{
			return TEXT("Status: Not Initialized\n");
		}
		if (Manager.IsEngineIndexBuilding())
		{
			return TEXT("Status: Building...\n");
		}
		if (!Manager.IsEngineIndexReady())
		{
			return TEXT("Status: Not Ready\nUse 'Rebuild Engine Index' to build the engine index.\n");
		}
		return DescribeReadyIndex(Manager.GetEngineIndexStats(), TEXT("Engine"));
	}

} // namespace

void FCodeIntelCommandActions::RegisterHandlers(TSharedPtr<FUICommandList> List)
{
	const FCodeIntelCommands& Commands = FCodeIntelCommands::Get();
	List->MapAction(Commands.RebuildIndex, FExecuteAction::CreateStatic(&HandleRebuildIndex),
		FCanExecuteAction::CreateStatic(&CanExecuteIndexOperation));
	List->MapAction(Commands.CompactIndex, FExecuteAction::CreateStatic(&HandleCompactIndex),
		FCanExecuteAction::CreateStatic(&CanExecuteIndexOperation));
	List->MapAction(Commands.ReconcileIndex, FExecuteAction::CreateStatic(&HandleReconcileIndex),
		FCanExecuteAction::CreateStatic(&CanExecuteReconcile));
	List->MapAction(
		Commands.ViewStatus, FExecuteAction::CreateStatic(&HandleViewStatus), FCanExecuteAction::CreateStatic(&CanExecuteIndexOperation));
	List->MapAction(Commands.OpenSettings, FExecuteAction::CreateStatic(&HandleOpenSettings));
	List->MapAction(Commands.RebuildEngineIndex, FExecuteAction::CreateStatic(&HandleRebuildEngineIndex),
		FCanExecuteAction::CreateStatic(&CanExecuteEngineIndexOperation));
	List->MapAction(Commands.ClearEngineIndex, FExecuteAction::CreateStatic(&HandleClearEngineIndex),
		FCanExecuteAction::CreateStatic(&CanExecuteEngineIndexOperation));
	List->MapAction(Commands.ReconcileEngineIndex, FExecuteAction::CreateStatic(&HandleReconcileEngineIndex),
		FCanExecuteAction::CreateStatic(&CanExecuteEngineReconcile));
}

void FCodeIntelCommandActions::CutOffRunningWork()
{
	// 1. Nothing is reported from here on. Work that has not begun yet does not begin.
	GetIndexWorkOwner().Reset();
	// 2. What is about to end is waited for, so that no thread comes back into the module. A build may take minutes, which the
	// end of the editor must not: that one goes on in the toolkit, and finds nobody to report to.
	constexpr double LongestWaitSeconds = 1.0;
	const double Until = FPlatformTime::Seconds() + LongestWaitSeconds;
	for (const TFuture<void>& Work : GetRunningWork())
	{
		Work.WaitFor(FTimespan::FromSeconds(FMath::Max(Until - FPlatformTime::Seconds(), 0.0)));
	}
	GetRunningWork().Empty();
	// 3. What it has shown so far.
	FCodeIntelNotifications::DismissAll();
}

bool FCodeIntelCommandActions::CanExecuteIndexOperation()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	return Manager.IsInitialized() && !Manager.IsBuilding();
}

bool FCodeIntelCommandActions::CanExecuteReconcile()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	return Manager.IsInitialized() && Manager.IsIndexReady() && !Manager.IsBuilding();
}

bool FCodeIntelCommandActions::CanExecuteEngineIndexOperation()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	return IsEngineSourceIncluded() && Manager.IsInitialized() && !Manager.IsEngineIndexBuilding();
}

bool FCodeIntelCommandActions::CanExecuteEngineReconcile()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	return IsEngineSourceIncluded() && Manager.IsEngineIndexInitialized() && Manager.IsEngineIndexReady() &&
		!Manager.IsEngineIndexBuilding();
}

void FCodeIntelCommandActions::HandleRebuildIndex()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!Manager.IsInitialized())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Index manager not initialized"));
		return;
	}
	if (Manager.IsBuilding())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Index build already in progress"));
		return;
	}
	FCodeIntelNotifications::ShowBuildStarted();
	RunIndexWork([](FCodeIntelIndexManager& Worker) { Worker.RebuildIndex(true); },
		[](FCodeIntelIndexManager& Built, double Seconds)
		{
			const FIndexStats Stats = Built.GetIndexStats();
			if (Stats.bIsReady)
			{
				FCodeIntelNotifications::ShowBuildComplete(Stats.EstimatedSymbols, Seconds);
			}
			else
			{
				FCodeIntelNotifications::ShowBuildFailed(TEXT("Rebuild failed - check log for details"));
			}
		});
}

void FCodeIntelCommandActions::HandleRebuildEngineIndex()
{
	FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!IsEngineSourceIncluded())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Engine source reading not enabled in settings"));
		return;
	}
	if (!Manager.IsInitialized())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Index manager not initialized"));
		return;
	}
	// The engine index has no object before it is first wanted.
	if (!Manager.IsEngineIndexInitialized())
	{
		Manager.InitializeEngineIndex();
	}
	if (Manager.IsEngineIndexBuilding())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Engine index build already in progress"));
		return;
	}
	FCodeIntelNotifications::ShowBuildStarted();
	RunIndexWork([](FCodeIntelIndexManager& Worker) { Worker.RebuildEngineIndex(true); },
		[](FCodeIntelIndexManager& Built, double Seconds)
		{
			if (Built.IsEngineIndexReady())
			{
				FCodeIntelNotifications::ShowBuildComplete(Built.GetEngineIndexStats().EstimatedSymbols, Seconds);
			}
			else
			{
				FCodeIntelNotifications::ShowBuildFailed(TEXT("Engine index rebuild failed - check log for details"));
			}
		});
}

void FCodeIntelCommandActions::HandleCompactIndex()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!Manager.IsInitialized() || !Manager.IsIndexReady())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Cannot compact: index not ready"));
		return;
	}
	// What is saved is a difference, and the size before is gone once the work has run.
	const double SizeBefore = Manager.GetIndexStats().IndexSizeMB;
	RunIndexWork([](FCodeIntelIndexManager& Worker) { Worker.CompactIndex(); },
		[SizeBefore](FCodeIntelIndexManager& Compacted, double)
		{ FCodeIntelNotifications::ShowCompactionComplete(SizeBefore - Compacted.GetIndexStats().IndexSizeMB); });
}

void FCodeIntelCommandActions::HandleClearEngineIndex()
{
	FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!Manager.IsEngineIndexInitialized())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Engine index not initialized"));
		return;
	}
	if (Manager.IsEngineIndexBuilding())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Cannot clear while engine index is building"));
		return;
	}
	const double SizeBefore = Manager.GetEngineIndexStats().IndexSizeMB;
	Manager.ClearEngineIndex();
	FCodeIntelNotifications::ShowCompactionComplete(SizeBefore);
}

void FCodeIntelCommandActions::HandleReconcileIndex()
{
	FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!Manager.IsInitialized() || !Manager.IsIndexReady())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Cannot reconcile: project index not ready"));
		return;
	}
	if (!Manager.IsReindexerRunning())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Cannot reconcile: reindexer not running"));
		return;
	}
	Manager.ReconcileFileChangesAsync(MakeReconcileReport(TEXT("Project")));
}

void FCodeIntelCommandActions::HandleReconcileEngineIndex()
{
	FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!Manager.IsEngineIndexInitialized() || !Manager.IsEngineIndexReady())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Cannot reconcile: engine index not ready"));
		return;
	}
	if (!Manager.IsEngineReindexerRunning())
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Cannot reconcile: engine reindexer not running"));
		return;
	}
	Manager.ReconcileEngineFileChangesAsync(MakeReconcileReport(TEXT("Engine")));
}

void FCodeIntelCommandActions::HandleOpenSettings()
{
	if (ISettingsModule* Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->ShowViewer("Project", "Plugins", "Velmora");
	}
}

FString FCodeIntelCommandActions::BuildStatusReport()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	if (!Manager.IsInitialized())
	{
		return TEXT("Index Manager: Not Initialized");
	}
	return TEXT("=== PROJECT INDEX ===\n\n") + DescribeProjectIndex(Manager) + TEXT("\n=== ENGINE INDEX ===\n\n") +
		DescribeEngineIndex(Manager);
}

void FCodeIntelCommandActions::HandleViewStatus()
{
	const TSharedRef<SWindow> Window = SNew(SWindow)
										   .Title(LOCTEXT("IndexStatusTitle", "Code Intelligence Status"))
										   .ClientSize(FVector2D(600.0, 500.0))
										   .SupportsMaximize(false)
										   .SupportsMinimize(false);
	const TWeakPtr<SWindow> WeakWindow = Window;
	// clang-format off
	Window->SetContent(
		SNew(SBox)
		.Padding(FMargin(20.0f))
		[
			SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.FillHeight(1.0f)
			[
				SNew(STextBlock)
				.Text(FText::FromString(BuildStatusReport()))
			]
			+ SVerticalBox::Slot()
			.AutoHeight()
			.Padding(0.0f, 20.0f, 0.0f, 0.0f)
			[
				SNew(SButton)
				.Text(LOCTEXT("IndexStatusClose", "Close"))
				.OnClicked_Lambda([WeakWindow] {
					if (const TSharedPtr<SWindow> Shown = WeakWindow.Pin())
					{
						Shown->RequestDestroyWindow();
					}
					return FReply::Handled();
				})
			]
		]);
	// clang-format on
	FSlateApplication::Get().AddModalWindow(Window, nullptr);
}

#undef LOCTEXT_NAMESPACE
