#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

class FUICommandList;

/**
 * When the commands of the code indexes may run, and what they do. A handler may be run by other means than a menu, so it
 * checks again and reports by a toast why it does nothing. Game thread; long work runs on a thread of its own.
 */
class VELMORAUI_API FCodeIntelCommandActions
{
public:
	/** Maps every command of FCodeIntelCommands, which must be registered. */
	static void RegisterHandlers(TSharedPtr<FUICommandList> List);
	/**
	 * What the handlers have started, and is still running, is waited for up to a second; what takes longer ends without a word. Its
	 * open toasts go. For the module's end.
	 */
	static void CutOffRunningWork();

	static bool CanExecuteIndexOperation();
	static bool CanExecuteReconcile();
	static bool CanExecuteEngineIndexOperation();
	static bool CanExecuteEngineReconcile();

	static void HandleRebuildIndex();
	static void HandleCompactIndex();
	static void HandleReconcileIndex();
	/** Shows a report in a modal window. */
	static void HandleViewStatus();
	static void HandleOpenSettings();
	static void HandleRebuildEngineIndex();
	/** Without a question. */
	static void HandleClearEngineIndex();
	static void HandleReconcileEngineIndex();

private:
	static FString BuildStatusReport();
};
