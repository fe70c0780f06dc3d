#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/CodeIndexControl.h"
#include "Request/AgentPlan.h"
#include "Request/AgentRequest.h"
#include "Tools/ProjectFiles.h"
#include "Tools/ProjectSearch.h"
#include "Tools/ToolBox.h"
#include "Turn/TurnPermissions.h"
#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** The agent that needs no model: it takes commands and carries them out. */
	class FLocalTurnRunner : public ITurnRunner
	{
	public:
		virtual void Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink) override;
	};

	/**
	 * Answers one request on a worker: understands it, runs tools on the project, writes the answer. Between two
	 * tools it obeys its control.
	 */
	class FLocalTurn
	{
	public:
		FLocalTurn(const FTurnInput& InInput, FTurnControl& InControl, ITurnRunner::FReportSink InSink);

		/** Ends with Finished or Failed, or with nothing when cancelled. */
		void Run();

	private:
		struct FToolOutcome
		{
			bool bSuccess = true;
			std::string Sentence;
		};
		using FParameters = std::vector<std::pair<std::string_view, std::string>>;

		// Each of these returns false when the turn has been cancelled; the caller then returns at once.
		bool BeginStep(std::string_view What);
		bool RunTool(std::string_view Name, const FParameters& Parameters, const std::function<FToolOutcome()>& Work);

		bool ReadAttachments();

		/** Understands a sentence of the user's, with the names of the attached files in it. */
		void ReadRequest(const std::string& Text);

		/** Runs the steps one by one up to the first that fails. */
		bool RunPlan();
		void SetPlanStep(size_t Index, EPlanStepStatus Status);
		bool RunRequest();
		bool RunFindText();
		bool RunFindSymbol();
		bool RunOutline();
		bool RunWhichFiles();
		bool RunExplain();
		bool RunShow();
		bool RunList();
		bool RunSummarise();
		bool RunCount();
		bool RunChange();

		bool RunSearchTool(const FProjectPath& Where, const std::string& Term, FSearchResult& OutResult);
		bool RunReadTool(const FProjectPath& File, int FirstLine, int LastLine, FProjectText& OutText);
		bool RunFindFileTool(const std::string& Name, std::vector<FProjectPath>& OutPaths);

		/** The tool of the request on one file; adds what became of it to the answer. */
		bool RunChangeTool(const std::string& Path, std::string& OutAnswer);

		/** Asks the user; false when the turn is over. */
		bool AskForTool(std::string_view Tool, const FToolQuestion& Question, FPermissionAnswer& OutAnswer);

		/** Searches the attached files, then the place or the project. Both results, and what was looked for. */
		struct FCombinedSearch
		{
			std::string Term;
			FProjectPath Where;
			bool bHasScope = false;
			FSearchResult Attached;
			FSearchResult Project;
		};
		bool RunCombinedSearch(FCombinedSearch& OutSearch);

		bool AnswerNotFound(const FCombinedSearch& Search);

		/** The best of some symbols with its code, then the others. */
		bool AnswerSymbols(const std::string& Name, const std::vector<CodeIntel::FIndexSymbol>& Symbols);
		bool AnswerFile(const FProjectPath& File);
		bool AnswerDescription(const FProjectPath& File);
		/** Each of them, when there are several. */
		bool AnswerAttachments(const std::vector<FProjectPath>& Named);
		/** Adds the size, the outline and the beginning of a file to the answer. */
		bool DescribeFile(const FProjectPath& File, std::string& OutAnswer);
		bool AnswerFolder(const FProjectPath& Folder);
		bool AnswerPattern(const std::string& Pattern);

		/** Code around a hit: the comment above and the body of a definition, else the lines beside it. */
		bool AppendSnippet(const FSearchHit& Hit, std::string& Answer);

		void Answer(const std::string& Markdown);
		void AnswerHelp(std::string_view Opening);
		void AnswerUnknown();

		FProjectPath GetProjectPath() const;
		/** What is named by Text in plain words, or several candidates. */
		bool FindPlace(const std::string& Text, FProjectPath& OutPath) const;

		/** The attached file of that name, as the user sees it. */
		bool FindAttachment(const std::string& Name, FProjectPath& OutPath) const;

		/** Their bare names, as the user sees them. */
		std::vector<std::string> GetAttachedNames() const;

		/** The attached files that a text names, if it does nothing else. */
		std::vector<FProjectPath> FindNamedAttachments(const std::string& Text) const;

		/** What file a request to change one means; false with a question to the user. */
		bool FindChangeTarget(
			const std::string& Name, bool bMustExist, bool bFollowsLinks, std::string& OutPath, std::string& OutQuestion) const;
		std::function<bool()> CancelCheck() const;
		void Report(FTurnReport&& Item);

		const FTurnInput& Input;
		FTurnControl& Control;
		const ITurnRunner::FReportSink Sink;
		const FProjectFiles Files;
		FAgentRequest Request;

		/** What the user wants instead of what was refused. */
		std::string NextPrompt;

		/** Empty for a plain request. */
		FAgentPlan Plan;

		/** A tool has failed, or a request was not understood, since this was last cleared. */
		bool bHasFailed = false;
		std::vector<FProjectPath> Attachments;

		/** What cannot be said of the attached files otherwise, to be put below the answer. */
		std::string AttachmentNotes;
		int StepCount = 0;
		int ToolCount = 0;
	};

	/** Where to show a definition that starts at Line (from 1): first and last line, the comment above included. Pure. */
	std::pair<int, int> MeasureDefinition(const std::vector<std::string_view>& Lines, int Line);
}
