#pragma once

#include "HAL/Platform.h"

/**
 * Classes and case of UTF-16 units. Never depends on the process locale. Surrogates are in no class and have no case.
 */
struct FChar
{
	/** Letters and decimal digits of the Basic Multilingual Plane. */
	static bool IsAlnum(TCHAR Char) { return Char < 128 ? IsDigit(Char) || IsAsciiLetter(Char) : IsAlnumSlow(Char); }
	static bool IsAlpha(TCHAR Char) { return Char < 128 ? IsAsciiLetter(Char) : IsAlphaSlow(Char); }
	static bool IsUpper(TCHAR Char) { return Char < 128 ? Char >= 'A' && Char <= 'Z' : IsUpperSlow(Char); }
	static bool IsLower(TCHAR Char) { return Char < 128 ? Char >= 'a' && Char <= 'z' : IsLowerSlow(Char); }
	/** ASCII 0 to 9. */
	static constexpr bool IsDigit(TCHAR Char) { return Char >= '0' && Char <= '9'; }
	static constexpr bool IsHexDigit(TCHAR Char) { return IsDigit(Char) || (Char >= 'a' && Char <= 'f') || (Char >= 'A' && Char <= 'F'); }
	static bool IsWhitespace(TCHAR Char) { return Char < 128 ? Char == ' ' || (Char >= 9 && Char <= 13) : IsWhitespaceSlow(Char); }

	/** One unit to one unit. */
	static TCHAR ToLower(TCHAR Char) { return Char < 128 ? (TCHAR)(Char + (Char >= 'A' && Char <= 'Z' ? 32 : 0)) : ToLowerSlow(Char); }
	static TCHAR ToUpper(TCHAR Char) { return Char < 128 ? (TCHAR)(Char - (Char >= 'a' && Char <= 'z' ? 32 : 0)) : ToUpperSlow(Char); }

private:
	static constexpr bool IsAsciiLetter(TCHAR Char) { return (Char >= 'a' && Char <= 'z') || (Char >= 'A' && Char <= 'Z'); }
	CORE_API static bool IsAlnumSlow(TCHAR Char);
	CORE_API static bool IsAlphaSlow(TCHAR Char);
	CORE_API static bool IsUpperSlow(TCHAR Char);
	CORE_API static bool IsLowerSlow(TCHAR Char);
	CORE_API static bool IsWhitespaceSlow(TCHAR Char);
	CORE_API static TCHAR ToLowerSlow(TCHAR Char);
	CORE_API static TCHAR ToUpperSlow(TCHAR Char);
};
