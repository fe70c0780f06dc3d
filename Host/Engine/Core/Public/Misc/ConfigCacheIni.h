#pragma once

#include "Containers/UnrealString.h"

/** Configuration values by section, key and file; a face of the host's store (Host/HostConfigStore.h). Any thread. */
class CORE_API FConfigCacheIni
{
public:
	/** False, with OutValue left as it was, when the key is not there or is no value of the type. */
	bool GetString(const TCHAR* Section, const TCHAR* Key, FString& OutValue, const FString& File) const;
	bool GetInt(const TCHAR* Section, const TCHAR* Key, int32& OutValue, const FString& File) const;
	bool GetFloat(const TCHAR* Section, const TCHAR* Key, float& OutValue, const FString& File) const;
	bool GetBool(const TCHAR* Section, const TCHAR* Key, bool& OutValue, const FString& File) const;
	void SetString(const TCHAR* Section, const TCHAR* Key, const TCHAR* Value, const FString& File);
	void Flush(bool bRemoveFromCache, const FString& File);
};

/** Never null. */
extern CORE_API FConfigCacheIni* GConfig;
/** Names of the two configurations that are written at run time. */
extern CORE_API FString GEditorPerProjectIni;
extern CORE_API FString GEngineIni;
