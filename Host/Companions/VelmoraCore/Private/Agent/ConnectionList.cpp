#include "Host/AgentConnections.h"

#include <set>

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "Changes/PrivateFile.h"
#include "Host/HostFileNames.h"
#include "Text/Utf8Text.h"

// The file with the user's connections.

namespace Velmora
{
	namespace
	{
		constexpr const char* ConnectionsFile = "connections.json";

		// One row for each member of a connection; the file is read and written by them.
		struct FTextMember
		{
			const char* Name;
			FString FAgentConnection::*Member;
		};
		constexpr FTextMember TextMembers[] = {
			{ "name", &FAgentConnection::Name },
			{ "url", &FAgentConnection::Url },
			{ "model", &FAgentConnection::Model },
			{ "key_variable", &FAgentConnection::KeyVariable },
			{ "ca_file", &FAgentConnection::CaFile },
			{ "proxy", &FAgentConnection::Proxy },
			{ "options", &FAgentConnection::Options },
		};

		template <typename FNumber>
		struct TNumberMember
		{
			const char* Name;
			FNumber FAgentConnection::*Member;
			FNumber Min;
			FNumber Max;
		};
		constexpr TNumberMember<int32> CountMembers[] = {
			{ "context_tokens", &FAgentConnection::ContextTokens, 0, 1000000000 },
			{ "max_rounds", &FAgentConnection::MaxRounds, 1, 1000 },
			{ "connect_seconds", &FAgentConnection::ConnectSeconds, 1, 3600 },
			{ "first_byte_seconds", &FAgentConnection::FirstByteSeconds, 1, 3600 },
			{ "silence_seconds", &FAgentConnection::SilenceSeconds, 1, 3600 },
		};
		constexpr TNumberMember<int64> TokenMembers[] = {
			{ "max_turn_tokens", &FAgentConnection::MaxTurnTokens, 0, int64(1) << 50 },
			{ "max_day_tokens", &FAgentConnection::MaxDayTokens, 0, int64(1) << 50 },
		};
		constexpr TNumberMember<double> MoneyMembers[] = {
			{ "prompt_price", &FAgentConnection::PromptPrice, 0.0, 1.0e9 },
			{ "completion_price", &FAgentConnection::CompletionPrice, 0.0, 1.0e9 },
			{ "max_turn_cost", &FAgentConnection::MaxTurnCost, 0.0, 1.0e9 },
			{ "max_day_cost", &FAgentConnection::MaxDayCost, 0.0, 1.0e9 },
		};

		/** Null is as good as left out; any other kind than the wanted one would be a choice or a limit that silently does not hold. */
		bool IsOfKind(const rapidjson::Value& Object, const char* Name, bool (rapidjson::Value::*IsKind)() const)
		{
			const auto Member = Object.FindMember(Name);
			return Member == Object.MemberEnd() || Member->value.IsNull() || (Member->value.*IsKind)();
		}

		FString GetText(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsString()
				? Utf8Text::ToString(std::string_view(Member->value.GetString(), Member->value.GetStringLength()))
				: FString();
		}

		template <typename FNumber>
		void ReadNumber(const rapidjson::Value& Object, const TNumberMember<FNumber>& Row, FAgentConnection& Connection)
		{
			const auto Member = Object.FindMember(Row.Name);
			if (Member != Object.MemberEnd() && Member->value.IsNumber())
			{
				// As a double first, so that no number is out of range before it is clamped.
				const double Value = FMath::Clamp(Member->value.GetDouble(), static_cast<double>(Row.Min), static_cast<double>(Row.Max));
				Connection.*Row.Member = static_cast<FNumber>(Value);
			}
		}

		FAgentConnection ReadConnection(const rapidjson::Value& Item)
		{
			FAgentConnection Connection;
			for (const FTextMember& Row : TextMembers)
			{
				Connection.*Row.Member = GetText(Item, Row.Name);
			}
			for (const auto& Row : CountMembers)
			{
				ReadNumber(Item, Row, Connection);
			}
			for (const auto& Row : TokenMembers)
			{
				ReadNumber(Item, Row, Connection);
			}
			for (const auto& Row : MoneyMembers)
			{
				ReadNumber(Item, Row, Connection);
			}
			return Connection;
		}

		/** What is wrong with the kinds of an entry; empty when it can be read. The next save would drop what was not read. */
		std::string FindFault(const rapidjson::Value& Item)
		{
			if (!Item.IsObject() || GetText(Item, "name").IsEmpty())
			{
				return " has no name";
			}
			for (const FTextMember& Row : TextMembers)
			{
				if (!IsOfKind(Item, Row.Name, &rapidjson::Value::IsString))
				{
					return std::string(": ") + Row.Name + " is no text";
				}
			}
			const auto FindNoNumber = [&Item](const auto& Rows)
			{
				for (const auto& Row : Rows)
				{
					if (!IsOfKind(Item, Row.Name, &rapidjson::Value::IsNumber))
					{
						return std::string(": ") + Row.Name + " is no number";
					}
				}
				return std::string();
			};
			std::string Fault = FindNoNumber(CountMembers);
			Fault = Fault.empty() ? FindNoNumber(TokenMembers) : Fault;
			return Fault.empty() ? FindNoNumber(MoneyMembers) : Fault;
		}

		using FWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

		void WriteText(FWriter& Writer, const char* Name, const FString& Value)
		{
			const std::string Text = Utf8Text::FromString(Value);
			Writer.Key(Name);
			Writer.String(Text.data(), static_cast<rapidjson::SizeType>(Text.size()));
		}

