#include "UObject/UObjectGlobals.h"

#include "HAL/FileManager.h"
#include "Host/HostAssets.h"
#include "Logging/LogMacros.h"
#include "Misc/Paths.h"
#include "UObject/ObjectTable.h"
#include "UObject/SoftObjectPath.h"

DEFINE_LOG_CATEGORY_STATIC(LogUObjectGlobals, Log, All);

namespace
{
	const TCHAR* const GameRoot = TEXT("/Game/");

	/** The object of an asset whose file is there. */
	UObject* FindOrMakeAsset(const FString& PackageName, const FString& AssetName)
	{
		FHostObjectTable& Table = FHostObjectTable::Get();
		if (UObject* Existing = Table.Find(PackageName + TEXT(".") + AssetName))
		{
			return Existing;
		}
		FHostObjectTable::FBirth Birth;
		Birth.Class = UObject::StaticClass();
		Birth.Outer = Table.GetPackage(PackageName);
		Birth.Name = FName(*AssetName);
		Birth.Flags = EObjectFlags(RF_Public | RF_Standalone);
		return Table.Make(Birth, []() -> TUniquePtr<UObject> { return MakeUnique<UObject>(); });
	}
}

bool FHostAssets::SplitObjectPath(FStringView ObjectPath, FString& OutPackageName, FString& OutAssetName)
{
	FString Path(ObjectPath);
	int32 Quote = INDEX_NONE;
	if (Path.FindChar(TEXT('\''), Quote) && Path.EndsWith(TEXT("'")))
	{
		Path = Path.Mid(Quote + 1, Path.Len() - Quote - 2);
	}
	int32 Forbidden = INDEX_NONE;
	if (!Path.StartsWith(GameRoot) || Path.FindChar(TEXT('\\'), Forbidden) || Path.FindChar(TEXT('\0'), Forbidden))
	{
		return false;
	}
	TArray<FString> Parts;
	Path.RightChop(1).ParseIntoArray(Parts, TEXT("/"), false);
	for (const FString& Part : Parts)
	{
		if (Part.IsEmpty() || Part[0] == TEXT('.'))
		{
			return false;
		}
	}
	const FString& Last = Parts.Last();
	int32 Dot = INDEX_NONE;
	if (Last.FindChar(TEXT('.'), Dot))
	{
		OutAssetName = Last.RightChop(Dot + 1);
		OutPackageName = Path.LeftChop(Last.Len() - Dot);
	}
	else
	{
		OutAssetName = Last;
		OutPackageName = Path;
	}
	return !OutAssetName.IsEmpty();
}

FString FHostAssets::FindAssetFile(FStringView ObjectPath)
{
	FString PackageName;
	FString AssetName;
	if (SplitObjectPath(ObjectPath, PackageName, AssetName))
	{
		const FString File = FPaths::ProjectContentDir() / PackageName.RightChop(FCString::Strlen(GameRoot));
		for (const TCHAR* Extension : { TEXT(".uasset"), TEXT(".umap") })
		{
			if (IFileManager::Get().FileExists(*(File + Extension)))
			{
				return File + Extension;
			}
		}
	}
	return FString();
}

UObject* StaticLoadObject(UClass* Class, UObject* Outer, FStringView Name, FStringView Filename, uint32 LoadFlags)
{
	FString PackageName;
	FString AssetName;
	UObject* Object = nullptr;
	if (!FHostAssets::FindAssetFile(Name).IsEmpty() && FHostAssets::SplitObjectPath(Name, PackageName, AssetName) &&
		FPaths::GetCleanFilename(PackageName) == AssetName)
	{
		Object = FindOrMakeAsset(PackageName, AssetName);
	}
	if (Object && Class && !Object->IsA(Class))
	{
		Object = nullptr;
	}
	UE_CLOG(!Object && !(LoadFlags & (LOAD_NoWarn | LOAD_Quiet)), LogUObjectGlobals, Warning, TEXT("Failed to find object '%s %s'"),
		*(Class ? Class->GetName() : FString(TEXT("Object"))), *FString(Name));
	return Object;
}

UObject* StaticFindObject(UClass* Class, UObject* Outer, FStringView Name)
{
	const FString Path = Outer ? Outer->GetPathName() + TEXT(".") + Name : FString(Name);
	UObject* Object = FHostObjectTable::Get().Find(Path);
	return Object && (!Class || Object->IsA(Class)) ? Object : nullptr;
}

UPackage* GetTransientPackage()
{
	return FHostObjectTable::Get().GetPackage(TEXT("/Engine/Transient"));
}

UObject* StaticConstructObject(UClass* Class, UObject* Outer, FName Name, EObjectFlags Flags)
{
	check(Class != nullptr);
	FHostObjectTable& Table = FHostObjectTable::Get();
	FHostObjectTable::FBirth Birth;
	Birth.Class = Class;
	Birth.Outer = Outer ? Outer : GetTransientPackage();
	Birth.Name = Name.IsNone() ? Table.MakeUniqueName(Birth.Outer, Class->GetName()) : Name;
	Birth.Flags = Flags;
	UObject* Object = Table.Make(Birth, Class->GetFactory());
	Object->PostInitProperties();
	return Object;
}
