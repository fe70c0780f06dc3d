#pragma once

#include "Framework/MultiBox/MultiBoxExtender.h"
#include "Modules/ModuleManager.h"

/** The module "LevelEditor": who extends the main menu comes here. Game thread. */
class EDITOR_API FLevelEditorModule : public IModuleInterface
{
public:
	FLevelEditorModule();
	virtual ~FLevelEditorModule() override;

	virtual TSharedPtr<FExtensibilityManager> GetMenuExtensibilityManager() { return MenuExtensibilityManager; }

private:
	const TSharedPtr<FExtensibilityManager> MenuExtensibilityManager;
};
