#include "Host/AgentSeam.h"
#include "Host/AgentConnections.h"

#include "Async/Async.h"
#include "Http/WebAddress.h"
#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Model/ModelConnection.h"
#include "Model/ModelConsents.h"
#include "Model/ModelSizes.h"
#include "Text/Utf8Text.h"

// The button "Test": what a server says of itself, and whether its model does what a turn needs.

namespace Velmora
{
	namespace
	{
		/** Nobody watches a button for longer. */
		constexpr double MaxTestSeconds = 60.0;

		FModelRequest MakeTestRequest(const FModelConnection& Connection)
		{
			FModelRequest Request;
			Request.Model = Connection.Model;
			Request.Options = Connection.Options;
			Request.Messages = { { EModelRole::User, "This is a test of the connection. Call the tool ping, then answer with: ok", {},
				{} } };
			Request.Tools = { { "ping", "Answers with pong.", R"({"type":"object","properties":{}})" } };
			return Request;
		}

		/** Asks, and once more without what the server does not take. */
		FModelReply AskForCall(FModelClient& Client, FModelRequest& Request)
		{
			FModelReply Reply = Client.Ask(Request);
			for (int Try = 0; Try < 2; ++Try)
			{
				if (Reply.Problem.Fault == EModelFault::NoUsage && Request.bAsksForUsage)
				{
					Request.bAsksForUsage = false;
				}
				else if (Reply.Problem.Fault == EModelFault::NoTools && !Request.Tools.empty())
				{
					Request.Tools.clear();
				}
				else
				{
					break;
				}
				Reply = Client.Ask(Request);
			}
			return Reply;
		}

		std::string DescribeFound(const FConnectionReport& Report)
		{
			const int Tenths = static_cast<int>(Report.FirstByteSeconds * 10.0 + 0.5);
			const std::string Listed = Report.Models.Num() == 0
				? std::string("The server lists no models; ")
				: "The server lists " + Utf8Text::Count(static_cast<size_t>(Report.Models.Num()), "model", "models") + "; ";
			const std::string Context = Report.ContextTokens > 0
				? " has room for " + Utf8Text::Count(static_cast<size_t>(Report.ContextTokens), "token", "tokens")
				: " does not say how many tokens it has room for";
			const char* const Tools = Report.Tools == FConnectionReport::ETools::Yes ? "uses tools"
				: Report.Tools == FConnectionReport::ETools::No						 ? "cannot use tools"
																					 : "did not call the tool that it was asked to call";
			return Listed + Utf8Text::FromString(Report.Model) + Context + ", " + Tools + " and began to answer after " +
				std::to_string(Tenths / 10) + '.' + std::to_string(Tenths % 10) + " s.";
		}

		FConnectionReport Fail(FConnectionReport&& Report, const std::string& Sentence)
		{
			Report.Sentence = Utf8Text::ToString(Sentence);
			return MoveTemp(Report);
		}

		FConnectionReport RunTest(const FAgentConnection& Given)
		{
			FConnectionReport Report;
			// 1. What can be said without asking anybody.
			const FString Wrong = FAgentConnections::Check(Given);
			FWebAddress Address;
			std::string Problem;
			if (!Wrong.IsEmpty() || !FWebAddress::Parse(Utf8Text::FromString(Given.Url), Address, Problem))
			{
				return Fail(MoveTemp(Report), Wrong.IsEmpty() ? Problem : Utf8Text::FromString(Wrong));
			}
			if (!Address.IsLoopback() && !Address.IsEncrypted() && !ModelConsents::HasAnswered(Address.GetOrigin()))
			{
				return Fail(MoveTemp(Report),
					"The connection is not encrypted: everybody on the way can read it, the key included. It can be tested once you have "
					"agreed to that, which the first message asks for.");
			}
			FModelConnection Connection = MakeModelConnection(Given);
			Connection.Server.Limits.TotalSeconds = MaxTestSeconds;

			// 2. The list; a server need not have one as long as the connection names a model.
			const FChatCompletions Dialect;
			FModelClient Client(Dialect, Connection.Server);
			std::vector<FModelInfo> Models;
			const FModelProblem NoList = Client.ListModels(Models);
			if (Connection.Model.empty() && (NoList || Models.empty()))
			{
				return Fail(MoveTemp(Report),
					NoList ? DescribeProblem(NoList, Connection.Server, Connection.Model)
						   : "The server lists no model. Load one there, or name one in the connection.");
			}
			Connection.Model = Connection.Model.empty() ? Models.front().Id : Connection.Model;
			Report.Model = Utf8Text::ToString(Connection.Model);
			for (const FModelInfo& Info : Models)
			{
				Report.Models.Add(Utf8Text::ToString(Info.Id));
			}

			// 3. An answer.
			FModelRequest Request = MakeTestRequest(Connection);
			const FModelReply Reply = AskForCall(Client, Request);
			if (Reply.Problem)
			{
				return Fail(MoveTemp(Report), DescribeProblem(Reply.Problem, Connection.Server, Connection.Model));
			}
			// Behind the answer, for some servers say what they have loaded only then.
			Report.ContextTokens = ModelSizes::AskAgain(Client, Connection, Connection.Model, Models);
			Report.bSuccess = true;
			Report.FirstByteSeconds = Reply.FirstByteSeconds;
			Report.Tools = Request.Tools.empty() ? FConnectionReport::ETools::No
				: !Reply.Calls.empty()			 ? FConnectionReport::ETools::Yes
												 : FConnectionReport::ETools::Unknown;
			Report.Sentence = Utf8Text::ToString(DescribeFound(Report));
			return Report;
		}
	}

	void FAgentConnections::Test(const FAgentConnection& Connection, TFunction<void(const FConnectionReport&)> Done)
	{
		if (const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get(); Seam && !Seam->MayConnect())
		{
			FConnectionReport Report;
			Report.Sentence = TEXT("This run asks no server.");
			AsyncTask(ENamedThreads::GameThread, [Report, Done = MoveTemp(Done)] { Done(Report); });
			return;
		}
		Async(EAsyncExecution::Thread,
			[Connection, Done = MoveTemp(Done)]() mutable
			{ AsyncTask(ENamedThreads::GameThread, [Report = RunTest(Connection), Done = MoveTemp(Done)] { Done(Report); }); });
	}
}
