#pragma once

#include "CoreMinimal.h"
#include "Framework/Commands/Commands.h"
#include "Templates/SharedPointer.h"

/** The commands that maintain the two code indexes, the project's and the engine source's. None has a default key. */
class VELMORAUI_API FCodeIntelCommands : public TCommands<FCodeIntelCommands>
{
public:
	FCodeIntelCommands();

	virtual void RegisterCommands() override;

	TSharedPtr<FUICommandInfo> RebuildIndex;
	TSharedPtr<FUICommandInfo> CompactIndex;
	TSharedPtr<FUICommandInfo> ReconcileIndex;
	TSharedPtr<FUICommandInfo> ViewStatus;
	TSharedPtr<FUICommandInfo> OpenSettings;
	TSharedPtr<FUICommandInfo> RebuildEngineIndex;
	TSharedPtr<FUICommandInfo> ClearEngineIndex;
	/** In no menu; reachable through the command list. */
	TSharedPtr<FUICommandInfo> ReconcileEngineIndex;
};
