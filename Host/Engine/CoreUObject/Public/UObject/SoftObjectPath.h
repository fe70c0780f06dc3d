#pragma once

#include "Containers/UnrealString.h"
#include "UObject/Object.h"

/** The path of an object that may not be loaded. */
struct COREUOBJECT_API FSoftObjectPath
{
	FSoftObjectPath() = default;
	explicit FSoftObjectPath(const FString& InPath)
		: Path(InPath)
	{
	}
	explicit FSoftObjectPath(const TCHAR* InPath)
		: Path(InPath)
	{
	}
	explicit FSoftObjectPath(const UObject* Object)
		: Path(Object ? Object->GetPathName() : FString())
	{
	}

	const FString& ToString() const { return Path; }
	/** "/Game/Folder/Asset" of "/Game/Folder/Asset.Asset". */
	FString GetLongPackageName() const;
	/** What stands behind the first dot. */
	FString GetAssetName() const;
	bool IsNull() const { return Path.IsEmpty(); }
	bool IsValid() const { return !IsNull(); }
	/** Loads it (StaticLoadObject). */
	UObject* TryLoad() const;
	/** The object if it was loaded before. */
	UObject* ResolveObject() const;
	friend bool operator==(const FSoftObjectPath& A, const FSoftObjectPath& B) { return A.Path == B.Path; }

private:
	FString Path;
};
