#include "Model/ModelSizes.h"

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include <rapidjson/document.h>

namespace Velmora::ModelSizes
{
	namespace
	{
		/** How long a server may think about the sizes of its models before it is asked without. */
		constexpr double MaxSeconds = 5.0;

		/** What servers have said in this run. */
		class FKnownSizes
		{
		public:
			static FKnownSizes& Get()
			{
				static FKnownSizes Sizes;
				return Sizes;
			}
			std::optional<int64_t> Find(const std::string& Url, const std::string& Model)
			{
				const std::scoped_lock Lock(Mutex);
				const auto Known = Tokens.find({ Url, Model });
				return Known == Tokens.end() ? std::nullopt : std::optional<int64_t>(Known->second);
			}
			void Set(const std::string& Url, const std::string& Model, int64_t Size)
			{
				const std::scoped_lock Lock(Mutex);
				Tokens[{ Url, Model }] = Size;
			}

		private:
			std::mutex Mutex;
			std::map<std::pair<std::string, std::string>, int64_t> Tokens;
		};

		int64_t FindNumber(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsInt() && Member->value.GetInt() > 0 ? Member->value.GetInt() : 0;
		}

		/** What the connection has the server load the model with is what there is room for. */
		int64_t FindInConnection(const FModelConnection& Connection)
		{
			rapidjson::Document Options;
			Options.Parse<rapidjson::kParseIterativeFlag>(Connection.Options.data(), Connection.Options.size());
			if (Connection.ContextTokens > 0 || Options.HasParseError() || !Options.IsObject())
			{
				return Connection.ContextTokens;
			}
			const auto Inner = Options.FindMember("options");
			const bool bHasInner = Inner != Options.MemberEnd() && Inner->value.IsObject();
			return FindNumber(bHasInner ? Inner->value : Options, "num_ctx");
		}

		/** Of the model with that name; a server with one model serves it under whatever name. */
		int64_t FindInList(const std::vector<FModelInfo>& Models, const std::string& Model)
		{
			const FModelInfo* const Named = FindModel(Models, Model);
			return Named ? Named->ContextTokens : Models.size() == 1 ? Models.front().ContextTokens : 0;
		}

		int64_t Ask(FModelClient& Client, const FModelConnection& Connection, const std::string& Model,
			const std::vector<FModelInfo>& Models, double Seconds)
		{
			const int64_t Listed = FindInList(Models, Model);
			const std::optional<int64_t> Size = Listed > 0 ? Listed : Client.AskForSize(Model, Seconds);
			if (Size)
			{
				Set(Connection, Model, *Size);
			}
			return Size.value_or(0);
		}

		/** A message fails for the same reason, and the next one asks anew. */
		bool MayPass(EModelFault Fault)
		{
			switch (Fault)
			{
			case EModelFault::Cancelled:
			case EModelFault::BadAddress:
			case EModelFault::Unreachable:
			case EModelFault::NotTrusted:
			case EModelFault::Refused:
			case EModelFault::RateLimited:
			case EModelFault::Overloaded:
				return true;
			default:
				return false;
			}
		}
	}

	int64_t Find(FModelClient& Client, const FModelConnection& Connection, const std::string& Model)
	{
		if (const int64_t Given = FindInConnection(Connection))
		{
			return Given;
		}
		const std::string& Url = Connection.Server.BaseUrl;
		if (const std::optional<int64_t> Known = FKnownSizes::Get().Find(Url, Model))
		{
			return *Known;
		}
		// It need not have a list. One that cannot be reached is told when it is asked for the answer.
		const auto Start = std::chrono::steady_clock::now();
		std::vector<FModelInfo> Models;
		const FModelProblem Problem = Client.ListModels(Models, MaxSeconds);
		if (MayPass(Problem.Fault))
		{
			return 0;
		}
		const double Left = MaxSeconds - std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
		return Ask(Client, Connection, Model, Models, Left);
	}

	int64_t FindWith(
		FModelClient& Client, const FModelConnection& Connection, const std::string& Model, const std::vector<FModelInfo>& Models)
	{
		const int64_t Given = FindInConnection(Connection);
		const int64_t Listed = Given > 0 ? Given : FindInList(Models, Model);
		if (Listed > 0)
		{
			return Listed;
		}
		const std::optional<int64_t> Known = FKnownSizes::Get().Find(Connection.Server.BaseUrl, Model);
		return Known ? *Known : AskAgain(Client, Connection, Model, Models);
	}

	int64_t AskAgain(
		FModelClient& Client, const FModelConnection& Connection, const std::string& Model, const std::vector<FModelInfo>& Models)
	{
		if (const int64_t Given = FindInConnection(Connection))
		{
			return Given;
		}
		return Ask(Client, Connection, Model, Models, MaxSeconds);
	}

	void Set(const FModelConnection& Connection, const std::string& Model, int64_t Tokens)
	{
		FKnownSizes::Get().Set(Connection.Server.BaseUrl, Model, Tokens);
	}
}
