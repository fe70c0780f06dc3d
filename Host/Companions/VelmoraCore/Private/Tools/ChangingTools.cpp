#include <algorithm>

#include "Changes/SteeringFiles.h"
#include "Host/ProjectWalk.h"
#include "Text/Utf8Text.h"
#include "Tools/ToolBox.h"

// The tools that change files, all of them through the journal, and the plan.

namespace Velmora
{
	namespace
	{
		struct FStatusWord
		{
			std::string_view Word;
			EPlanStepStatus Status;
		};
		constexpr FStatusWord StatusWords[] = {
			{ "waiting", EPlanStepStatus::Waiting },
			{ "pending", EPlanStepStatus::Waiting },
			{ "running", EPlanStepStatus::Running },
			{ "in_progress", EPlanStepStatus::Running },
			{ "done", EPlanStepStatus::Done },
			{ "completed", EPlanStepStatus::Done },
			{ "failed", EPlanStepStatus::Failed },
			{ "stopped", EPlanStepStatus::Stopped },
		};

		constexpr size_t MaxStepCharacters = 160;
		constexpr size_t MaxGoalCharacters = 300;
		constexpr size_t MaxApproachCharacters = 600;

		/** A file larger than this is not cut to less than one in so many of its bytes without asking. */
		constexpr size_t MinGuardedBytes = 4 * 1024;
		constexpr size_t GuardedShare = 10;

		constexpr std::string_view IgnoreFileName = ".gitignore";

		/** One line, whatever a model has put into it. */
		std::string OneLine(const std::string& Text, size_t MaxCharacters)
		{
			std::string Line = Utf8Text::Sanitise(Utf8Text::Trim(Text));
			std::replace(Line.begin(), Line.end(), '\n', ' ');
			return Utf8Text::Shorten(Line, MaxCharacters);
		}
	}

	std::string FToolBox::FindConcern(
		const std::string& Path, const FEntryInfo& Info, const std::string& OldBytes, const FNewContent& Content) const
	{
		// A link on the way may lead to such a file under another name.
		std::string Steering = DescribeSteering(Path);
		FProjectPath Real;
		const size_t Slash = Path.rfind('/');
		if (Steering.empty() && Files.Resolve(Path, Real))
		{
			Steering = DescribeSteering(Real.Relative);
		}
		else if (Steering.empty() && Slash != std::string::npos && Files.Resolve(Path.substr(0, Slash), Real))
		{
			Steering = DescribeSteering(Real.Relative + Path.substr(Slash));
		}
		if (!Steering.empty())
		{
			return Steering;
		}
		if (Utf8Text::ToLower(Path.substr(Path.rfind('/') + 1)) == IgnoreFileName)
		{
			return "it says which files are read only with the user's consent";
		}
		const bool bIsCut = Info.Kind == EEntryKind::File && !Content.bIsDeletion && OldBytes.size() > MinGuardedBytes &&
			Content.Bytes.size() < OldBytes.size() / GuardedShare;
		return bIsCut ? "it would be cut from " + std::to_string(OldBytes.size()) + " to " + std::to_string(Content.Bytes.size()) + " bytes"
					  : std::string();
	}

	std::string FToolBox::FindReadConcern(const std::string& Path, FToolResult& OutResult) const
	{
		// As it is called, and where links on the way lead.
		FProjectPath Real;
		if (MayRead({ Files.GetRoot() + '/' + Path, Path, false }, OutResult) && (!Files.Resolve(Path, Real) || MayRead(Real, OutResult)))
		{
			return std::string();
		}
		if (const std::string Steering = DescribeSteering(Path); !Steering.empty())
		{
			OutResult.Question->Reason += ", and " + Steering;
		}
		return "it needs the user's consent, since " + OutResult.Question->Reason;
	}

	void FToolBox::Change(FToolResult& OutResult, const std::function<FChangeOutcome(FChangeTools& Tools)>& Make)
	{
		FChangeTools Tools(Files.GetRoot(), *Journal, TransactionId);
		Tools.SetCancelCheck(IsCancelled);
		if (!bIsPermitted)
		{
			Tools.SetReadGuard([this, &OutResult](const std::string& Path) { return FindReadConcern(Path, OutResult); });
			Tools.SetGuard(
				[this, &OutResult](
					const std::string& Path, const FEntryInfo& Info, const std::string& OldBytes, const FNewContent& Content) -> std::string
				{
					const std::string Concern = FindConcern(Path, Info, OldBytes, Content);
					if (Concern.empty())
					{
						return std::string();
					}
					OutResult.Question = FToolQuestion{ Path, Concern, std::string() };
					return "it needs the user's consent, since " + Concern;
				});
		}
		FChangeOutcome Outcome = Make(Tools);
		if (Outcome.bSuccess)
		{
			NoteProjectChange();
		}
		OutResult.bSuccess = Outcome.bSuccess;
		OutResult.Sentence = Outcome.Sentence;
		OutResult.Text = Outcome.Sentence + ".\n";
		OutResult.Change = std::move(Outcome);
	}

	void FToolBox::CreateFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		Change(OutResult, [&](FChangeTools& Tools) { return Tools.CreateFile(Arguments.GetText("path"), Arguments.GetText("content")); });
	}

	void FToolBox::WriteFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		Change(OutResult, [&](FChangeTools& Tools) { return Tools.WriteFile(Arguments.GetText("path"), Arguments.GetText("content")); });
	}

	void FToolBox::EditFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		Change(OutResult,
			[&](FChangeTools& Tools)
			{ return Tools.EditFile(Arguments.GetText("path"), Arguments.GetText("old"), Arguments.GetText("new")); });
	}

	void FToolBox::AppendTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		Change(OutResult, [&](FChangeTools& Tools) { return Tools.AppendToFile(Arguments.GetText("path"), Arguments.GetText("text")); });
	}

	void FToolBox::DeleteFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		Change(OutResult, [&](FChangeTools& Tools) { return Tools.DeleteFile(Arguments.GetText("path")); });
	}

	void FToolBox::MoveFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		Change(OutResult, [&](FChangeTools& Tools) { return Tools.MoveFile(Arguments.GetText("path"), Arguments.GetText("to")); });
	}

	void FToolBox::UpdatePlanTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		FAgentPlan Plan;
		Plan.Goal = OneLine(Arguments.GetText("goal"), MaxGoalCharacters);
		Plan.Approach = OneLine(Arguments.GetText("approach"), MaxApproachCharacters);
		for (const FToolArguments& Item : Arguments.GetList("steps"))
		{
			const std::string Text = OneLine(Item.GetText("text"), MaxStepCharacters);
			if (Text.empty())
			{
				continue;
			}
			if (Plan.Steps.size() == FAgentPlan::MaxSteps)
			{
				++Plan.LeftOutSteps;
				continue;
			}
			const std::string Word = Utf8Text::ToLower(Item.GetText("status"));
			const auto Row = std::find_if(
				std::begin(StatusWords), std::end(StatusWords), [&Word](const FStatusWord& Known) { return Known.Word == Word; });
			Plan.Steps.push_back({ Text, Row == std::end(StatusWords) ? EPlanStepStatus::Waiting : Row->Status });
		}
		OutResult.bSuccess = !Plan.IsEmpty();
		OutResult.Sentence =
			Plan.IsEmpty() ? "The plan has no steps" : "The plan has " + Utf8Text::Count(Plan.Steps.size(), "step", "steps");
		OutResult.Text = OutResult.Sentence + ".\n";
		OutResult.Plan = std::move(Plan);
	}
}
