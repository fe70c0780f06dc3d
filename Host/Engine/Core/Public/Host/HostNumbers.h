#pragma once

#include "Containers/UnrealString.h"

#include <charconv>

// Numbers as texts, whatever the locale: the one way below the engine's own formatting. Pure.

/** The shortest digits that read back as the same number, unless a format (and a precision) of std::to_chars says otherwise. */
template <typename FNumber, typename... FFormat>
void HostAppendNumber(FString& Out, FNumber Value, FFormat... Format)
{
	char Buffer[400]; // Without an exponent the largest double has 309 digits, the smallest 324 after the point and 17 of its own.
	const std::to_chars_result Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value, Format...);
	for (const char* Position = Buffer; Position != Result.ptr; ++Position)
	{
		Out.AppendChar(TCHAR(*Position));
	}
}

template <typename FNumber, typename... FFormat>
FString HostNumberToText(FNumber Value, FFormat... Format)
{
	FString Text;
	HostAppendNumber(Text, Value, Format...);
	return Text;
}
