#include "Request/PlanRequest.h"

#include <algorithm>

#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxGoalCharacters = 300;

		struct FQuotes
		{
			std::string_view Open;
			std::string_view Close;
		};

		/** The longer mark first. An apostrophe opens nothing: it stands inside words. */
		constexpr FQuotes QuoteMarks[] = { { "```", "```" }, { "`", "`" }, { "\"", "\"" }, { "«", "»" }, { "“", "”" }, { "„", "“" } };

		/** Words that begin the next step, each after a blank or a separator. The longer phrase first. */
		constexpr std::string_view StepWords[] = { "and after that", "after that", "and then", "and finally", "and lastly", "then",
			"finally", "lastly" };

		bool IsBlank(char Letter)
		{
			return Letter == ' ' || Letter == '\t' || Letter == '\n' || Letter == '\r';
		}

		/** Behind the quoted passage that starts at Start. A quote that never closes is an ordinary character. */
		size_t SkipQuoted(std::string_view Text, size_t Start)
		{
			for (const FQuotes& Quotes : QuoteMarks)
			{
				if (Text.compare(Start, Quotes.Open.size(), Quotes.Open) == 0)
				{
					const size_t End = Text.find(Quotes.Close, Start + Quotes.Open.size());
					return End == std::string_view::npos ? Start : End + Quotes.Close.size();
				}
			}
			return Start;
		}

		/** Length of a step word with the separators behind it, zero when none stands there. Lower has no upper case. */
		size_t MatchStepWord(std::string_view Lower, size_t Start)
		{
			for (const std::string_view Word : StepWords)
			{
				const size_t End = Start + Word.size();
				if (Lower.compare(Start, Word.size(), Word) == 0 && End < Lower.size() &&
					(IsBlank(Lower[End]) || Lower[End] == ',' || Lower[End] == ':'))
				{
					return Word.size() + 1;
				}
			}
			return 0;
		}

		/** Length of "1. ", "2) ", "- " or "* " at Start. */
		size_t MatchListMark(std::string_view Text, size_t Start)
		{
			size_t Position = Start;
			while (Position < Text.size() && Text[Position] >= '0' && Text[Position] <= '9')
			{
				++Position;
			}
			const bool bHasNumber = Position > Start;
			if (Position + 1 >= Text.size() || !IsBlank(Text[Position + 1]))
			{
				return 0;
			}
			const bool bIsMark =
				bHasNumber ? Text[Position] == '.' || Text[Position] == ')' : Text[Position] == '-' || Text[Position] == '*';
			return bIsMark ? Position + 2 - Start : 0;
		}

		void AddStep(FAgentPlan& Plan, std::string_view Text)
		{
			size_t Begin = 0;
			size_t End = Text.size();
			while (Begin < End && (IsBlank(Text[Begin]) || Text[Begin] == ',' || Text[Begin] == ';' || Text[Begin] == ':'))
			{
				++Begin;
			}
			while (End > Begin && (IsBlank(Text[End - 1]) || Text[End - 1] == ',' || Text[End - 1] == ';'))
			{
				--End;
			}
			// A full stop ends a sentence, but belongs to "..." and to a name such as "Docs/..".
			if (End - Begin > 1 && Text[End - 1] == '.' && Text[End - 2] != '.')
			{
				--End;
			}
			if (Begin == End)
			{
				return;
			}
			if (Plan.Steps.size() == FAgentPlan::MaxSteps)
			{
				++Plan.LeftOutSteps;
				return;
			}
			Plan.Steps.push_back({ std::string(Text.substr(Begin, End - Begin)) });
		}

		void SplitSteps(FAgentPlan& Plan, std::string_view Text, bool bSplitLines)
		{
			const std::string Lower = Utf8Text::ToLower(Text);
			size_t StepStart = 0;
			// "then" begins a step only where a sentence or a clause does: "if it fails, say so" and "athena" hold none.
			bool bAfterSeparator = true;
			size_t Position = 0;
			const auto Cut = [&](size_t Next)
			{
				AddStep(Plan, Text.substr(StepStart, Position - StepStart));
				StepStart = Next;
				Position = Next;
			};
			while (Position < Text.size())
			{
				// Quoted text is material, whatever words stand in it.
				if (const size_t Behind = SkipQuoted(Text, Position); Behind != Position)
				{
					Position = Behind;
					bAfterSeparator = false;
					continue;
				}
				const char Letter = Text[Position];
				if (bSplitLines && (Letter == '\n' || Letter == ';'))
				{
					Cut(Position + 1);
					bAfterSeparator = true;
					while (StepStart < Text.size() && IsBlank(Text[StepStart]))
					{
						++StepStart;
					}
					StepStart += MatchListMark(Text, StepStart);
					Position = StepStart;
					continue;
				}
				if (bAfterSeparator)
				{
					if (const size_t Length = MatchStepWord(Lower, Position))
					{
						Cut(Position + Length);
						continue;
					}
				}
				bAfterSeparator = IsBlank(Letter) || Letter == ',' || Letter == ';' || Letter == '.';
				++Position;
			}
			Cut(Text.size());
		}
	}

	FAgentPlan MakeAgentPlan(std::string_view Request)
	{
		FAgentPlan Plan;
		const std::string_view Text = Utf8Text::Trim(Request);
		const std::string Opening = Utf8Text::ToLower(Text.substr(0, 8));
		if (Utf8Text::StartsWith(Opening, "plan:"))
		{
			const std::string_view Steps = Utf8Text::Trim(Text.substr(5));
			size_t Start = MatchListMark(Steps, 0);
			const std::string First = Utf8Text::ToLower(Steps.substr(Start, 6));
			Start += Utf8Text::StartsWith(First, "first ") ? 6 : 0;
			SplitSteps(Plan, Steps.substr(Start), true);
		}
		else if (Utf8Text::StartsWith(Opening, "first ") || Utf8Text::StartsWith(Opening, "first, ") ||
			Utf8Text::StartsWith(Opening, "first:"))
		{
			SplitSteps(Plan, Text.substr(5), false);
			// One step is no plan: "first, show a.md" is a request like any other.
			if (Plan.Steps.size() < 2)
			{
				return FAgentPlan();
			}
		}
		std::string Goal = Utf8Text::Shorten(Text, MaxGoalCharacters);
		std::replace(Goal.begin(), Goal.end(), '\n', ' ');
		Plan.Goal = Plan.IsEmpty() ? std::string() : Goal;
		return Plan;
	}
}
