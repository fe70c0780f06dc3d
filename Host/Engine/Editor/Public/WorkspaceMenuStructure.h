#pragma once

#include "Framework/Docking/WorkspaceItem.h"
#include "Templates/SharedPointer.h"

/** The groups that the editor sorts its tabs into. Game thread. */
class EDITOR_API IWorkspaceMenuStructure
{
public:
	virtual ~IWorkspaceMenuStructure() = default;
	virtual TSharedRef<FWorkspaceItem> GetStructureRoot() const = 0;
	virtual TSharedRef<FWorkspaceItem> GetToolsCategory() const = 0;
	virtual TSharedRef<FWorkspaceItem> GetDeveloperToolsLogCategory() const = 0;
};
