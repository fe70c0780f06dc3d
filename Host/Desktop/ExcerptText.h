#pragma once

#include "CoreMinimal.h"
#include "Host/ConversationSearch.h"

/** What of a message is read, without what only says how it looks. Pure. */
namespace ExcerptText
{
	/**
	 * One line of a message without its marks of Markdown: fences and their language, code marks, stars, headings, targets of links and
	 * rules of tables. What holds one of the places stays. The places are moved along.
	 */
	FString MakePlain(FStringView Excerpt, TArray<Velmora::FFoundPlace>& InOutPlaces);
}
