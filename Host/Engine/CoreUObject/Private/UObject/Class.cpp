#include "UObject/Class.h"

#include "UObject/ObjectTable.h"

UClass* UObject::StaticClass()
{
	static UClass* const Class =
		UClass::Register(TEXT("UObject"), TEXT("CoreUObject"), nullptr, []() -> TUniquePtr<UObject> { return MakeUnique<UObject>(); });
	return Class;
}

UClass* UClass::StaticClass()
{
	static UClass* const Class = UClass::Register(
		TEXT("UClass"), TEXT("CoreUObject"), UObject::StaticClass(), []() -> TUniquePtr<UObject> { return MakeUnique<UClass>(); });
	return Class;
}

IMPLEMENT_HOST_CLASS(UPackage, UObject, "CoreUObject")

UClass* UClass::Register(const TCHAR* CppName, const TCHAR* Module, UClass* SuperClass, FMakeObject MakeObject)
{
	return FHostObjectTable::Get().MakeClass(CppName, Module, SuperClass, MakeObject);
}

bool UClass::IsChildOf(const UClass* Other) const
{
	for (const UClass* Class = this; Class; Class = Class->SuperClass)
	{
		if (Class == Other)
		{
			return true;
		}
	}
	return false;
}

UObject* UClass::GetDefaultObject()
{
	return FHostObjectTable::Get().GetDefaultObject(*this);
}
