#pragma once

#include "Containers/Map.h"
#include "Templates/UniquePtr.h"
#include "UObject/Class.h"

#include <mutex>
#include <vector>

/** Owns every object of the process and knows them by path name. */
class FHostObjectTable
{
public:
	static FHostObjectTable& Get();

	/** What the constructor of the object that is being made takes as its own. */
	struct FBirth
	{
		UClass* Class = nullptr;
		UObject* Outer = nullptr;
		FName Name;
		EObjectFlags Flags = RF_NoFlags;
	};
	/** The birth under way on this thread, null when there is none. */
	static const FBirth*& CurrentBirth();

	UObject* Make(const FBirth& Birth, UClass::FMakeObject MakeObject);
	UObject* Find(const FString& PathName);
	UClass* MakeClass(const TCHAR* CppName, const TCHAR* Module, UClass* SuperClass, UClass::FMakeObject MakeObject);
	UObject* GetDefaultObject(UClass& Class);
	/** A package by its long name, made at the first call. */
	UPackage* GetPackage(const FString& Name);
	/** "Name_0", "Name_1", ...: a name that the outer does not have yet. */
	FName MakeUniqueName(UObject* Outer, const FString& Base);

	/** The state of objects' births. Recursive: a constructor may make further objects. */
	std::recursive_mutex Mutex;

private:
	FHostObjectTable() = default;
	void Keep(TUniquePtr<UObject> Object);

	std::vector<TUniquePtr<UObject>> Objects;
	TMap<FString, UObject*> ByPath;
	TMap<FString, int32> NextNumbers;
};
