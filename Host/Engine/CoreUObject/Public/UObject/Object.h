#pragma once

#include "Containers/UnrealString.h"
#include "Templates/UniquePtr.h"
#include "UObject/NameTypes.h"
#include "UObject/ObjectMacros.h"

class FConfigCacheIni;
class FHostConfigVisitor;
class UClass;
class UPackage;

/**
 * An object with a name, a class and an outer object. Made by NewObject, GetDefault or StaticLoadObject alone, and
 * kept until the process ends; MarkAsGarbage makes it invalid for IsValid and weak pointers, its memory stays.
 * Game thread, except for reading an object that nobody changes.
 */
class COREUOBJECT_API UObject
{
public:
	static UClass* StaticClass();

	UObject();
	virtual ~UObject();
	UObject(const UObject&) = delete;
	UObject& operator=(const UObject&) = delete;

	UClass* GetClass() const;
	UObject* GetOuter() const { return Outer; }
	/** The outermost outer, null when that is no package. */
	UPackage* GetPackage() const;
	FName GetFName() const { return Name; }
	FString GetName() const { return Name.ToString(); }
	/** Names from the outermost to this one: "/Game/Folder/Asset.Asset". */
	FString GetPathName() const;

	bool IsA(const UClass* OtherClass) const;
	template <typename T>
	bool IsA() const
	{
		return IsA(T::StaticClass());
	}
	/** Says that the object is no longer in use. Cannot be taken back. */
	void MarkAsGarbage() { bGarbage = true; }
	bool IsGarbage() const { return bGarbage; }

	/**
	 * Writes the properties that VisitConfigProperties names to the configuration store and flushes it. Of an object that
	 * was read from there only those that have changed since: what another program wrote meanwhile is not undone by an old
	 * value, nor by an empty one. The defaults take the configuration that the class names; PropertyFlags and Config are
	 * there for the call form.
	 */
	void SaveConfig(uint64 PropertyFlags = CPF_Config, const TCHAR* Filename = nullptr, FConfigCacheIni* Config = nullptr,
		bool bAllowCopyToDefaultObject = true);
	/** Reads them back; a property that the store does not hold, or holds in a form that cannot be read, is left as it is. */
	void LoadConfig(UClass* ConfigClass = nullptr, const TCHAR* Filename = nullptr);
	/** Name of the class's configuration. */
	FString GetDefaultConfigFilename() const;

	/** Shows every configuration property by name to the visitor, which reads or writes it. */
	virtual void VisitConfigProperties(FHostConfigVisitor& Visitor) {}
	/** Configuration that the class is kept in, as UCLASS(Config=...) would name it. */
	virtual FString GetConfigName() const;
	/** After construction, when name, class and default values are set. */
	virtual void PostInitProperties() {}

private:
	friend class FHostObjectTable;
	struct FConfigMemory;
	bool WriteConfig(const FString& File);

	UClass* Class = nullptr;
	UObject* Outer = nullptr;
	FName Name;
	EObjectFlags Flags = RF_NoFlags;
	bool bGarbage = false;
	/** What the store held of this object when it was last read or written. Null before. */
	TUniquePtr<FConfigMemory> ConfigMemory;
};

/** False for null and for garbage. */
inline bool IsValid(const UObject* Object)
{
	return Object && !Object->IsGarbage();
}
