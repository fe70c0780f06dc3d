#include "Model/ChatRequestWriter.h"

#include <algorithm>
#include <cstdio>
#include <cstdint>
#include <iterator>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <rapidjson/document.h>
#include <rapidjson/writer.h>

#include "Text/WireText.h"

namespace Velmora
{
	namespace
	{
		/** The body itself, so that megabytes are not copied into it in the end. */
		struct FBodyStream
		{
			using Ch = char;
			void Put(char Byte) { Body += Byte; }
			void Flush() {}
			std::string Body;
		};

		class FWriter : public rapidjson::Writer<FBodyStream>
		{
		public:
			using rapidjson::Writer<FBodyStream>::Writer;

			/** Servers refuse a request with broken text as a whole, and the conversation would be stuck with it for ever. */
			void Text(std::string_view Text)
			{
				Prefix(rapidjson::kStringType);
				WireText::AppendQuoted(os_->Body, Text);
			}
		};

		/** What the request says itself; options of the user's cannot say it otherwise. */
		constexpr std::string_view OwnMembers[] = { "model", "messages", "tools", "stream", "stream_options", "n" };

		// In bytes, as far as every server takes them.
		constexpr size_t MaxNameBytes = 64;

		/** What suits even the most particular server. */
		constexpr size_t ShortIdLength = 9;

		/** Of arguments that are no object: enough for a model to see its mistake. */
		constexpr size_t MaxUnreadableBytes = 2000;
		constexpr std::string_view UnreadableStart = "{\"unreadable\":";

		void WriteName(FWriter& Writer, std::string_view Name)
		{
			Writer.Key(Name.data(), static_cast<rapidjson::SizeType>(Name.size()));
		}

		void WriteMember(FWriter& Writer, std::string_view Name, std::string_view Text)
		{
			WriteName(Writer, Name);
			Writer.Text(Text);
		}

		std::string_view NameRole(EModelRole Role)
		{
			switch (Role)
			{
			case EModelRole::System:
				return "system";
			case EModelRole::User:
				return "user";
			case EModelRole::Assistant:
				return "assistant";
			case EModelRole::Tool:
				return "tool";
			}
			return "user";
		}

		// What a model has said goes back to whatever server answers next, and one that finds a name, an id or arguments that it
		// would not have made itself refuses the request, this one and every later one.

		/** Letters, digits, '_' and '-', and not too many of them. */
		bool IsPlainName(std::string_view Name, size_t MaxBytes)
		{
			const auto IsPlain = [](char Byte) {
				return (Byte >= 'a' && Byte <= 'z') || (Byte >= 'A' && Byte <= 'Z') || (Byte >= '0' && Byte <= '9') || Byte == '_' ||
					Byte == '-';
			};
			return !Name.empty() && Name.size() <= MaxBytes && std::all_of(Name.begin(), Name.end(), IsPlain);
		}

		std::string MakeName(std::string_view Name)
		{
			std::string Plain(Name.substr(0, MaxNameBytes));
			for (char& Byte : Plain)
			{
				Byte = IsPlainName(std::string_view(&Byte, 1), 1) ? Byte : '_';
			}
			return Plain.empty() ? "unknown" : Plain;
		}

		/** Nine letters or digits. */
		bool IsShortId(std::string_view Id)
		{
			return Id.size() == ShortIdLength && IsPlainName(Id, ShortIdLength) && Id.find_first_of("_-") == std::string_view::npos;
		}

		/** The same text for the same id in every run, so that a server finds the beginning of a request in what it has kept. */
		std::string MakeShortId(std::string_view Id)
		{
			constexpr std::string_view Digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
			uint64_t Hash = 14695981039346656037ull;
			for (const char Byte : Id)
			{
				Hash = (Hash ^ static_cast<unsigned char>(Byte)) * 1099511628211ull;
			}
			// The last bytes count as much as the first.
			Hash ^= Hash >> 32;
			Hash *= 0xD6E8FEB86659FD93ull;
			Hash ^= Hash >> 32;
			std::string Text;
			for (size_t Place = 0; Place < ShortIdLength; ++Place)
			{
				Text += Digits[Hash % Digits.size()];
				Hash /= Digits.size();
			}
			return Text;
		}

		/**
		 * What calls and their results are called in one request. Each server makes ids of its own form, and some take no others, so
		 * a conversation that goes on elsewhere would be refused. Each call of a request gets an id of its own, also where a server
		 * has given one twice: results come in the order of their calls.
		 */
		class FCallIds
		{
		public:
			const std::string& Begin(const std::string& Id)
			{
				std::vector<std::string>& Same = Calls[Id].Ids;
				std::string Short;
				for (size_t Number = Same.size(); Short.empty() || !Taken.insert(Short).second; ++Number)
				{
					Short = Number > 0 ? MakeShortId(Id + ' ' + std::to_string(Number)) : IsShortId(Id) ? Id : MakeShortId(Id);
				}
				return Same.emplace_back(std::move(Short));
			}

			/** Of a result. */
			const std::string& Answer(const std::string& Id)
			{
				FSameName& Same = Calls[Id];
				if (Same.Answered == Same.Ids.size())
				{
					Begin(Id);
				}
				return Same.Ids[Same.Answered++];
			}

		private:
			struct FSameName
			{
				std::vector<std::string> Ids;
				size_t Answered = 0;
			};
			std::unordered_set<std::string> Taken;
			std::unordered_map<std::string, FSameName> Calls;
		};

