#pragma once

#include "Containers/UnrealString.h"

/** The clipboard, as the program or a test has connected it (FHostServices). */
struct CORE_API FPlatformApplicationMisc
{
	static void ClipboardCopy(const TCHAR* Text);
	/** Empty when the clipboard holds no text. */
	static void ClipboardPaste(FString& OutText);
};
