#pragma once

#include "Containers/StringView.h"
#include "Templates/Casts.h"
#include "UObject/Class.h"
#include "UObject/Object.h"

/**
 * Finds the asset of an object path "/Game/Folder/Asset" or "/Game/Folder/Asset.Asset" in the project's content
 * folder. There must be a file "Folder/Asset.uasset" or ".umap" at the time of the call; the same path gives the same
 * object. The object is a plain UObject that knows its names: the host does not read what is in the file. Paths that
 * would leave the content folder are refused. Game thread.
 *
 * @param LoadFlags  LOAD_NoWarn or LOAD_Quiet keep the warning out of the log.
 * @return nullptr when there is no such asset or it is not of the class.
 */
COREUOBJECT_API UObject* StaticLoadObject(
	UClass* Class, UObject* Outer, FStringView Name, FStringView Filename = FStringView(), uint32 LoadFlags = LOAD_None);

/** An object that was made or loaded before, by path name. Letter case is ignored. */
COREUOBJECT_API UObject* StaticFindObject(UClass* Class, UObject* Outer, FStringView Name);

/** With NAME_None the object gets its class's name and a number. */
COREUOBJECT_API UObject* StaticConstructObject(UClass* Class, UObject* Outer, FName Name, EObjectFlags Flags);
/** The package that objects without an outer are put in. */
COREUOBJECT_API UPackage* GetTransientPackage();

template <typename T>
T* NewObject(UObject* Outer = nullptr, FName Name = NAME_None, EObjectFlags Flags = RF_NoFlags)
{
	return static_cast<T*>(StaticConstructObject(T::StaticClass(), Outer, Name, Flags));
}
template <typename T>
T* NewObject(UObject* Outer, const UClass* Class, FName Name = NAME_None, EObjectFlags Flags = RF_NoFlags)
{
	return static_cast<T*>(StaticConstructObject(const_cast<UClass*>(Class), Outer, Name, Flags));
}

template <typename T>
const T* GetDefault()
{
	return static_cast<const T*>(T::StaticClass()->GetDefaultObject());
}
template <typename T>
T* GetMutableDefault()
{
	return static_cast<T*>(T::StaticClass()->GetDefaultObject());
}
