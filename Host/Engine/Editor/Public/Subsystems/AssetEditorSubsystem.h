#pragma once

#include "Containers/UnrealString.h"
#include "EditorSubsystem.h"
#include "UObject/SoftObjectPath.h"

/** Opens editors for assets; what that means here is the program's affair (FHostEditor). Game thread. */
class EDITOR_API UAssetEditorSubsystem : public UEditorSubsystem
{
	GENERATED_BODY()

public:
	/** @return Whether an editor was opened. Null and garbage open nothing. */
	bool OpenEditorForAsset(UObject* Asset);
	/** Loads the asset first; a path that cannot be loaded is logged. */
	void OpenEditorForAsset(const FString& AssetPath);
	void OpenEditorForAsset(const TCHAR* AssetPath) { OpenEditorForAsset(FString(AssetPath)); }
	void OpenEditorForAsset(const FSoftObjectPath& AssetPath);
};
