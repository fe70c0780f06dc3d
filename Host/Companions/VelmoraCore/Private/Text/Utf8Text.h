#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"

/** Text as the agent works on it: UTF-8 bytes, as they come from disk. All pure. */
namespace Velmora::Utf8Text
{
	/** Lone surrogates and NULs become U+FFFD. */
	std::string FromString(const FString& Text);

	/** Takes any bytes: what is no UTF-8 becomes U+FFFD, control characters but tab and line feed become blanks. */
	FString ToString(std::string_view Text);

	/** Well-formed UTF-8 without control characters but tab and line feed. CRLF and CR become a line feed. */
	std::string Sanitise(std::string_view Bytes);

	/** UTF-16 bytes (without mark) as UTF-8. */
	std::string FromUtf16Bytes(std::string_view Bytes, bool bBigEndian);

	/** ASCII letters only; the length stays. */
	std::string ToLower(std::string_view Text);
	bool IsWordByte(char Byte);

	/** A blank, a tab or the end of a line. */
	bool IsBlank(char Byte);
	std::string_view Trim(std::string_view Text);
	bool StartsWith(std::string_view Text, std::string_view Prefix);
	bool EndsWith(std::string_view Text, std::string_view Suffix);

	/** At most MaxCharacters code points, with an ellipsis when something was cut. */
	std::string Shorten(std::string_view Text, size_t MaxCharacters);

	/** Splits at line feeds. A line feed at the end does not open another line. */
	std::vector<std::string_view> SplitLines(std::string_view Text);

	/** "1 file", "1,200 files". */
	std::string Count(size_t Number, std::string_view Singular, std::string_view Plural);
}
