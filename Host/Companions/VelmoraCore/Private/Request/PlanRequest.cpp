#include "Request/PlanRequest.h"

#include <algorithm>

#include "Request/QuoteMarks.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxGoalCharacters = 300;

		/** Words that begin the next step, each after a blank or a separator. The longer phrase first. */
		constexpr std::string_view StepWords[] = { "and after that", "after that", "and then", "and finally", "and lastly", "then",
			"finally", "lastly" };

		/** Length of a step word with the separators behind it, zero when none stands there. Lower has no upper case. */
		size_t MatchStepWord(std::string_view Lower, size_t Start)
		{
			for (const std::string_view Word : StepWords)
			{
				const size_t End = Start + Word.size();
				if (Lower.compare(Start, Word.size(), Word) == 0 && End < Lower.size() &&
					(Utf8Text::IsBlank(Lower[End]) || Lower[End] == ',' || Lower[End] == ':'))
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
			if (Position + 1 >= Text.size() || !Utf8Text::IsBlank(Text[Position + 1]))
			{
				return 0;
			}
			const bool bIsMark =
				bHasNumber ? Text[Position] == '.' || Text[Position] == ')' : Text[Position] == '-' || Text[Position] == '*';
			return bIsMark ? Position + 2 - Start : 0;
		}

		void AddStep(FAgentPlan& Plan, std::string_view Text)
		{
			constexpr std::string_view Openers = " \t\n\r,;:";
			constexpr std::string_view Closers = " \t\n\r,;";
			Text.remove_prefix(std::min(Text.find_first_not_of(Openers), Text.size()));
			Text = Text.substr(0, Text.find_last_not_of(Closers) + 1);
			// A full stop ends a sentence, but belongs to "..." and to a name such as "Docs/..".
			if (Text.size() > 1 && Text.back() == '.' && Text[Text.size() - 2] != '.')
			{
				Text.remove_suffix(1);
			}
			if (Text.empty())
			{
				return;
			}
			if (Plan.Steps.size() == FAgentPlan::MaxSteps)
			{
				++Plan.LeftOutSteps;
				return;
			}
			Plan.Steps.push_back({ std::string(Text) });
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
					while (StepStart < Text.size() && Utf8Text::IsBlank(Text[StepStart]))
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
				bAfterSeparator = Utf8Text::IsBlank(Letter) || Letter == ',' || Letter == ';' || Letter == '.';
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
			std::string_view Steps = Utf8Text::Trim(Text.substr(5));
			Steps.remove_prefix(MatchListMark(Steps, 0));
			Steps.remove_prefix(Utf8Text::ToLower(Steps.substr(0, 6)) == "first " ? 6 : 0);
			SplitSteps(Plan, Steps, true);
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
		if (!Plan.IsEmpty())
		{
			Plan.Goal = Utf8Text::Shorten(Text, MaxGoalCharacters);
			std::replace(Plan.Goal.begin(), Plan.Goal.end(), '\n', ' ');
			Plan.Approach = "The steps run one after the other. The first one that fails ends the plan, so that nothing is built on it.";
		}
		return Plan;
	}
}
