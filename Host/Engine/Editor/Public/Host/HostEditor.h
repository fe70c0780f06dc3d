#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Templates/Function.h"

class UObject;

/** A source file that was asked for. */
struct FHostOpenedSource
{
	FString Path;
	int32 Line = 0;
	int32 Column = 0;
};

/** The program's side of the editor interfaces. Game thread. */
class EDITOR_API FHostEditor
{
public:
	/** Makes GEditor. A second call changes nothing. */
	static void StartUp();
	/** GEditor becomes null, hooks and records are emptied. */
	static void ShutDown();

	/** Returns whether the asset was opened. Without a hook the request is recorded, logged and counts as opened. */
	static void SetOpenAssetHook(TFunction<bool(UObject* Asset)> Hook);
	/** The same for source files, which exist when the hook is called. */
	static void SetOpenSourceHook(TFunction<bool(const FHostOpenedSource& Source)> Hook);

	/** Told of source files that do not exist, so that the user hears of it: who asks for one does not look at the result. */
	static void SetMissingSourceHook(TFunction<void(const FString& Path)> Hook);

	/** Path names of the assets asked for so far, oldest first, with or without a hook. */
	static const TArray<FString>& GetOpenedAssets();
	static const TArray<FHostOpenedSource>& GetOpenedSources();
	static void ClearRecords();

	/** The services themselves, for the engine interfaces in front of them. */
	static bool OpenAsset(UObject* Asset);
	static bool OpenSource(const FHostOpenedSource& Source);
	static void TellMissingSource(const FString& Path);
};
