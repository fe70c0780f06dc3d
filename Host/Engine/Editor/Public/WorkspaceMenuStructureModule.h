#pragma once

#include "WorkspaceMenuStructure.h"

namespace WorkspaceMenu
{
	/** Made at the first call. */
	EDITOR_API IWorkspaceMenuStructure& GetMenuStructure();
}
