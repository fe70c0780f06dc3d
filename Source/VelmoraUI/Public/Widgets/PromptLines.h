#pragma once

#include "CoreMinimal.h"
#include "Framework/Text/TextLayout.h"

/**
 * Walks over the lines of the prompt's text, which is one string while a text box speaks of lines and columns. Runs at each key over
 * all that stands before the cursor, so line feeds are counted in blocks. Pure functions; any thread.
 */
class VELMORAUI_API FPromptLines
{
public:
	/** Lines end with a line feed alone. A place that does not exist counts as the end of the text. */
	static int32 ToLinearIndex(const FString& Text, const FTextLocation& Location);
	/** An index outside of the text counts as its nearer end. */
	static FTextLocation ToTextLocation(const FString& Text, int32 Index);

	/** The same text with line feeds alone between its lines, however the box joined them. */
	static FText WithLineFeeds(const FText& Text);
};
