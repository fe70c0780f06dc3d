#include "Widgets/AssetEditor.h"

#include "Editor.h"
#include "Subsystems/AssetEditorSubsystem.h"
#include "UObject/Class.h"
#include "UObject/UObjectGlobals.h"

void OpenAssetEditor(const FString& ObjectPath)
{
	UAssetEditorSubsystem* Editors = GEditor != nullptr ? GEditor->GetEditorSubsystem<UAssetEditorSubsystem>() : nullptr;
	if (Editors == nullptr)
	{
		return;
	}
	if (UObject* Asset = StaticLoadObject(UObject::StaticClass(), nullptr, *ObjectPath))
	{
		Editors->OpenEditorForAsset(Asset);
	}
}
