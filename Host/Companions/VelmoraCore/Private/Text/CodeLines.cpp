#include "Text/CodeLines.h"

#include <algorithm>

#include "Text/Utf8Text.h"

namespace Velmora::CodeLines
{
	namespace
	{
		constexpr int MaxCommentLines = 15;

		/** Stands between a comment and what it describes. */
		bool IsPrefixLine(std::string_view Line)
		{
			const std::string_view Text = Utf8Text::Trim(Line);
			return Utf8Text::StartsWith(Text, "template") || Utf8Text::StartsWith(Text, "[[") || Utf8Text::StartsWith(Text, "@") ||
				Utf8Text::StartsWith(Text, "UCLASS(") || Utf8Text::StartsWith(Text, "USTRUCT(") || Utf8Text::StartsWith(Text, "UENUM(") ||
				Utf8Text::StartsWith(Text, "UFUNCTION(") || Utf8Text::StartsWith(Text, "UPROPERTY(");
		}

		size_t IndentOf(std::string_view Line)
		{
			const size_t Indent = Line.find_first_not_of(" \t");
			return Indent == std::string_view::npos ? 0 : Indent;
		}
	}

	bool IsComment(std::string_view Line)
	{
		const std::string_view Text = Utf8Text::Trim(Line);
		// "#" opens a comment in some languages and a directive in others, "*" goes on with one or follows a pointer: only the blank tells.
		return Utf8Text::StartsWith(Text, "//") || Utf8Text::StartsWith(Text, "/*") || Utf8Text::StartsWith(Text, "* ") || Text == "*" ||
			Utf8Text::StartsWith(Text, "*/") || Utf8Text::StartsWith(Text, "# ") || Utf8Text::StartsWith(Text, "--");
	}

	std::pair<int, int> MeasureDefinition(const std::vector<std::string_view>& Lines, int Line)
	{
		// Comments and attributes above belong to it.
		const int Count = static_cast<int>(Lines.size());
		const int Start = std::clamp(Line, 1, std::max(Count, 1));
		int First = Start;
		while (First > 1 && Start - First < MaxCommentLines && (IsComment(Lines[First - 2]) || IsPrefixLine(Lines[First - 2])))
		{
			--First;
		}

		// The body ends where its braces close; without braces, before the next line that is indented no deeper.
		int Depth = 0;
		bool bHasOpened = false;
		int Last = Start;
		for (int At = Start; At <= Count && At - Start < MaxDefinitionLines; ++At)
		{
			const std::string_view Text = Lines[At - 1];
			const bool bIsOuter = At > Start && !Utf8Text::Trim(Text).empty() && IndentOf(Text) <= IndentOf(Lines[Start - 1]);
			if (!bHasOpened && bIsOuter && Utf8Text::Trim(Text).front() != '{' && Utf8Text::Trim(Text).front() != ')' &&
				Utf8Text::Trim(Text).front() != ':')
			{
				break;
			}
			for (const char Byte : Text)
			{
				bHasOpened |= Byte == '{';
				Depth += Byte == '{' ? 1 : Byte == '}' ? -1 : 0;
			}
			if (!Utf8Text::Trim(Text).empty())
			{
				Last = At;
			}
			if ((bHasOpened && Depth <= 0) || (!bHasOpened && Utf8Text::EndsWith(Utf8Text::Trim(Text), ";")))
			{
				break;
			}
		}
		return { First, Last };
	}
}
