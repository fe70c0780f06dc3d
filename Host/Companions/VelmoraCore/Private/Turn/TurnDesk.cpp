#include "Turn/TurnDesk.h"

#include <algorithm>

#include "Host/HostFileNames.h"
#include "Request/AttachedNames.h"
#include "Text/JsonText.h"
#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"
#include "Tools/ToolBox.h"

// What every kind of work has at hand during a turn: files, attachments, steps and tools, and the way to report. Each
// operation waits while the turn is paused and gives false once it is cancelled.

namespace Velmora
{
	namespace
	{
		/** How a name reads in a user's prompt, which holds replacement characters for the bytes that are no text. */
		std::string NameInWords(std::string_view Bytes)
		{
			return Utf8Text::FromString(HostFileNameFromBytes(Bytes));
		}
	}

	FTurnDesk::FTurnDesk(const FTurnInput& InInput, FTurnControl& InControl, ITurnRunner::FReportSink InSink)
		: Input(InInput)
		, Control(InControl)
		, Sink(std::move(InSink))
		, Files(InInput.ProjectFolder)
	{
	}

	// What cannot be read is reported twice: in the answer, and as a tool that failed.
	bool FTurnDesk::ReadAttachments()
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
			AttachmentNotes += "Attached " + AnswerMarkdown::FileName(Path) + Why;

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

	bool FTurnDesk::BeginStep(std::string_view What)
	{
		if (!Control.WaitUntilRunning())
		{
			return false;
		}
		// A plan's own step was told; what it takes is no step of the plan.
		if (!bHasPlan && ++StepCount > 1)
		{
			TellStep(StepCount, What);
		}
		return true;
	}

	// 1. The row appears. 2. The work. 3. It stays for a moment at least, or quick tools would only flicker. 4. How it ended.
	bool FTurnDesk::RunTool(std::string_view Name, const FToolParameters& Parameters, const std::function<FToolOutcome()>& Work)
	{
		if (!Control.WaitUntilRunning())
		{
			return false;
		}
		FTurnReport Start;
		Start.Kind = ETurnReportKind::ToolStarted;
		Start.ToolId = Utf8Text::ToString(Input.ToolIdPrefix + '-' + std::to_string(++ToolCount));
		Start.ToolName = Utf8Text::ToString(Name);
		Start.Parameters = JsonText::MakeObject(Parameters);
		if (const FToolRow* const Row = FToolBox::Find(Name))
		{
			Start.Metadata =
				JsonText::MakeObject({ { "operation_type", std::string(Row->Operation) }, { "data_type", std::string(Row->DataType) } });
		}
		FTurnReport End = Start;
		Sink(std::move(Start));

		const FToolOutcome Outcome = Work();
		if (Control.IsCancelled() || (Input.MinimumToolSeconds > 0.0 && !Control.Sleep(Input.MinimumToolSeconds)))
		{
			return false;
		}
		End.Kind = ETurnReportKind::ToolCompleted;
		End.bSuccess = Outcome.bSuccess;
		if (!Outcome.bSuccess)
		{
			Fail(Outcome.Sentence);
		}
		End.Text = Utf8Text::ToString(Outcome.Sentence);
		Sink(std::move(End));
		return true;
	}

	bool FTurnDesk::RunSearchTool(const FProjectPath& Where, const std::string& Term, FSearchResult& OutResult)
	{
		FToolParameters Parameters = { { "term", Term } };
		if (!Where.Relative.empty())
		{
			Parameters.push_back({ "scope", Where.Relative });
		}
		return RunTool("search_files", Parameters,
			[&]
			{
				OutResult = SearchProject(Files, Where, Term, CancelCheck());
				return FToolOutcome{ true, OutResult.Describe() };
			});
	}

	bool FTurnDesk::RunReadTool(const FProjectPath& File, int FirstLine, int LastLine, FProjectText& OutText)
	{
		FToolParameters Parameters = { { "path", File.Relative } };
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

	bool FTurnDesk::RunFindFileTool(const std::string& Name, std::vector<FProjectPath>& OutPaths)
	{
		return RunTool("find_file", { { "name", Name } },
			[&]
			{
				OutPaths = Files.Find(Name, MaxSearchHits);
				return FToolOutcome{ true, FProjectFiles::DescribeFound(OutPaths.size()) };
			});
	}

	FProjectPath FTurnDesk::GetProjectPath() const
	{
		return { Files.GetRoot(), std::string(), true };
	}

	bool FTurnDesk::FindPlace(const std::string& Text, FProjectPath& OutPath) const
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

	std::function<bool()> FTurnDesk::CancelCheck() const
	{
		return [this] { return Control.IsCancelled(); };
	}

	// Notes on attachments go below each answer, whichever work gave it.
	void FTurnDesk::Answer(const std::string& Markdown)
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
		Tell(ETurnReportKind::Answer, Text);
	}

	void FTurnDesk::Fail(std::string_view Why)
	{
		Failure = Failure.empty() ? std::string(Why) : Failure;
	}

	void FTurnDesk::Tell(ETurnReportKind Kind, std::string_view Text)
	{
		FTurnReport Item;
		Item.Kind = Kind;
		Item.Text = Utf8Text::ToString(Text);
		Sink(std::move(Item));
	}

	void FTurnDesk::TellStep(int Number, std::string_view What)
	{
		Tell(ETurnReportKind::Step, "Executing step " + std::to_string(Number) + ": " + Utf8Text::Shorten(What, 80));
	}

	std::vector<std::string> FTurnDesk::GetAttachedNames() const
	{
		std::vector<std::string> Names;
		for (const FProjectPath& File : Attachments)
		{
			const std::string Name = NameInWords(File.Relative);
			Names.push_back(Name.substr(Name.rfind('/') + 1));
		}
		return Names;
	}

	std::vector<FProjectPath> FTurnDesk::FindNamedAttachments(const std::string& Text) const
	{
		std::vector<FProjectPath> Named;
		if (Attachments.size() < 2)
		{
			return Named;
		}
		for (const size_t Index : FindNamesIn(Text, GetAttachedNames()))
		{
			Named.push_back(Attachments[Index]);
		}
		return Named;
	}

	bool FTurnDesk::FindAttachment(const std::string& Name, FProjectPath& OutPath) const
	{
		const auto Found = std::find_if(Attachments.begin(), Attachments.end(),
			[&Name](const FProjectPath& File)
			{
				const std::string Relative = NameInWords(File.Relative);
				return !Name.empty() && (Relative == Name || LastPartOf(Relative) == Name || NameInWords(File.Absolute) == Name);
			});
		if (Found == Attachments.end())
		{
			return false;
		}
		OutPath = *Found;
		return true;
	}
}
