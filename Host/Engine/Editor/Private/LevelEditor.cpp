#include "LevelEditor.h"

#include "Host/HostLevelEditor.h"
#include "Host/HostModules.h"

FLevelEditorModule::FLevelEditorModule()
	: MenuExtensibilityManager(MakeShared<FExtensibilityManager>())
{
}

FLevelEditorModule::~FLevelEditorModule() = default;

void FHostLevelEditor::Install()
{
	const FName Name(TEXT("LevelEditor"));
	FHostModules::Register(Name, []() -> TUniquePtr<IModuleInterface> { return TUniquePtr<IModuleInterface>(new FLevelEditorModule()); });
	FModuleManager::Get().LoadModule(Name);
}

TSharedRef<FExtender> FHostLevelEditor::GetMenuExtenders()
{
	FLevelEditorModule* const Module = FModuleManager::GetModulePtr<FLevelEditorModule>(TEXT("LevelEditor"));
	return Module ? Module->GetMenuExtensibilityManager()->GetAllExtenders().ToSharedRef() : MakeShared<FExtender>();
}
