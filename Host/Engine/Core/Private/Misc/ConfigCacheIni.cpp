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

void FConfigCacheIni::Flush(bool bRemoveFromCache, const FString& File)
{
	IHostConfigStore::GetCurrent()->Flush(File);
}
