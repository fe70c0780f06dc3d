#pragma once

#include "CoreMinimal.h"
#include "Fuzz/FuzzInput.h"
#include "Host/HostFileNames.h"

/** A text of any units: bytes that are no UTF-8 become lone halves of pairs. */
inline FString MakeFuzzText(std::string_view Bytes)
{
	return HostFileNameFromBytes(Bytes);
}
