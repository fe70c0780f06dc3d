#include "Misc/ConfigCacheIni.h"

#include "Host/HostConfigStore.h"

namespace
{
	FConfigCacheIni ProcessConfig;
}

FConfigCacheIni* GConfig = &ProcessConfig;
FString GEditorPerProjectIni = TEXT("EditorPerProjectUserSettings");
FString GEngineIni = TEXT("Engine");

bool FConfigCacheIni::GetString(const TCHAR* Section, const TCHAR* Key, FString& OutValue, const FString& File) const
{
	return IHostConfigStore::GetCurrent()->Get(File, Section, Key, OutValue);
}

bool FConfigCacheIni::GetInt(const TCHAR* Section, const TCHAR* Key, int32& OutValue, const FString& File) const
{
	FString Text;
	if (!GetString(Section, Key, Text, File) || !Text.IsNumeric())
	{
		return false;
	}
	OutValue = FCString::Atoi(*Text);
	return true;
}

bool FConfigCacheIni::GetFloat(const TCHAR* Section, const TCHAR* Key, float& OutValue, const FString& File) const
{
	FString Text;
	if (!GetString(Section, Key, Text, File) || !Text.IsNumeric())
	{
		return false;
	}
	OutValue = FCString::Atof(*Text);
	return true;
}

bool FConfigCacheIni::GetBool(const TCHAR* Section, const TCHAR* Key, bool& OutValue, const FString& File) const
{
	FString Text;
	if (!GetString(Section, Key, Text, File) || Text.IsEmpty())
	{
		return false;
	}
	OutValue = Text.ToBool();
	return true;
}

void FConfigCacheIni::SetString(const TCHAR* Section, const TCHAR* Key, const TCHAR* Value, const FString& File)
{
	IHostConfigStore::GetCurrent()->Set(File, Section, Key, Value);
}

void FConfigCacheIni::SetInt(const TCHAR* Section, const TCHAR* Key, int32 Value, const FString& File)
{
	SetString(Section, Key, *FString::FromInt(Value), File);
}

void FConfigCacheIni::SetFloat(const TCHAR* Section, const TCHAR* Key, float Value, const FString& File)
{
	SetString(Section, Key, *FString::SanitizeFloat(double(Value)), File);
}

void FConfigCacheIni::SetBool(const TCHAR* Section, const TCHAR* Key, bool Value, const FString& File)
{
	SetString(Section, Key, Value ? TEXT("True") : TEXT("False"), File);
}

bool FConfigCacheIni::RemoveKey(const TCHAR* Section, const TCHAR* Key, const FString& File)
{
	FString Old;
	const bool bFound = GetString(Section, Key, Old, File);
	IHostConfigStore::GetCurrent()->Remove(File, Section, Key);
	return bFound;
}

void FConfigCacheIni::Flush(bool bRemoveFromCache, const FString& File)
{
	IHostConfigStore::GetCurrent()->Flush(File);
}
