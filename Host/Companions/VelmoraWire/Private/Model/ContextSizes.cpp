#include "Model/ContextSizes.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Velmora::ContextSizes
{
	namespace
	{
		/** Beyond this a figure is a mistake, and no sum with it may overflow. */
		constexpr int64_t MaxTokens = 1000000000;

		constexpr std::string_view BasePath = "/v1";

		int64_t FindNumber(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsInt64() ? Check(Member->value.GetInt64()) : 0;
		}

		const rapidjson::Value* FindObject(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsObject() ? &Member->value : nullptr;
		}

		std::string_view FindText(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsString()
				? std::string_view(Member->value.GetString(), Member->value.GetStringLength())
				: std::string_view();
		}

		/** Of lines such as "num_ctx   4096". */
		int64_t FindParameter(std::string_view Lines, std::string_view Name)
		{
			while (!Lines.empty())
			{
				const size_t End = std::min(Lines.find('\n'), Lines.size());
				const std::string_view Line = Lines.substr(0, End);
				Lines.remove_prefix(std::min(End + 1, Lines.size()));
				const size_t Start = Line.find_first_not_of(" \t", Name.size());
				if (Line.starts_with(Name) && Start != std::string_view::npos && Start > Name.size())
				{
					int64_t Value = 0;
					std::from_chars(Line.data() + Start, Line.data() + Line.size(), Value);
					return Check(Value);
				}
			}
			return 0;
		}

		/** Each kind of model has the figure under its own name, and what belongs to it may have one too. */
		int64_t FindOfArchitecture(const rapidjson::Value& Info)
		{
			const std::string Own = std::string(FindText(Info, "general.architecture")) + ".context_length";
			if (const int64_t Size = FindNumber(Info, Own.c_str()))
			{
				return Size;
			}
			for (const auto& Member : Info.GetObject())
			{
				const std::string_view Name(Member.name.GetString(), Member.name.GetStringLength());
				if (Name.ends_with(".context_length") && Member.value.IsInt64() && Check(Member.value.GetInt64()) > 0)
				{
					return Member.value.GetInt64();
				}
			}
			return 0;
		}

		std::string WriteModel(std::string_view Model)
		{
			rapidjson::StringBuffer Buffer;
			rapidjson::Writer<rapidjson::StringBuffer> Writer(Buffer);
			Writer.StartObject();
			Writer.Key("model");
			Writer.String(Model.data(), static_cast<rapidjson::SizeType>(Model.size()));
			Writer.EndObject();
			return std::string(Buffer.GetString(), Buffer.GetSize());
		}
	}

	int64_t Check(int64_t Tokens)
	{
		return Tokens > 0 && Tokens <= MaxTokens ? Tokens : 0;
	}

	int64_t FindInModel(const rapidjson::Value& Model)
	{
		for (const char* Name : { "loaded_context_length", "max_model_len", "context_length", "context_window", "max_context_length",
				 "max_input_tokens", "max_sequence_length" })
		{
			if (const int64_t Size = FindNumber(Model, Name))
			{
				return Size;
			}
		}
		const rapidjson::Value* const Meta = FindObject(Model, "meta");
		return Meta ? FindNumber(*Meta, "n_ctx") : 0;
	}

	std::vector<FHttpRequest> MakeRequests(std::string_view BaseUrl, std::string_view Model)
	{
		// Where these stand is known only of servers that keep the usual path.
		if (!BaseUrl.ends_with(BasePath))
		{
			return {};
		}
		const std::string Root(BaseUrl.substr(0, BaseUrl.size() - BasePath.size()));
		const std::pair<const char*, bool> Calls[] = {
			{ "/props", false }, // llama.cpp
			{ "/api/ps", false }, // Ollama: what it has loaded, and how large
			{ "/api/show", true }, // Ollama: what the model could take
			{ "/api/v0/models", false }, // LM Studio
		};
		std::vector<FHttpRequest> Requests;
		for (const auto& [Path, bHasBody] : Calls)
		{
			FHttpRequest& Http = Requests.emplace_back();
			Http.Url = Root + Path;
			Http.Body = bHasBody ? WriteModel(Model) : std::string();
		}
		return Requests;
	}

	int64_t Read(std::string_view Body)
	{
		rapidjson::Document Parsed;
		Parsed.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNanAndInfFlag>(Body.data(), Body.size());
		if (Parsed.HasParseError() || !Parsed.IsObject())
		{
			return 0;
		}
		if (const rapidjson::Value* const Settings = FindObject(Parsed, "default_generation_settings"))
		{
			return FindNumber(*Settings, "n_ctx");
		}
		const rapidjson::Value* const Info = FindObject(Parsed, "model_info");
		// What the model is loaded with counts for more than what it was made for.
		const int64_t Loaded = FindParameter(FindText(Parsed, "parameters"), "num_ctx");
		return Loaded > 0 ? Loaded : Info ? FindOfArchitecture(*Info) : 0;
	}
}
