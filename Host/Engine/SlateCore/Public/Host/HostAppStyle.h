#pragma once

#include "CoreMinimal.h"

/** Makes the editor's look. The program and the tests call this once before any widget is made. */
class SLATECORE_API FHostAppStyle
{
public:
	/** @param IconFolder  Folder of the picture files, such as "Icons.Help.png". */
	static void Initialize(const FString& IconFolder);
};
