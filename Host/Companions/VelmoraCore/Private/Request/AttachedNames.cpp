#include "Request/AttachedNames.h"

#include <algorithm>
#include <numeric>

#include "Request/QuoteMarks.h"
#include "Request/RequestWords.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** Blanks, and what sets names apart in a sentence. */
		bool IsSeparator(char Byte)
		{
			return Utf8Text::IsBlank(Byte) || std::string_view(",;:&()?!").find(Byte) != std::string_view::npos;
		}

		/** Control characters do not reach the reader of requests. */
		bool IsPrintable(std::string_view Name)
		{
			return std::none_of(Name.begin(), Name.end(),
				[](char Byte) { return (static_cast<unsigned char>(Byte) < 0x20 && Byte != '\t') || Byte == 0x7F; });
		}

		bool NeedsQuotes(std::string_view Name)
		{
			return !IsPrintable(Name) || Name.find_first_of(" \t\n\r\"'`,;:&()?!") != std::string_view::npos;
		}

		/** The longest of the names that stands at that place as a whole; npos when none does. */
		size_t FindNameAt(std::string_view Text, size_t At, const std::vector<std::string>& Names)
		{
			size_t Best = std::string_view::npos;
			if (At > 0 && !IsSeparator(Text[At - 1]))
			{
				return Best;
			}
			for (size_t Index = 0; Index < Names.size(); ++Index)
			{
				const std::string& Name = Names[Index];
				const bool bStands = !Name.empty() && Text.compare(At, Name.size(), Name) == 0;
				const size_t End = At + Name.size();
				// A full stop may end the sentence.
				const bool bEnds = bStands &&
					(End == Text.size() || IsSeparator(Text[End]) ||
						(Text[End] == '.' && (End + 1 == Text.size() || Utf8Text::IsBlank(Text[End + 1]))));
				if (bEnds && (Best == std::string_view::npos || Name.size() > Names[Best].size()))
				{
					Best = Index;
				}
			}
			return Best;
		}
	}

	std::string QuoteAttachedNames(std::string_view Text, const std::vector<std::string>& Names)
	{
		if (std::none_of(Names.begin(), Names.end(), NeedsQuotes))
		{
			return std::string(Text);
		}
		std::string Result;
		for (size_t At = 0; At < Text.size();)
		{
			const size_t Index = FindNameAt(Text, At, Names);
			if (Index == std::string_view::npos)
			{
				const size_t End = std::max(SkipQuoted(Text, At), At + 1);
				Result += Text.substr(At, End - At);
				At = End;
				continue;
			}
			const std::string& Name = Names[Index];
			const char Quote = Name.find('"') == std::string::npos ? '"' : '`';
			if (!NeedsQuotes(Name))
			{
				Result += Name;
			}
			else if (IsPrintable(Name) && Name.find(Quote) == std::string::npos)
			{
				Result += Quote + Name + Quote;
			}
			else
			{
				Result += Names.size() == 1 ? std::string_view("it") : std::string_view(Name);
			}
			At += Name.size();
		}
		return Result;
	}

	std::string_view SkipAttachedNames(std::string_view Text, const std::vector<std::string>& Names)
	{
		size_t At = 0;
		while (At < Text.size())
		{
			const size_t Index = IsSeparator(Text[At]) ? std::string_view::npos : FindNameAt(Text, At, Names);
			if (Index == std::string_view::npos && !IsSeparator(Text[At]))
			{
				break;
			}
			At += Index == std::string_view::npos ? 1 : Names[Index].size();
		}
		return Text.substr(At);
	}

	std::vector<size_t> FindNamesIn(std::string_view Text, const std::vector<std::string>& Names)
	{
		std::vector<size_t> Found;
		for (size_t At = 0; At < Text.size();)
		{
			if (IsSeparator(Text[At]) || (Text[At] == '.' && At + 1 == Text.size()))
			{
				++At;
				continue;
			}
			const size_t Index = FindNameAt(Text, At, Names);
			if (Index != std::string_view::npos)
			{
				if (std::find(Found.begin(), Found.end(), Index) == Found.end())
				{
					Found.push_back(Index);
				}
				At += Names[Index].size();
				continue;
			}
			const size_t End =
				static_cast<size_t>(std::find_if(Text.begin() + static_cast<std::ptrdiff_t>(At), Text.end(), IsSeparator) - Text.begin());
			const std::string Word = Utf8Text::ToLower(Text.substr(At, End - At));
			if (!IsOneOf(Word, JoiningWords))
			{
				return {};
			}
			At = End;
		}
		if (Found.empty())
		{
			Found.resize(Names.size());
			std::iota(Found.begin(), Found.end(), size_t{ 0 });
		}
		return Found;
	}
}
