#include "Turn/LocalTurnRunner.h"

#include <algorithm>

#include "Turn/AnswerMarkdown.h"
#include "Tools/ProjectSummary.h"
#include "Text/Utf8Text.h"
#include "Policies/CondensedJsonPrintPolicy.h"
#include "Serialization/JsonWriter.h"

namespace Velmora
{
	namespace
	{
		FString MakeJsonObject(const std::vector<std::pair<std::string_view, std::string>>& Fields)
		{
			FString Out;
			const TSharedRef<TJsonWriter<TCHAR, TCondensedJsonPrintPolicy<TCHAR>>> Writer =
				TJsonWriterFactory<TCHAR, TCondensedJsonPrintPolicy<TCHAR>>::Create(&Out);
			Writer->WriteObjectStart();
			for (const auto& [Key, Value] : Fields)
			{
				Writer->WriteValue(Utf8Text::ToString(Key), Utf8Text::ToString(Value));
			}
			Writer->WriteObjectEnd();
			Writer->Close();
			return Out;
		}
	}

	void FLocalTurnRunner::Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink)
	{
		FLocalTurn(Input, Control, Sink).Run();
	}

	FLocalTurn::FLocalTurn(const FTurnInput& InInput, FTurnControl& InControl, ITurnRunner::FReportSink InSink)
		: Input(InInput)
		, Control(InControl)
		, Sink(std::move(InSink))
		, Files(InInput.ProjectFolder)
	{
	}

	void FLocalTurn::Run()
	{
		if (!Files.IsAvailable())
		{
			FTurnReport Item;
			Item.Kind = ETurnReportKind::Failed;
			Item.Text = Input.ProjectFolder.empty() ? FString(TEXT("There is no project folder to work on."))
													: Utf8Text::ToString("The project folder " + Input.ProjectFolder +
														  " cannot be opened. Check that it still exists, then send the message again.");
			Report(std::move(Item));
			return;
		}
		Plan = MakeAgentPlan(Input.Prompt);
		if (!ReadAttachments())
		{
			return;
		}
		ReadRequest(Input.Prompt);
		if (!(Plan.IsEmpty() ? RunRequest() : RunPlan()))
		{
			return;
		}
		while (!NextPrompt.empty())
		{
			const std::string Prompt = std::exchange(NextPrompt, std::string());
			Plan = FAgentPlan();
			AttachmentNotes.clear();
			ReadRequest(Prompt);
			if (!RunRequest())
			{
				return;
			}
		}
		if (!Control.WaitUntilRunning())
		{
			return;
		}
		FTurnReport Item;
		Item.Kind = ETurnReportKind::Finished;
		Report(std::move(Item));
	}

	bool FLocalTurn::RunPlan()
	{
		FTurnReport Made;
		Made.Kind = ETurnReportKind::Plan;
		Made.Text = TEXT("The plan was made.");
		Made.Plan = Plan;
		Report(std::move(Made));
		for (size_t Index = 0; Index < Plan.Steps.size(); ++Index)
		{
			if (!Control.WaitUntilRunning())
			{
				return false;
			}
			SetPlanStep(Index, EPlanStepStatus::Running);
			FTurnReport Step;
			Step.Kind = ETurnReportKind::Step;
			Step.Text =
				Utf8Text::ToString("Executing step " + std::to_string(Index + 1) + ": " + Utf8Text::Shorten(Plan.Steps[Index].Text, 80));
			Report(std::move(Step));

			bHasFailed = false;
			ReadRequest(Plan.Steps[Index].Text);
			if (!RunRequest() || !Control.WaitUntilRunning())
			{
				return false;
			}
			AttachmentNotes.clear();
			if (bHasFailed)
			{
				Plan.Steps[Index].Status = EPlanStepStatus::Failed;
				if (Index + 1 < Plan.Steps.size())
				{
					Answer("I stopped the plan at step " + std::to_string(Index + 1) + ", which failed. Nothing after it was done.");
				}
				SetPlanStep(Index, EPlanStepStatus::Failed);
				return true;
			}
			Plan.Steps[Index].Status = EPlanStepStatus::Done;
		}
		SetPlanStep(Plan.Steps.size() - 1, EPlanStepStatus::Done);
		return true;
	}

	void FLocalTurn::SetPlanStep(size_t Index, EPlanStepStatus Status)
	{
		Plan.Steps[Index].Status = Status;
		FTurnReport Change;
		Change.Kind = ETurnReportKind::Plan;
		Change.Text = Utf8Text::ToString("Step " + std::to_string(Index + 1) + " of " + std::to_string(Plan.Steps.size()));
		Change.Plan = Plan;
		Report(std::move(Change));
	}

	bool FLocalTurn::RunRequest()
	{
		switch (Request.Kind)
		{
		case ERequestKind::FindText:
			return RunFindText();
		case ERequestKind::FindSymbol:
			return RunFindSymbol();
		case ERequestKind::Outline:
			return RunOutline();
		case ERequestKind::WhichFiles:
			return RunWhichFiles();
		case ERequestKind::Explain:
			return RunExplain();
		case ERequestKind::Show:
			return RunShow();
		case ERequestKind::List:
			return RunList();
		case ERequestKind::Summarise:
			return RunSummarise();
		case ERequestKind::Count:
			return RunCount();
		case ERequestKind::Help:
			AnswerHelp("I answer from the files of this project, on this machine.");
			return true;
		case ERequestKind::Greeting:
			AnswerHelp("Hello! I answer from the files of this project.");
			return true;
		case ERequestKind::Thanks:
			Answer("You are welcome.\n");
			return true;
		case ERequestKind::ChangeFiles:
			return RunChange();
		case ERequestKind::Unknown:
			break;
		}
		// A question in other words about files that came with it can still be met by showing what they hold.
		if (!Attachments.empty())
		{
			return AnswerAttachments(Attachments);
		}
		AnswerUnknown();
		return true;
	}

	bool FLocalTurn::ReadAttachments()
	{
		for (const std::string& Path : Input.ContextFiles)
		{
			FProjectPath Place;
			if (Files.Resolve(Path, Place))
			{
				const bool bIsKnown = std::any_of(Attachments.begin(), Attachments.end(),
					[&Place](const FProjectPath& Other) { return Other.Absolute == Place.Absolute; });
				if (!bIsKnown)
				{
					Attachments.push_back(Place);
				}
				continue;
			}
			const char* Why = Files.IsOutside(Path) ? " lies outside the project, so I did not read it.\n" : " could not be found.\n";
			AttachmentNotes += "Attached " + AnswerMarkdown::InlineCode(Path) + Why;

			// The row of the tool tells the same where the user looks first.
			const bool bIsBelow = Utf8Text::StartsWith(Path, Files.GetRoot() + '/');
			FProjectText Ignored;
			const FProjectPath Missing = { Utf8Text::StartsWith(Path, "/") ? Path : Files.GetRoot() + '/' + Path,
				bIsBelow ? Path.substr(Files.GetRoot().size() + 1) : Path, false };
			if (!RunReadTool(Missing, 0, 0, Ignored))
			{
				return false;
			}
		}
		return !Control.IsCancelled();
	}

	bool FLocalTurn::BeginStep(std::string_view What)
	{
		if (!Control.WaitUntilRunning())
		{
			return false;
		}
		if (!Plan.IsEmpty())
		{
			return true; // The plan's own step was told; what it takes is no step of the plan.
		}
		FTurnReport Item;
		Item.Kind = ETurnReportKind::Step;
		Item.Text = Utf8Text::ToString("Executing step " + std::to_string(++StepCount) + ": " + Utf8Text::Shorten(What, 80));
		Report(std::move(Item));
		return true;
	}

	bool FLocalTurn::RunTool(std::string_view Name, const FParameters& Parameters, const std::function<FToolOutcome()>& Work)
	{
		if (!Control.WaitUntilRunning())
		{
			return false;
		}
		FTurnReport Start;
		Start.Kind = ETurnReportKind::ToolStarted;
		Start.ToolId = Utf8Text::ToString(Input.ToolIdPrefix + '-' + std::to_string(++ToolCount));
		Start.ToolName = Utf8Text::ToString(Name);
		Start.Parameters = MakeJsonObject(Parameters);
		if (const FToolRow* const Row = FToolBox::Find(Name))
		{
			Start.Metadata =
				MakeJsonObject({ { "operation_type", std::string(Row->Operation) }, { "data_type", std::string(Row->DataType) } });
		}
		FTurnReport End = Start;
		Report(std::move(Start));

		const FToolOutcome Outcome = Work();
		if (Control.IsCancelled() || (Input.MinimumToolSeconds > 0.0 && !Control.Sleep(Input.MinimumToolSeconds)))
		{
			return false;
		}
		End.Kind = ETurnReportKind::ToolCompleted;
		End.bSuccess = Outcome.bSuccess;
		bHasFailed |= !Outcome.bSuccess;
		End.Text = Utf8Text::ToString(Outcome.Sentence);
		Report(std::move(End));
		return true;
	}

	bool FLocalTurn::RunSearchTool(const FProjectPath& Where, const std::string& Term, FSearchResult& OutResult)
	{
		FParameters Parameters = { { "term", Term } };
		if (!Where.Relative.empty())
		{
			Parameters.push_back({ "scope", Where.Relative });
		}
		return RunTool("search_files", Parameters,
			[&]
			{
				OutResult = SearchProject(Files, Where, Term, CancelCheck());
				FToolOutcome Outcome;
				Outcome.Sentence = OutResult.MatchCount == 0 ? "No match in " + Utf8Text::Count(OutResult.SearchedFiles, "file", "files")
															 : Utf8Text::Count(OutResult.MatchCount, "match", "matches") + " in " +
						Utf8Text::Count(OutResult.FileCount, "file", "files");
				return Outcome;
			});
	}

	bool FLocalTurn::RunReadTool(const FProjectPath& File, int FirstLine, int LastLine, FProjectText& OutText)
	{
		FParameters Parameters = { { "path", File.Relative } };
		if (FirstLine > 0)
		{
			Parameters.push_back({ "lines", std::to_string(FirstLine) + '-' + std::to_string(LastLine) });
		}
		return RunTool("read_file", Parameters,
			[&]
			{
				OutText = Files.Read(File.Absolute);
				FToolOutcome Outcome;
				Outcome.bSuccess = OutText.IsValid();
				Outcome.Sentence = OutText.IsValid() ? "Read " + Utf8Text::Count(Utf8Text::SplitLines(OutText.Text).size(), "line", "lines")
													 : "Not read: " + OutText.Problem;
				return Outcome;
			});
	}

	bool FLocalTurn::RunFindFileTool(const std::string& Name, std::vector<FProjectPath>& OutPaths)
	{
		return RunTool("find_file", { { "name", Name } },
			[&]
			{
				OutPaths = Files.Find(Name, MaxSearchHits);
				return FToolOutcome{ true,
					OutPaths.empty() ? std::string("No file of that name")
									 : Utf8Text::Count(OutPaths.size(), "file or folder", "files or folders") + " of that name" };
			});
	}

	FProjectPath FLocalTurn::GetProjectPath() const
	{
		return { Files.GetRoot(), std::string(), true };
	}

	bool FLocalTurn::FindPlace(const std::string& Text, FProjectPath& OutPath) const
	{
		if (Text.empty())
		{
			return false;
		}
		if (FindAttachment(Text, OutPath) || Files.Resolve(Text, OutPath))
		{
			return true;
		}
		// A place must be meant, not merely resembled: one hit, or the words are part of the search.
		const std::vector<FProjectPath> Found = Files.Find(Text, 2);
		if (Found.size() != 1)
		{
			return false;
		}
		OutPath = Found.front();
		return true;
	}

	std::function<bool()> FLocalTurn::CancelCheck() const
	{
		return [this] { return Control.IsCancelled(); };
	}

	void FLocalTurn::Answer(const std::string& Markdown)
	{
		if (!Control.WaitUntilRunning())
		{
			return;
		}
		std::string Text = Markdown + AttachmentNotes;
		while (!Text.empty() && Text.back() == '\n')
		{
			Text.pop_back();
		}
		FTurnReport Item;
		Item.Kind = ETurnReportKind::Answer;
		Item.Text = Utf8Text::ToString(Text);
		Report(std::move(Item));
	}

	void FLocalTurn::AnswerHelp(std::string_view Opening)
	{
		Answer(std::string(Opening) +
			"\nYou can ask, for example:\n"
			"- `find TryParseTable` looks for text and shows the best place\n"
			"- `what is class FThing?` shows a definition\n"
			"- `where is FThing defined?` and `outline README.md` ask the code index\n"
			"- `which files mention Health?` lists files\n"
			"- `show README.md` or `show lines 10-20 of X.cpp`\n"
			"- `list Source` or `list *.h`\n"
			"- `summarise the project` or `how many lines?`\n"
			"- `create notes.md with \"some text\"` or `write \"some text\" to notes.md`\n"
			"- `replace \"a\" by \"b\" in notes.md` or `append \"a line\" to notes.md`\n"
			"- `delete notes.md`\n"
			"Files attached with @ are looked at first.\n");
	}

	void FLocalTurn::AnswerUnknown()
	{
		bHasFailed = true;
		AnswerHelp("I did not understand that request.");
	}

	void FLocalTurn::Report(FTurnReport&& Item)
	{
		Sink(std::move(Item));
	}
}