		/** An object in any case: servers read the text, and fail over one that they cannot read. */
		std::string MakeArguments(const std::string& Arguments)
		{
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag>(Arguments.data(), Arguments.size());
			if (!Parsed.HasParseError() && Parsed.IsObject())
			{
				return Arguments;
			}
			if (!Parsed.HasParseError() && Parsed.IsString() && Parsed.GetStringLength() < Arguments.size())
			{
				// Some models give the text of an object as one text, and the tool has taken it as that.
				const std::string Inner = MakeArguments(std::string(Parsed.GetString(), Parsed.GetStringLength()));
				if (!Inner.starts_with(UnreadableStart))
				{
					return Inner;
				}
			}
			FBodyStream Stream;
			FWriter Writer(Stream);
			Writer.StartObject();
			WriteMember(Writer, "unreadable", WireText::CutUtf8(Arguments, MaxUnreadableBytes));
			Writer.EndObject();
			return Stream.Body;
		}

		void WriteMessage(FWriter& Writer, const FModelMessage& Message, FCallIds& Ids)
		{
			Writer.StartObject();
			WriteMember(Writer, "role", NameRole(Message.Role));
			WriteName(Writer, "content");
			// With calls and no text the format wants null; some servers refuse an empty text there.
			if (Message.Text.empty() && !Message.Calls.empty())
			{
				Writer.Null();
			}
			else
			{
				Writer.Text(Message.Text);
			}
			if (Message.Role == EModelRole::Tool)
			{
				WriteMember(Writer, "tool_call_id", Ids.Answer(Message.CallId));
			}
			if (!Message.Calls.empty())
			{
				WriteName(Writer, "tool_calls");
				Writer.StartArray();
				for (const FModelCall& Call : Message.Calls)
				{
					Writer.StartObject();
					WriteMember(Writer, "id", Ids.Begin(Call.Id));
					WriteMember(Writer, "type", "function");
					WriteName(Writer, "function");
					Writer.StartObject();
					WriteMember(Writer, "name", MakeName(Call.Name));
					WriteMember(Writer, "arguments", MakeArguments(Call.Arguments));
					Writer.EndObject();
					Writer.EndObject();
				}
				Writer.EndArray();
			}
			Writer.EndObject();
		}

		void WriteTools(FWriter& Writer, const std::vector<FModelTool>& Tools)
		{
			WriteName(Writer, "tools");
			Writer.StartArray();
			for (const FModelTool& Tool : Tools)
			{
				Writer.StartObject();
				WriteMember(Writer, "type", "function");
				WriteName(Writer, "function");
				Writer.StartObject();
				WriteMember(Writer, "name", Tool.Name);
				WriteMember(Writer, "description", Tool.Description);
				WriteName(Writer, "parameters");
				// The schema is text of our own, already JSON.
				Writer.RawValue(Tool.Parameters.data(), Tool.Parameters.size(), rapidjson::kObjectType);
				Writer.EndObject();
				Writer.EndObject();
			}
			Writer.EndArray();
		}

		/** About how large the body becomes: room that is not used costs nothing, while growing copies everything. */
		size_t EstimateSize(const FModelRequest& Request)
		{
			size_t Bytes = 1024;
			for (const FModelMessage& Message : Request.Messages)
			{
				Bytes += 64 + Message.Text.size();
				for (const FModelCall& Call : Message.Calls)
				{
					Bytes += 128 + Call.Arguments.size() + Call.Arguments.size() / 4;
				}
			}
			for (const FModelTool& Tool : Request.Tools)
			{
				Bytes += 128 + Tool.Description.size() + Tool.Parameters.size();
			}
			return Bytes + Bytes / 8;
		}

		void WriteOptions(FWriter& Writer, const std::string& Options)
		{
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag>(Options.data(), Options.size());
			// Broken options leave the request as it would be without them; the page where they are written says that they are.
			if (Parsed.HasParseError() || !Parsed.IsObject())
			{
				return;
			}
			for (const auto& Member : Parsed.GetObject())
			{
				const std::string_view Name(Member.name.GetString(), Member.name.GetStringLength());
				if (std::find(std::begin(OwnMembers), std::end(OwnMembers), Name) == std::end(OwnMembers))
				{
					WriteName(Writer, Name);
					Member.value.Accept(Writer);
				}
			}
		}
	}

	std::string WriteChatRequest(const FModelRequest& Request)
	{
		FBodyStream Stream;
		Stream.Body.reserve(EstimateSize(Request));
		FWriter Writer(Stream);
		Writer.StartObject();
		WriteMember(Writer, "model", Request.Model);
		WriteName(Writer, "messages");
		Writer.StartArray();
		FCallIds Ids;
		for (const FModelMessage& Message : Request.Messages)
		{
			WriteMessage(Writer, Message, Ids);
		}
		Writer.EndArray();
		if (!Request.Tools.empty())
		{
			WriteTools(Writer, Request.Tools);
		}
		WriteName(Writer, "stream");
		Writer.Bool(true);
		if (Request.bAsksForUsage)
		{
			WriteName(Writer, "stream_options");
			Writer.StartObject();
			WriteName(Writer, "include_usage");
			Writer.Bool(true);
			Writer.EndObject();
		}
		if (!Request.Options.empty())
		{
			WriteOptions(Writer, Request.Options);
		}
		Writer.EndObject();
		return std::move(Stream.Body);
	}
}
