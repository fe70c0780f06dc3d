#pragma once

#include "Templates/Function.h"
#include "Templates/UniquePtr.h"
#include "UObject/Object.h"

/** The run-time description of a class. One per class, made when StaticClass is first called. */
class COREUOBJECT_API UClass : public UObject
{
public:
	static UClass* StaticClass();

	using FMakeObject = TUniquePtr<UObject> (*)();
	/**
	 * Makes the class. For IMPLEMENT_HOST_CLASS.
	 * @param CppName  With its prefix letter, which the class's own name does not carry.
	 * @param Module   Names the package "/Script/Module".
	 */
	static UClass* Register(const TCHAR* CppName, const TCHAR* Module, UClass* SuperClass, FMakeObject MakeObject);

	/** True for the class itself. */
	bool IsChildOf(const UClass* Other) const;
	template <typename T>
	bool IsChildOf() const
	{
		return IsChildOf(T::StaticClass());
	}
	/** Made, and its configuration loaded, at the first call. Any thread, but the first call belongs to the game thread. */
	UObject* GetDefaultObject();
	/** Makes one object of the class; only within the making of a named object. */
	FMakeObject GetFactory() const { return MakeObject; }

private:
	friend class FHostObjectTable;
	UClass* SuperClass = nullptr;
	FMakeObject MakeObject = nullptr;
	UObject* DefaultObject = nullptr;
};

/** The outermost object of an asset; its name is the asset's long package name. */
class COREUOBJECT_API UPackage : public UObject
{
	GENERATED_BODY()
};

/**
 * Once per hand-written class, in its source file: its StaticClass. Module is a narrow literal.
 * The class needs GENERATED_BODY() and a default constructor.
 */
#define IMPLEMENT_HOST_CLASS(ClassName, SuperClassName, ModuleName) \
	UClass* ClassName::StaticClass() \
	{ \
		static UClass* const Class = UClass::Register(TEXT(#ClassName), TEXT(ModuleName), SuperClassName::StaticClass(), \
			[]() -> TUniquePtr<UObject> { return TUniquePtr<UObject>(new ClassName()); }); \
		return Class; \
	}
