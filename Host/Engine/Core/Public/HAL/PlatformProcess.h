#pragma once

#include "Containers/UnrealString.h"

namespace ELaunchVerb
{
	enum Type
	{
		Open,
		Edit,
	};
}

/** The running process and what it starts. Nothing is started here: both launch operations ask FHostServices. */
struct CORE_API FPlatformProcess
{
	/** @param Error  Filled with a sentence when the address could not be opened, else emptied. May be null. */
	static void LaunchURL(const TCHAR* Url, const TCHAR* Parms, FString* Error);
	static bool LaunchFileInDefaultExternalApplication(const TCHAR* FileName, const TCHAR* Parms = nullptr,
		ELaunchVerb::Type Verb = ELaunchVerb::Open, bool bPromptToOpenOnFailure = true);

	/** Real time, not the host clock. Not positive: gives the processor up once. */
	static void Sleep(float Seconds);

	/** Folder of the executable with a final slash. */
	static const TCHAR* BaseDir();
	/** Full path of the executable. */
	static const TCHAR* ExecutablePath();
};
