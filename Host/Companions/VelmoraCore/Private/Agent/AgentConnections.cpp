#include "Host/AgentConnections.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <sys/stat.h>

#include <rapidjson/document.h>

#include "Agent/ModelConnection.h"
#include "Host/HostFileNames.h"
#include "Http/WebAddress.h"
#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxFileBytes = 1024 * 1024;

		/** The key for a run with --server: named for nothing else, so that no key goes where it was not meant to go. */
		constexpr const char* ConnectionsFile = "/connections.json";
		constexpr const char* KeysFile = "/keys";

		struct FSelection
		{
			std::mutex Mutex;
			TOptional<FAgentConnection> Connection;

			/** Keys that stood in the environment, by their variable. */
			std::map<std::string, std::string> Keys;
		};

		FSelection& GetSelection()
		{
			static FSelection Selection;
			return Selection;
		}

		std::string GetFolderBytes()
		{
			const char* const Config = getenv("XDG_CONFIG_HOME");
			if (Config && Config[0] == '/')
			{
				return std::string(Config) + "/velmora-ui";
			}
			const char* const Home = getenv("HOME");
			return Home && Home[0] == '/' ? std::string(Home) + "/.config/velmora-ui" : std::string();
		}

		/** A file that only the user may look into. False without a problem when there is none. */
		bool ReadPrivateFile(const std::string& Path, std::string& OutText, std::string& OutProblem)
		{
			struct stat Info = {};
			if (stat(Path.c_str(), &Info) != 0)
			{
				OutProblem = errno == ENOENT || errno == ENOTDIR ? std::string() : Path + " cannot be read.";
				return false;
			}
			if (!S_ISREG(Info.st_mode) || (Info.st_mode & 077) != 0)
			{
				OutProblem = Path + " may be read by others. Make it yours alone: chmod 600 \"" + Path + "\".";
				return false;
			}
			std::ifstream File(Path, std::ios::binary);
			OutText.resize(std::min<size_t>(static_cast<size_t>(Info.st_size), MaxFileBytes + 1));
			File.read(OutText.data(), static_cast<std::streamsize>(OutText.size()));
			OutText.resize(static_cast<size_t>(File.gcount()));
			if (File.bad() || OutText.size() > MaxFileBytes)
			{
				OutProblem = Path + " cannot be read, or is larger than 1 MiB.";
				return false;
			}
			return true;
		}

		/** "ORIGIN KEY", one a line: a key belongs to scheme, host and port and goes nowhere else. */
		std::string FindKeyInFile(const std::string& Origin)
		{
			std::string Text;
			std::string Problem;
			if (!ReadPrivateFile(GetFolderBytes() + KeysFile, Text, Problem))
			{
				return std::string();
			}
			std::istringstream Lines(Text);
			for (std::string Line; std::getline(Lines, Line);)
			{
				const std::string_view Whole = Utf8Text::Trim(Line);
				const size_t Blank = Whole.find_first_of(" \t");
				FWebAddress Address;
				std::string Ignored;
				if (Blank != std::string_view::npos && FWebAddress::Parse(Whole.substr(0, Blank), Address, Ignored) &&
					Address.GetOrigin() == Origin)
				{
					return std::string(Utf8Text::Trim(Whole.substr(Blank)));
				}
			}
			return std::string();
		}

		std::string FindKey(const FAgentConnection& Connection)
		{
			const std::string Variable = Utf8Text::FromString(Connection.KeyVariable);
			{
				FSelection& Selection = GetSelection();
				const std::scoped_lock Lock(Selection.Mutex);
				const auto Found = Selection.Keys.find(Variable);
				if (Found != Selection.Keys.end())
				{
					return Found->second;
				}
			}
			if (const char* const Value = Variable.empty() ? nullptr : getenv(Variable.c_str()))
			{
				return Value;
			}
			FWebAddress Address;
			std::string Ignored;
			return FWebAddress::Parse(Utf8Text::FromString(Connection.Url), Address, Ignored) ? FindKeyInFile(Address.GetOrigin())
																							  : std::string();
		}

		FString GetString(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsString()
				? Utf8Text::ToString(std::string_view(Member->value.GetString(), Member->value.GetStringLength()))
				: FString();
		}

		int32 GetNumber(const rapidjson::Value& Object, const char* Name, int32 Default)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsInt() ? Member->value.GetInt() : Default;
		}

		bool IsJsonObject(const std::string& Text)
		{
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag>(Text.data(), Text.size());
			return !Parsed.HasParseError() && Parsed.IsObject();
		}
	}

	FString FAgentConnections::GetFolder()
	{
		return HostFileNameFromBytes(GetFolderBytes());
	}

	TArray<FAgentConnection> FAgentConnections::List(FString& OutProblem)
	{
		TArray<FAgentConnection> Connections;
		OutProblem.Empty();
		const std::string Path = GetFolderBytes() + ConnectionsFile;
		std::string Text;
		std::string Problem;
		if (!ReadPrivateFile(Path, Text, Problem))
		{
			OutProblem = Utf8Text::ToString(Problem);
			return Connections;
		}
		rapidjson::Document Parsed;
		Parsed.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseCommentsFlag | rapidjson::kParseTrailingCommasFlag>(
			Text.data(), Text.size());
		const bool bIsObject = !Parsed.HasParseError() && Parsed.IsObject();
		const auto ListMember = bIsObject ? Parsed.FindMember("connections") : rapidjson::Value::MemberIterator();
		if (!bIsObject || ListMember == Parsed.MemberEnd() || !ListMember->value.IsArray())
		{
			OutProblem = Utf8Text::ToString(Path + " is no list of connections: it holds {\"connections\": [{\"name\": …, \"url\": …}]}.");
			return Connections;
		}
		for (const rapidjson::Value& Item : ListMember->value.GetArray())
		{
			if (!Item.IsObject())
			{
				continue;
			}
			FAgentConnection Connection;
			Connection.Name = GetString(Item, "name");
			Connection.Url = GetString(Item, "url");
			Connection.Model = GetString(Item, "model");
			Connection.KeyVariable = GetString(Item, "key_variable");
			Connection.CaFile = GetString(Item, "ca_file");
			Connection.Proxy = GetString(Item, "proxy");
			Connection.Options = GetString(Item, "options");
			Connection.ContextTokens = FMath::Max(0, GetNumber(Item, "context_tokens", 0));
			Connection.MaxRounds = FMath::Clamp(GetNumber(Item, "max_rounds", 50), 1, 1000);
			if (!Connection.Name.IsEmpty())
			{
				Connections.Add(MoveTemp(Connection));
			}
		}
		return Connections;
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
		const std::string Variable = Connection.IsSet() ? Utf8Text::FromString(Connection->KeyVariable) : std::string();
		if (const char* const Value = Variable.empty() ? nullptr : getenv(Variable.c_str()))
		{
			Selection.Keys[Variable] = Value;
			unsetenv(Variable.c_str());
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
		OutProblem = Check(Connection);
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
		Model.Server.Key = FindKey(Connection);
		Model.Server.CaFile = HostFileNameToBytes(Connection.CaFile);
		Model.Server.Proxy = Utf8Text::FromString(Connection.Proxy);
		Model.Model = Utf8Text::FromString(Connection.Model);
		Model.Options = Utf8Text::FromString(Connection.Options);
		Model.ContextTokens = Connection.ContextTokens;
		Model.MaxRounds = Connection.MaxRounds;
		return Model;
	}

	std::optional<FModelConnection> GetSelectedModel()
	{
		const TOptional<FAgentConnection> Connection = FAgentConnections::GetSelected();
		return Connection.IsSet() ? std::optional<FModelConnection>(MakeModelConnection(Connection.GetValue())) : std::nullopt;
	}
}
