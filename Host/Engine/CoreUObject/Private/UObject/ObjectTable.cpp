#include "UObject/ObjectTable.h"

#include "UObject/UObjectGlobals.h"

FHostObjectTable& FHostObjectTable::Get()
{
	static FHostObjectTable Table;
	return Table;
}

const FHostObjectTable::FBirth*& FHostObjectTable::CurrentBirth()
{
	static thread_local const FBirth* Birth = nullptr;
	return Birth;
}

void FHostObjectTable::Keep(TUniquePtr<UObject> Object)
{
	ByPath.Add(Object->GetPathName(), Object.Get());
	Objects.push_back(MoveTemp(Object));
}

UObject* FHostObjectTable::Make(const FBirth& Birth, UClass::FMakeObject MakeObject)
{
	const std::lock_guard<std::recursive_mutex> Lock(Mutex);
	const FBirth*& Current = CurrentBirth();
	const FBirth* const Outer = Current;
	Current = &Birth;
	TUniquePtr<UObject> Made = MakeObject();
	Current = Outer;
	UObject* Object = Made.Get();
	Keep(MoveTemp(Made));
	return Object;
}

UObject* FHostObjectTable::Find(const FString& PathName)
{
	const std::lock_guard<std::recursive_mutex> Lock(Mutex);
	UObject* Object = ByPath.FindRef(PathName);
	return IsValid(Object) ? Object : nullptr;
}

UClass* FHostObjectTable::MakeClass(const TCHAR* CppName, const TCHAR* Module, UClass* SuperClass, UClass::FMakeObject MakeObject)
{
	const std::lock_guard<std::recursive_mutex> Lock(Mutex);
	FBirth Birth;
	// The class of classes and the class of packages are made before they can be named as such.
	const FString Cpp(CppName);
	const bool bBase = Cpp.Equals(TEXT("UObject")) || Cpp.Equals(TEXT("UClass")) || Cpp.Equals(TEXT("UPackage"));
	Birth.Class = bBase ? nullptr : UClass::StaticClass();
	Birth.Outer = bBase ? nullptr : GetPackage(FString(TEXT("/Script/")) + Module);
	Birth.Name = FName(*Cpp.RightChop(1));
	Birth.Flags = RF_Public;
	UClass* Class = static_cast<UClass*>(Make(Birth, []() -> TUniquePtr<UObject> { return MakeUnique<UClass>(); }));
	Class->SuperClass = SuperClass;
	Class->MakeObject = MakeObject;
	return Class;
}

UObject* FHostObjectTable::GetDefaultObject(UClass& Class)
{
	const std::lock_guard<std::recursive_mutex> Lock(Mutex);
	if (!Class.DefaultObject && Class.MakeObject)
	{
		FBirth Birth;
		Birth.Class = &Class;
		Birth.Outer = Class.GetOuter();
		Birth.Name = FName(*(FString(TEXT("Default__")) + Class.GetName()));
		Birth.Flags = EObjectFlags(RF_Public | RF_ClassDefaultObject);
		Class.DefaultObject = Make(Birth, Class.MakeObject);
		Class.DefaultObject->LoadConfig();
		Class.DefaultObject->PostInitProperties();
	}
	return Class.DefaultObject;
}

UPackage* FHostObjectTable::GetPackage(const FString& Name)
{
	const std::lock_guard<std::recursive_mutex> Lock(Mutex);
	if (UObject* Existing = Find(Name))
	{
		return static_cast<UPackage*>(Existing);
	}
	FBirth Birth;
	Birth.Class = UPackage::StaticClass();
	Birth.Name = FName(*Name);
	Birth.Flags = RF_Public;
	return static_cast<UPackage*>(Make(Birth, []() -> TUniquePtr<UObject> { return MakeUnique<UPackage>(); }));
}

FName FHostObjectTable::MakeUniqueName(UObject* Outer, const FString& Base)
{
	const std::lock_guard<std::recursive_mutex> Lock(Mutex);
	const FString Prefix = (Outer ? Outer->GetPathName() + TEXT(".") : FString()) + Base;
	int32& Next = NextNumbers.FindOrAdd(Prefix);
	while (ByPath.Contains(Prefix + TEXT("_") + FString::FromInt(Next)))
	{
		++Next;
	}
	return FName(*(Base + TEXT("_") + FString::FromInt(Next++)));
}
