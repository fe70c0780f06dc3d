#pragma once

#include "CoreMinimal.h"
#include "Host/ConversationSearch.h"

/** What is looked for in a text that is shown. */
struct FFindQuery
{
	FString Words;
	bool bMatchCase = false;
	bool bWholeWords = false;

	bool IsSame(const FFindQuery& Other) const
	{
		return Words.Equals(Other.Words, ESearchCase::CaseSensitive) && bMatchCase == Other.bMatchCase && bWholeWords == Other.bWholeWords;
	}
};

/** Looks for a text in a text as it stands, blanks and marks included. Pure. */
namespace FindText
{
	/** Places that do not overlap, in their order, at most so many. An empty query is nowhere. */
	TArray<Velmora::FFoundPlace> FindAll(FStringView Text, const FFindQuery& Query, int32 MaxPlaces);
}
