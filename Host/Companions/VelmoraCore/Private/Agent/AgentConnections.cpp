#include "Host/AgentSeam.h"
#include "Host/AgentConnections.h"

#include <mutex>

#include <rapidjson/document.h>

#include "Host/HostFileNames.h"
#include "Http/WebAddress.h"
#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Model/ModelConnection.h"
#include "Model/ModelKeys.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		struct FSelection
		{
			std::mutex Mutex;
			TOptional<FAgentConnection> Connection;
		};

		FSelection& GetSelection()
		{
			static FSelection Selection;
			return Selection;
		}

		bool IsJsonObject(const std::string& Text)
		{
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag>(Text.data(), Text.size());
			return !Parsed.HasParseError() && Parsed.IsObject();
		}
	}

	FString FAgentConnections::DescribeKey(const FAgentConnection& Connection)
	{
		return Utf8Text::ToString(ModelKeys::Describe(Connection));
	}

	FString FAgentConnections::StoreKey(const FAgentConnection& Connection, const FString& Key)
	{
		return Utf8Text::ToString(ModelKeys::Store(Connection, Utf8Text::FromString(Key.TrimStartAndEnd())));
	}

	FString FAgentConnections::Check(const FAgentConnection& Connection)
	{
		FWebAddress Address;
		std::string Problem;
		if (!FWebAddress::Parse(Utf8Text::FromString(Connection.Url), Address, Problem))
		{
			return Utf8Text::ToString(Problem);
		}
		if (!Connection.Options.IsEmpty() && !IsJsonObject(Utf8Text::FromString(Connection.Options)))
		{
			return TEXT("The options are no JSON object, such as {\"temperature\": 0.2}.");
		}
		return FString();
	}

	void FAgentConnections::Select(const TOptional<FAgentConnection>& Connection)
	{
		FSelection& Selection = GetSelection();
		const std::scoped_lock Lock(Selection.Mutex);
		Selection.Connection = Connection;
		HideKeys();
		if (Connection.IsSet())
		{
			ModelKeys::TakeFromEnvironment(Utf8Text::FromString(Connection->KeyVariable));
		}
	}

	void FAgentConnections::HideKeys()
	{
		// Those of connections that do not answer now, too.
		FString Problem;
		for (const FAgentConnection& Known : List(Problem))
		{
			ModelKeys::TakeFromEnvironment(Utf8Text::FromString(Known.KeyVariable));
		}
	}

	TOptional<FAgentConnection> FAgentConnections::GetSelected()
	{
		FSelection& Selection = GetSelection();
		const std::scoped_lock Lock(Selection.Mutex);
		return Selection.Connection;
	}

	bool FAgentConnections::ListModels(const FAgentConnection& Connection, TArray<FString>& OutLines, FString& OutProblem)
	{
		const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get();
		OutProblem = Seam && !Seam->MayConnect() ? FString(TEXT("This run asks no server.")) : Check(Connection);
		if (!OutProblem.IsEmpty())
		{
			return false;
		}
		const FModelConnection Model = MakeModelConnection(Connection);
		const FChatCompletions Dialect;
		FModelClient Client(Dialect, Model.Server);
		std::vector<FModelInfo> Models;
		if (const FModelProblem Problem = Client.ListModels(Models))
		{
			OutProblem = Utf8Text::ToString(DescribeProblem(Problem, Model.Server, Model.Model));
			return false;
		}
		for (const FModelInfo& Info : Models)
		{
			const std::string Size = Info.ContextTokens > 0 ? "  " + std::to_string(Info.ContextTokens) + " tokens" : std::string();
			OutLines.Add(Utf8Text::ToString(Info.Id + Size));
		}
		return true;
	}

	FModelConnection MakeModelConnection(const FAgentConnection& Connection)
	{
		FModelConnection Model;
		Model.Name = Utf8Text::FromString(Connection.Name);
		Model.Server.BaseUrl = Utf8Text::FromString(Connection.Url);
		Model.Server.Key = ModelKeys::Find(Connection);
		Model.Server.CaFile = HostFileNameToBytes(Connection.CaFile);
		Model.Server.Proxy = Utf8Text::FromString(Connection.Proxy);
		Model.Server.Limits.ConnectSeconds = Connection.ConnectSeconds;
		Model.Server.Limits.FirstByteSeconds = Connection.FirstByteSeconds;
		Model.Server.Limits.SilenceSeconds = Connection.SilenceSeconds;
		Model.Model = Utf8Text::FromString(Connection.Model);
		Model.Options = Utf8Text::FromString(Connection.Options);
		Model.ContextTokens = Connection.ContextTokens;
		Model.MaxRounds = Connection.MaxRounds;
		Model.Budget.PromptPrice = Connection.PromptPrice;
		Model.Budget.CompletionPrice = Connection.CompletionPrice;
		Model.Budget.MaxTurnTokens = Connection.MaxTurnTokens;
		Model.Budget.MaxDayTokens = Connection.MaxDayTokens;
		Model.Budget.MaxTurnCost = Connection.MaxTurnCost;
		Model.Budget.MaxDayCost = Connection.MaxDayCost;
		return Model;
	}
}
