#include "HAL/PlatformApplicationMisc.h"

#include "Host/HostServices.h"

void FPlatformApplicationMisc::ClipboardCopy(const TCHAR* Text)
{
	FHostServices::ClipboardCopy(FString(Text));
}

void FPlatformApplicationMisc::ClipboardPaste(FString& OutText)
{
	FHostServices::ClipboardPaste(OutText);
}
