#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "CoreMinimal.h"

#include "Agent/ConversationTypes.h"
#include "Tools/AgentPlan.h"
#include "Turn/TurnControl.h"

namespace Velmora
{
	class FChangeJournal;
	class FPermissionRules;

	enum class ETurnReportKind
	{
		Step, // Text: the progress text.
		ToolStarted, // ToolId, ToolName, Parameters, Metadata.
		ToolCompleted, // ToolId, ToolName, bSuccess, Text: the result.
		Answer, // Text: the answer; bHasToolCalls.
		ToolTraffic, // Text: a message of the role Tool. Stored in its place and never shown.
		Asking, // What the tools gave goes to the model, which thinks again.
		Plan, // Plan; Text: what has changed in it.
		Decision, // Question. The runner waits for FTurnControl::WaitForDecision right after it.
		Failed, // Text: why. The turn is over.
		Finished // The turn is over. Text: why it did not do what was asked, empty when it did.
	};

	/** A question that a turn waits on. UTF-8. */
	struct FTurnQuestion
	{
		/** The tool's name, or what else is asked for: "connect", "tokens". */
		std::string Tool;

		/** What it is to act on: a path, a command line. Rules compare the beginning of it. */
		std::string Subject;

		/** Markdown: what is to be done and why it is asked, with the whole command or difference in a fenced block. */
		std::string Text;

		/** "Always in this project" is an answer. */
		bool bMayBeRemembered = true;
	};

	/** One thing that happened in a turn, on its way to the game thread. */
	struct FTurnReport
	{
		ETurnReportKind Kind = ETurnReportKind::Finished;
		FString Text;
		FString ToolId;
		FString ToolName;
		FString Parameters;
		FString Metadata;
		bool bSuccess = false;
		bool bHasToolCalls = false;
		FAgentPlan Plan;
		FTurnQuestion Question;
	};

	/** What the user has written about the project in the settings. UTF-8. */
	struct FBehaviourTexts
	{
		std::string ProjectDescription;
		std::string CurrentAreaOfFocus;
		std::string GuidelinesAndTips;
		std::string Constraints;
	};

	/** All that a worker needs to know; it shares nothing else with the game thread but its control. */
	struct FTurnInput
	{
		std::string ProjectFolder;
		std::string Prompt;
		std::vector<std::string> ContextFiles;
		EConversationMode Mode = EConversationMode::General;
		FBehaviourTexts Behaviour;

		/** What was said before the prompt, in order; empty unless the runner needs it. */
		TArray<FConversationMessage> Transcript;
		double MinimumToolSeconds = 0.0;

		/** Start of the ids of this turn's tools. */
		std::string ToolIdPrefix;

		/** Where changes of files are written down, and under which transaction. */
		std::shared_ptr<FChangeJournal> Journal;
		std::string TransactionId;

		/** What the user has allowed and refused for good. Never null within a session. */
		std::shared_ptr<FPermissionRules> Rules;

		/** Somebody is there to answer. Otherwise what no rule allows is refused. */
		bool bCanAsk = true;

		/** Nothing on disk may be changed. */
		bool IsAdvisor() const { return Mode == EConversationMode::Advisor; }
	};

	/**
	 * Answers one request on a worker. Between two tools it obeys its control; what it has to say goes to the sink, in order.
	 * One object per turn.
	 */
	class ITurnRunner
	{
	public:
		using FReportSink = std::function<void(FTurnReport&&)>;

		virtual ~ITurnRunner() = default;

		/** FTurnInput::Transcript is to be filled. Asked on the game thread before the turn starts. */
		virtual bool NeedsTranscript() const { return false; }

		/** Ends with Finished or Failed, or with nothing when cancelled. Input and Control outlive the call. */
		virtual void Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink) = 0;
	};
}
