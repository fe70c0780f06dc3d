#pragma once

#include "Containers/StringView.h"

#include <string>

// Between TCHAR and UTF-8. Invalid input gives one U+FFFD for each bad sequence, a lone surrogate too.

/** UTF-8 of UTF-16 text. The result lives as long as the object. */
class FTCHARToUTF8
{
public:
	explicit FTCHARToUTF8(const TCHAR* Text)
		: FTCHARToUTF8(FStringView(Text))
	{
	}
	explicit FTCHARToUTF8(FStringView Text) { Append(Result, Text); }
	FTCHARToUTF8(const TCHAR* Text, int32 Length)
		: FTCHARToUTF8(FStringView(Text, Length))
	{
	}
	const ANSICHAR* Get() const { return Result.c_str(); }
	operator const ANSICHAR*() const { return Get(); }
	/** Bytes, without the ending null. */
	int32 Length() const { return (int32)Result.size(); }
	static CORE_API void Append(std::string& Out, FStringView Text);

private:
	std::string Result;
};

/** UTF-16 of UTF-8 text. The result lives as long as the object. */
class FUTF8ToTCHAR
{
public:
	explicit FUTF8ToTCHAR(const ANSICHAR* Text)
		: FUTF8ToTCHAR(Text, Text ? (int32)std::char_traits<char>::length(Text) : 0)
	{
	}
	FUTF8ToTCHAR(const ANSICHAR* Text, int32 Length) { Append(Result, Text, Length); }
	const TCHAR* Get() const { return Result.c_str(); }
	operator const TCHAR*() const { return Get(); }
	/** Units, without the ending null. */
	int32 Length() const { return (int32)Result.size(); }
	static CORE_API void Append(std::u16string& Out, const ANSICHAR* Text, int32 Length);

private:
	std::u16string Result;
};

using FTCHARToUTF8_Convert = FTCHARToUTF8;
using FUTF8ToTCHAR_Convert = FUTF8ToTCHAR;

namespace UE::StringConv
{
	template <typename To>
	struct TCast;
	template <>
	struct TCast<ANSICHAR>
	{
		using Type = FTCHARToUTF8;
	};
	template <>
	struct TCast<TCHAR>
	{
		using Type = FUTF8ToTCHAR;
	};
}

// The pointer is good to the end of the full expression only.
#define TCHAR_TO_UTF8(String) (FTCHARToUTF8((const TCHAR*)(String)).Get())
#define UTF8_TO_TCHAR(String) (FUTF8ToTCHAR((const ANSICHAR*)(String)).Get())
#define TCHAR_TO_ANSI(String) TCHAR_TO_UTF8(String)
#define ANSI_TO_TCHAR(String) UTF8_TO_TCHAR(String)
