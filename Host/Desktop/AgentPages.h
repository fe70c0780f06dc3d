#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

class SWidget;

/** The pages "Connections" and "Permissions" of the settings tab. Lives as long as they can be shown. Game thread. */
class FAgentPages
{
public:
	/** Needs the module "Settings". */
	FAgentPages();
	~FAgentPages();
	FAgentPages(const FAgentPages&) = delete;
	FAgentPages& operator=(const FAgentPages&) = delete;

	static FName GetConnectionsName() { return FName(TEXT("Connections")); }
	static FName GetPermissionsName() { return FName(TEXT("Permissions")); }

	/** Opens the settings at one of the pages. */
	static void Show(FName Page);

private:
	// The settings hold pages weakly.
	TSharedPtr<SWidget> Connections;
	TSharedPtr<SWidget> Permissions;
};
