#include "Commands/CodeIntelCommands.h"

#include "Styling/AppStyle.h"

#define LOCTEXT_NAMESPACE "CodeIntelCommands"

FCodeIntelCommands::FCodeIntelCommands()
	: TCommands<FCodeIntelCommands>(
		  TEXT("CodeIntel"), NSLOCTEXT("Contexts", "CodeIntel", "Code Intelligence"), NAME_None, FAppStyle::GetAppStyleSetName())
{
}

void FCodeIntelCommands::RegisterCommands()
{
	UI_COMMAND(RebuildIndex, "Rebuild Index", "Rebuild the entire code intelligence index from scratch", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(CompactIndex, "Compact Index", "Compact the index to remove stale data and reduce size", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(ReconcileIndex, "Reconcile Index", "Scan filesystem for files added or deleted while editor was closed",
		EUserInterfaceActionType::Button, FInputChord());
	UI_COMMAND(
		ViewStatus, "View Index Status", "View current index status and statistics", EUserInterfaceActionType::Button, FInputChord());
	UI_COMMAND(
		OpenSettings, "Code Index Settings", "Open code intelligence settings panel", EUserInterfaceActionType::Button, FInputChord());
	UI_COMMAND(RebuildEngineIndex, "Rebuild Engine Index",
		"Build or rebuild the Unreal Engine source code index (may take several minutes)", EUserInterfaceActionType::Button, FInputChord());
	UI_COMMAND(ClearEngineIndex, "Clear Engine Index", "Delete the engine index to reclaim disk space", EUserInterfaceActionType::Button,
		FInputChord());
	UI_COMMAND(ReconcileEngineIndex, "Reconcile Engine Index", "Scan engine filesystem for files added or deleted while editor was closed",
		EUserInterfaceActionType::Button, FInputChord());
}

#undef LOCTEXT_NAMESPACE
