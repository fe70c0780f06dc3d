#pragma once

#include <string>
#include <vector>

#include "CoreMinimal.h"

#include "Host/ConversationSearch.h"

/**
 * What a word is to the search, the same for texts, for what is typed and for what is framed in an excerpt. Words are runs
 * of letters and digits, compared without letter case; in a name of several words each begins a word of its own ("Table" is
 * found in "TryParseTable"); Chinese and Japanese characters, which have no blanks between words, are words one by one. All pure.
 */
namespace Velmora::SearchText
{
	/** The words of a text, one blank apart, as the index is given them: UTF-8. Of a text that is very long, those at its beginning. */
	std::string ToIndexed(FStringView Text);

	/** What is looked for: each of these must begin a word of the text. In lower case, at most sixteen. */
	std::vector<FString> ReadQuery(FStringView Query);

	/** The same as an expression of the database's. Empty when there is nothing to look for. */
	std::string ToExpression(const std::vector<FString>& Words);

	/**
	 * One line of about 160 characters of the text around the first place where a word is found, with an ellipsis where something
	 * was left out, and the places in it.
	 */
	FString MakeExcerpt(FStringView Text, const std::vector<FString>& Words, TArray<FFoundPlace>& OutPlaces);
}