		/** What is as it is without saying so is left out. */
		void WriteConnection(FWriter& Writer, const FAgentConnection& Connection)
		{
			const FAgentConnection Default;
			Writer.StartObject();
			for (const FTextMember& Row : TextMembers)
			{
				if (!(Connection.*Row.Member).IsEmpty())
				{
					WriteText(Writer, Row.Name, Connection.*Row.Member);
				}
			}
			const auto WriteNumbers = [&](const auto& Rows, const auto& Write)
			{
				for (const auto& Row : Rows)
				{
					if (Connection.*Row.Member != Default.*Row.Member)
					{
						Writer.Key(Row.Name);
						Write(Connection.*Row.Member);
					}
				}
			};
			WriteNumbers(CountMembers, [&Writer](int32 Value) { Writer.Int(Value); });
			WriteNumbers(TokenMembers, [&Writer](int64 Value) { Writer.Int64(Value); });
			WriteNumbers(MoneyMembers, [&Writer](double Value) { Writer.Double(Value); });
			Writer.EndObject();
		}

		struct FConnectionFile
		{
			TArray<FAgentConnection> Connections;
			FString Default;
			std::string Problem;
		};

		FConnectionFile ReadFile()
		{
			FConnectionFile File;
			std::string Text;
			if (!PrivateFile::Read(ConnectionsFile, Text, File.Problem))
			{
				return File;
			}
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseCommentsFlag | rapidjson::kParseTrailingCommasFlag>(
				Text.data(), Text.size());
			const bool bIsObject = !Parsed.HasParseError() && Parsed.IsObject();
			const auto List = bIsObject ? Parsed.FindMember("connections") : rapidjson::Value::MemberIterator();
			if (!bIsObject || List == Parsed.MemberEnd() || !List->value.IsArray())
			{
				File.Problem = PrivateFile::GetFolder() + '/' + ConnectionsFile +
					" is no list of connections: it holds {\"connections\": [{\"name\": …, \"url\": …}]}.";
				return File;
			}
			File.Default = GetText(Parsed, "default");
			int32 Number = 0;
			for (const rapidjson::Value& Item : List->value.GetArray())
			{
				++Number;
				const std::string Fault = FindFault(Item);
				if (Fault.empty())
				{
					File.Connections.Add(ReadConnection(Item));
				}
				else if (File.Problem.empty())
				{
					File.Problem = PrivateFile::GetFolder() + '/' + ConnectionsFile + ", connection " + std::to_string(Number) + Fault +
						". Correct the file.";
				}
			}
			return File;
		}

		FString WriteFile(const TArray<FAgentConnection>& Connections, const FString& Default)
		{
			rapidjson::StringBuffer Buffer;
			FWriter Writer(Buffer);
			Writer.StartObject();
			if (!Default.IsEmpty())
			{
				WriteText(Writer, "default", Default);
			}
			Writer.Key("connections");
			Writer.StartArray();
			for (const FAgentConnection& Connection : Connections)
			{
				WriteConnection(Writer, Connection);
			}
			Writer.EndArray();
			Writer.EndObject();
			return Utf8Text::ToString(PrivateFile::Write(ConnectionsFile, std::string(Buffer.GetString(), Buffer.GetSize()) + '\n'));
		}
	}

	FString FAgentConnections::GetFolder()
	{
		return HostFileNameFromBytes(PrivateFile::GetFolder());
	}

	TArray<FAgentConnection> FAgentConnections::List(FString& OutProblem)
	{
		FConnectionFile File = ReadFile();
		OutProblem = Utf8Text::ToString(File.Problem);
		return MoveTemp(File.Connections);
	}

	FString FAgentConnections::Save(const TArray<FAgentConnection>& Connections)
	{
		std::set<std::string> Names;
		for (const FAgentConnection& Connection : Connections)
		{
			if (Connection.Name.TrimStartAndEnd().IsEmpty())
			{
				return TEXT("A connection needs a name.");
			}
			if (!Names.insert(Utf8Text::FromString(Connection.Name)).second)
			{
				return FString::Printf(TEXT("Two connections are called \"%s\"."), *Connection.Name);
			}
			if (FString Problem = Check(Connection); !Problem.IsEmpty())
			{
				return Problem;
			}
		}
		// A file that cannot be read is not replaced: it may hold what the user has written by hand.
		const FFolderLock Turn = PrivateFile::TakeTurn();
		const FConnectionFile File = ReadFile();
		if (!File.Problem.empty())
		{
			return Utf8Text::ToString(File.Problem);
		}
		return WriteFile(Connections, Names.count(Utf8Text::FromString(File.Default)) > 0 ? File.Default : FString());
	}

	FString FAgentConnections::GetDefault()
	{
		const FConnectionFile File = ReadFile();
		return File.Connections.ContainsByPredicate([&File](const FAgentConnection& Item) { return Item.Name.Equals(File.Default); })
			? File.Default
			: FString();
	}

	FString FAgentConnections::SetDefault(const FString& Name)
	{
		const FFolderLock Turn = PrivateFile::TakeTurn();
		const FConnectionFile File = ReadFile();
		if (!File.Problem.empty())
		{
			return Utf8Text::ToString(File.Problem);
		}
		if (!Name.IsEmpty() &&
			!File.Connections.ContainsByPredicate([&Name](const FAgentConnection& Item) { return Item.Name.Equals(Name); }))
		{
			return FString::Printf(TEXT("There is no connection \"%s\"."), *Name);
		}
		return File.Default.Equals(Name) ? FString() : WriteFile(File.Connections, Name);
	}
}
