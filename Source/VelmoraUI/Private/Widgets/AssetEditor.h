#pragma once

#include "CoreMinimal.h"

/** Opens the editor of an asset by its object path, such as "/Game/Maps/Start". An asset that does not load opens nothing. */
void OpenAssetEditor(const FString& ObjectPath);
