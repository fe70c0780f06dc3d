#include "Request/QuoteMarks.h"

#include "Text/Utf8Text.h"

namespace Velmora
{
	size_t FindClosingMark(std::string_view Text, size_t From, std::string_view Close)
	{
		size_t At = Text.find(Close, From);
		// An apostrophe before a letter goes on with a word ("it's"), so the quote ends later.
		while (Close == "'" && At != std::string_view::npos && At + 1 < Text.size() && Utf8Text::IsWordByte(Text[At + 1]))
		{
			At = Text.find(Close, At + 1);
		}
		return At;
	}

	size_t SkipQuoted(std::string_view Text, size_t At)
	{
		for (const FQuoteMarks& Marks : QuoteMarks)
		{
			if (Marks.Open != "'" && Utf8Text::StartsWith(Text.substr(At), Marks.Open))
			{
				const size_t End = Text.find(Marks.Close, At + Marks.Open.size());
				return End == std::string_view::npos ? At : End + Marks.Close.size();
			}
		}
		return At;
	}
}
