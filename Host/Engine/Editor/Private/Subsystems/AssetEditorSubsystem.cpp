#include "Subsystems/AssetEditorSubsystem.h"

#include "Host/HostEditor.h"
#include "UObject/UObjectGlobals.h"

IMPLEMENT_HOST_CLASS(UAssetEditorSubsystem, UEditorSubsystem, "UnrealEd")

bool UAssetEditorSubsystem::OpenEditorForAsset(UObject* Asset)
{
	return IsValid(Asset) && FHostEditor::OpenAsset(Asset);
}

void UAssetEditorSubsystem::OpenEditorForAsset(const FString& AssetPath)
{
	OpenEditorForAsset(StaticLoadObject(UObject::StaticClass(), nullptr, AssetPath));
}

void UAssetEditorSubsystem::OpenEditorForAsset(const FSoftObjectPath& AssetPath)
{
	OpenEditorForAsset(AssetPath.ToString());
}
