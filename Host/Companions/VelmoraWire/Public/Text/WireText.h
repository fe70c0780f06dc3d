#pragma once

#include <string>
#include <string_view>

#include "CoreMinimal.h"

/** Bytes on their way to a server and back. All pure. */
namespace Velmora::WireText
{
	/** Well-formed UTF-8 as the standard has it: no surrogates, no overlong forms, nothing beyond U+10FFFF. */
	VELMORAWIRE_API bool IsUtf8(std::string_view Bytes);

	/** What is no UTF-8 becomes U+FFFD; what is stays to the byte. */
	VELMORAWIRE_API std::string RepairUtf8(std::string Bytes);

	/** Adds a text as a value of JSON, in quotes. What is no UTF-8 becomes U+FFFD. */
	VELMORAWIRE_API void AppendQuoted(std::string& Out, std::string_view Text);

	/** At most that many bytes, cut between characters. */
	VELMORAWIRE_API std::string_view CutUtf8(std::string_view Text, size_t MaxBytes);

	/** How many bytes at the end of a text may be the beginning of a mark, whose rest has not come. */
	VELMORAWIRE_API size_t MeasurePartialMark(std::string_view Text, std::string_view Mark);

	/** Takes a key out of a text that came from outside. A key of less than 8 bytes is none worth hiding. */
	VELMORAWIRE_API void HideKey(std::string& Text, std::string_view Key);
}
