#pragma once

#include "Host/TextShaper.h"

/**
 * Laid-out short texts, shared by all widgets that show the same one: labels, blanks and the words of code come again and
 * again. A shared paragraph is not wrapped by anybody. Kept for as long as a widget shows it. Game thread only.
 */
class FSharedParagraphs
{
public:
	/** Longer texts are hardly ever alike. UTF-16 units. */
	static constexpr int32 MaxLength = 32;

	static TSharedRef<ITextParagraph> Get(FStringView Text, const FSlateFontInfo& Font, float Scale);
};
