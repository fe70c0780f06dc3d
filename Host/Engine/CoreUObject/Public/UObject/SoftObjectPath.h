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
	bool IsNull() const { return Path.IsEmpty(); }
	bool IsValid() const { return !IsNull(); }
	friend bool operator==(const FSoftObjectPath& A, const FSoftObjectPath& B) { return A.Path == B.Path; }

private:
	FString Path;
};
