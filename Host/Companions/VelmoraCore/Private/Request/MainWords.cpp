#include "Request/MainWords.h"

#include <algorithm>
#include <utility>

#include "Request/RequestWords.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	std::vector<std::string> SplitWords(std::string_view Text)
	{
		constexpr std::string_view Punctuation = " \t\n,;:!?()\"";
		std::vector<std::string> Words;
		for (size_t Start = 0; Start < Text.size();)
		{
			const size_t End = std::min(Text.find(' ', Start), Text.size());
			std::string_view Word = Text.substr(Start, End - Start);
			Word.remove_prefix(std::min(Word.find_first_not_of(Punctuation), Word.size()));
			Word = Word.substr(0, Word.find_last_not_of(Punctuation) + 1);
			if (Word.size() > 1 && Word.back() == '.')
			{
				Word.remove_suffix(1);
			}
			if (!Word.empty())
			{
				Words.emplace_back(Word);
			}
			Start = End + 1;
		}
		return Words;
	}

	std::vector<std::string> FindMainWords(std::string_view Text)
	{
		std::vector<std::string> MainWords;
		for (std::string& Word : SplitWords(Text))
		{
			const std::string Lower = Utf8Text::ToLower(Word);
			const bool bIsKnown = std::any_of(
				MainWords.begin(), MainWords.end(), [&Lower](const std::string& Other) { return Utf8Text::ToLower(Other) == Lower; });
			if (Lower.size() > 1 && !bIsKnown && !IsOneOf(Lower, FillerWords))
			{
				MainWords.push_back(std::move(Word));
			}
		}
		return MainWords;
	}
}
