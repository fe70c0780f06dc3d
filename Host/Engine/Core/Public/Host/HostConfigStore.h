#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Templates/SharedPointer.h"

/**
 * Where configuration values are kept: texts by file, section and key. The default store lives in memory and is gone
 * with the process; the program may put one that writes ini files in its place. Any thread.
 */
class CORE_API IHostConfigStore
{
public:
	virtual ~IHostConfigStore() = default;
	/** @param File  Name of a configuration ("EditorPerProjectUserSettings") or path of an ini file. */
	virtual bool Get(const FString& File, const FString& Section, const FString& Key, FString& OutValue) const = 0;
	virtual void Set(const FString& File, const FString& Section, const FString& Key, const FString& Value) = 0;
	virtual void Remove(const FString& File, const FString& Section, const FString& Key) = 0;
	/** Makes what was set last, at once or soon. @return False when it could not be written; the values stay in memory. */
	virtual bool Flush(const FString& File) = 0;

	static TSharedRef<IHostConfigStore> GetCurrent();
	/** Null takes a new store in memory. */
	static void SetCurrent(TSharedPtr<IHostConfigStore> Store);
};
