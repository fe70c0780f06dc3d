#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Request/AgentRequest.h"
#include "Tools/ProjectFiles.h"
#include "Tools/ProjectSearch.h"
#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** What stands behind the last slash of a path, whichever way it leans. */
	inline std::string_view LastPartOf(std::string_view Path)
	{
		return Path.substr(Path.find_last_of("/\\") + 1);
	}

	/** What the row of a tool tells when it ends. */
	struct FToolOutcome
	{
		bool bSuccess = true;
		std::string Sentence;
	};
	using FToolParameters = std::vector<std::pair<std::string_view, std::string>>;

	/**
	 * What all kinds of work of the local agent share: the files, what is attached, and the ways to report. Operations that
	 * return a bool for it give false when the turn is over; the caller then returns at once.
	 */
	class FTurnDesk
	{
	public:
		FTurnDesk(const FTurnInput& InInput, FTurnControl& InControl, ITurnRunner::FReportSink InSink);

		/** Tells a step, unless the user's plan tells its own. The first one goes without saying: for most requests it is all. */
		bool BeginStep(std::string_view What);

		/** Runs some work as a tool of the tool box: a row that starts, and ends with its sentence. */
		bool RunTool(std::string_view Name, const FToolParameters& Parameters, const std::function<FToolOutcome()>& Work);
		bool RunSearchTool(const FProjectPath& Where, const std::string& Term, FSearchResult& OutResult);
		bool RunReadTool(const FProjectPath& File, int FirstLine, int LastLine, FProjectText& OutText);
		bool RunFindFileTool(const std::string& Name, std::vector<FProjectPath>& OutPaths);

		/** Takes on what is attached to the message. */
		bool ReadAttachments();

		/** An answer in Markdown, with what is to be said of the attached files below it. */
		void Answer(const std::string& Markdown);

		/** Reports what is a kind and a text. UTF-8. */
		void Tell(ETurnReportKind Kind, std::string_view Text);

		/** "Executing step 3: …". */
		void TellStep(int Number, std::string_view What);

		FProjectPath GetProjectPath() const;

		/** What is named by Text in plain words; false for nothing or several candidates. */
		bool FindPlace(const std::string& Text, FProjectPath& OutPath) const;

		/** The attached file of that name, as the user sees it. */
		bool FindAttachment(const std::string& Name, FProjectPath& OutPath) const;

		/** Their bare names, as the user sees them. */
		std::vector<std::string> GetAttachedNames() const;

		/** Of several attached files those that a text names, if it does nothing else. */
		std::vector<FProjectPath> FindNamedAttachments(const std::string& Text) const;
		std::function<bool()> CancelCheck() const;

		const FTurnInput& Input;
		FTurnControl& Control;
		const ITurnRunner::FReportSink Sink;
		const FProjectFiles Files;
		std::vector<FProjectPath> Attachments;

		/** What cannot be said of the attached files otherwise, to be put below the answer. */
		std::string AttachmentNotes;

		/** What the user wants instead of what was refused. */
		std::string NextPrompt;

		/** The request at hand could not be carried out; the first reason counts. A sentence. */
		void Fail(std::string_view Why);
		bool HasFailed() const { return !Failure.empty(); }

		/** Why a tool has failed or a request was not understood since this was last cleared. */
		std::string Failure;
		bool bHasPlan = false;
		int StepCount = 0;
		int ToolCount = 0;
	};

	/** One kind of work on one request. */
	class FTurnWork
	{
	public:
		FTurnWork(FTurnDesk& InDesk, const FAgentRequest& InRequest)
			: Desk(InDesk)
			, Request(InRequest)
		{
		}

	protected:
		/** The answer to all of the request: the turn goes on. */
		bool Say(const std::string& Markdown)
		{
			Desk.Answer(Markdown);
			return true;
		}

		/** The place that stands behind the last "in" of the request, if it is one; the project otherwise. */
		bool FindScope(FProjectPath& OutPlace) const
		{
			if (!Request.TargetInScope.empty() && Desk.FindPlace(Request.Scope, OutPlace))
			{
				return true;
			}
			OutPlace = Desk.GetProjectPath();
			return false;
		}

		FTurnDesk& Desk;
		const FAgentRequest& Request;
	};
}
