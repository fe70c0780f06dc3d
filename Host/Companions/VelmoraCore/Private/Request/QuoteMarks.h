#pragma once

#include <string_view>

namespace Velmora
{
	/** What opens and closes a text that is taken to the letter. */
	struct FQuoteMarks
	{
		std::string_view Open;
		std::string_view Close;

		/** Around whole lines, after the name of their language. */
		bool bIsFence = false;
	};

	/** The longer mark first. */
	// clang-format off
	inline constexpr FQuoteMarks QuoteMarks[] = {
		{ "```", "```", true }, { "~~~", "~~~", true }, { "`", "`" }, { "\"", "\"" }, { "«", "»" }, { "“", "”" }, { "„", "“" },
		{ "‘", "’" }, { "'", "'" },
	};
	// clang-format on

	/** Where the quote ends that has begun before From: the place of the closing mark, npos for none. Pure. */
	size_t FindClosingMark(std::string_view Text, size_t From, std::string_view Close);

	/**
	 * Behind the quoted passage that begins here; the same place when none does, or when it does not end. An apostrophe opens
	 * none: it stands inside words. Pure.
	 */
	size_t SkipQuoted(std::string_view Text, size_t At);
}
