#pragma once

#include "Framework/MultiBox/MultiBoxExtender.h"

/** The program's side of the module "LevelEditor". Game thread. */
class EDITOR_API FHostLevelEditor
{
public:
	/** Makes the module loadable and loads it, so that modules that come later can extend the main menu. */
	static void Install();
	/** What was added to the main menu so far; empty before Install. */
	static TSharedRef<FExtender> GetMenuExtenders();
};
