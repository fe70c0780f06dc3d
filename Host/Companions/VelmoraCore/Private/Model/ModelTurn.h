#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Model/ChatCompletions.h"
#include "Model/ContextGauge.h"
#include "Model/ModelActivity.h"
#include "Model/ModelBudget.h"
#include "Model/ModelClient.h"
#include "Model/ModelConnection.h"
#include "Model/SummaryShelf.h"
#include "Tools/ProjectFiles.h"
#include "Tools/ToolBox.h"
#include "Turn/TurnPermissions.h"
#include "Turn/TurnRunner.h"

namespace Velmora
{
	/** One turn with a language model, on a worker. */
	class FModelTurn
	{
	public:
		FModelTurn(const FModelConnection& InConnection, const FTurnInput& InInput, FTurnControl& InControl,
			const ITurnRunner::FReportSink& InSink);
		~FModelTurn();
		FModelTurn(const FModelTurn&) = delete;
		FModelTurn& operator=(const FModelTurn&) = delete;

		/** Ends with Finished or Failed, or with nothing when cancelled. */
		void Run();

	private:
		// Each of these returns false when the turn is over; the caller then returns at once.
		bool AskToConnect();
		bool AskForBackground(const std::string& Background, bool& bOutIsAllowed);
		bool PickModel();
		bool MakeMessages();
		bool AskModel(FModelReply& OutReply);
		bool AskForMoreRounds(int Round);
		/** @param Said  What has come of the answer; it is kept when the turn ends here. */
		bool AskForBudget(const std::string& Said);
		bool RunCalls(FModelReply& Reply);
		bool RunCall(const FModelCall& Call, std::string& OutText);
		bool AskForCall(const FToolRow& Row, const FToolArguments& Arguments, FToolResult& Result);

		/** Asks for consent that holds for this process when it is given once. */
		bool AskOnce(const FTurnQuestion& Question, FPermissionAnswer& OutAnswer);

		enum class ENext
		{
			Again,
			Give, // What came is the answer.
			Over
		};
		/** What to do about an answer with a problem. */
		ENext Mend(FModelReply& Reply, int& Try);

		/** Leaves out of the request what the server or the model cannot take. False when there is nothing of the kind. */
		bool MendRequest(const FModelReply& Reply, int& Try);

		/** The answer was cut since the model can take no more. */
		bool IsFull(const FModelReply& Reply) const;
		bool WaitForServer(EModelFault Fault, double Seconds, int Try);
		bool MakeRoom(const FModelProblem& Problem);

		/** Makes the messages fit, and has the model sum up what must go. False when nothing could be left out. */
		bool ShortenTo(size_t MaxBytes);
		void SetContext(int64_t Tokens);
		/** Before each request: what the tools have brought in this turn counts as well. */
		void KeepRoom();
		/** Once in a turn: what an earlier one has had summed up needs no second summary. */
		bool TakeKnownSummary();
		void PutBackground();
		void Summarise(const std::vector<FModelMessage>& Dropped, size_t MaxBytes);

		void BeginRound(int Round, const FModelReply& Reply);
		void TellPlan(FAgentPlan&& Plan);
		void TellToolStart(const FToolRow& Row, const FToolArguments& Arguments, FTurnReport& OutStart);

		/** What a row of the chat is called: unique in its step, since a second one of the same name would not be shown. */
		std::vector<std::pair<std::string_view, std::string>> MakeRowParameters(const FToolRow& Row, const FToolArguments& Arguments);

		void Tell(ETurnReportKind Kind, std::string_view Text);
		void TellAnswer(const std::string& Text, bool bHasToolCalls);
		void Fail(const std::string& Text);
		std::string Describe(const FModelProblem& Problem) const;

		/** Why an answer is none, or only the beginning of one. */
		std::string DescribeEnd(const FModelReply& Reply) const;

		const FModelConnection& Connection;
		const FTurnInput& Input;
		FTurnControl& Control;
		const ITurnRunner::FReportSink& Sink;
		const FProjectFiles Files;
		FToolBox Tools;
		const FChatCompletions Dialect;
		FModelClient Client;
		FModelActivity Activity;
		FModelSpending Spending;
		FModelRequest Request;

		/** What the user said instead of agreeing; told to the model behind the results of the round. */
		std::string UserWords;
		std::set<std::string> RowNames;

		/** What a change or a command could not do, by its subject, until it was done after all. */
		std::map<std::string, std::string> FailedChanges;
		FAgentPlan Plan;
		int ToolCount = 0;

		/** What the model was told about the project with the user's consent; it stays when the messages around it go. */
		std::string Background;

		/** Once per turn: a server that refuses for want of room would refuse that too. */
		bool bHasSummarised = false;
		bool bHasToldOfShortening = false;
		std::optional<FSummaryShelf> Shelf;

		/** How many messages of the conversation are left out of the request. */
		size_t SummedUp = 0;
		FContextGauge Gauge;
	};
}
