#include "Model/ChatCompletions.h"

#include <algorithm>

#include <rapidjson/document.h>

#include "Http/WebAddress.h"
#include "Model/ChatChunkReader.h"
#include "Model/ChatRequestWriter.h"
#include "Model/ContextSizes.h"
#include "Model/ModelFaults.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxModels = 10000;

		/** Of a refusal that is no object with words: enough to find some in it. */
		constexpr size_t MaxWordsBytes = 64 * 1024;

		std::vector<std::string> MakeHeaders(const FModelServer& Server)
		{
			// Both, since some servers answer as a whole whatever they were asked for.
			std::vector<std::string> Headers = { "Content-Type: application/json", "Accept: text/event-stream, application/json" };
			if (!Server.Key.empty())
			{
				Headers.push_back("Authorization: Bearer " + Server.Key);
			}
			return Headers;
		}

		void FillRequest(FHttpRequest& Http, const FModelServer& Server)
		{
			Http.Headers = MakeHeaders(Server);
			Http.CaFile = Server.CaFile;
			Http.Proxy = Server.Proxy;
			Http.Limits = Server.Limits;
		}

		FHttpRequest MakeHttpRequest(const FModelServer& Server, std::string_view Path)
		{
			FHttpRequest Http;
			Http.Url = FChatCompletions::MakeBaseUrl(Server.BaseUrl) + std::string(Path);
			FillRequest(Http, Server);
			return Http;
		}

		/** What a server says of itself is small and quick or is not worth waiting for. */
		void SetSmallLimits(FHttpRequest& Http)
		{
			Http.Limits.MaxBodyBytes = 4 * 1024 * 1024;
			Http.Limits.FirstByteSeconds = std::min(Http.Limits.FirstByteSeconds, 20.0);
			Http.Limits.TotalSeconds = 30.0;
		}

		class FChatReader : public IReplyReader
		{
		public:
			explicit FChatReader(FReplyBuilder& InBuilder)
				: Builder(InBuilder)
				, Chunk(InBuilder)
			{
			}

			virtual bool OnEvent(const FServerEvent& Event) override
			{
				if (Event.Data.starts_with("[DONE]"))
				{
					Builder.SetEnded();
					return false;
				}
				if (Event.Data.empty())
				{
					return true;
				}
				if (!Chunk.Read(Event.Data))
				{
					if (Event.Type == "error")
					{
						FailByWords(200, Event.Data);
					}
					// What was cut off is told by the end of the stream.
					else if (!Event.bIsCutOff)
					{
						Builder.Fail(EModelFault::BadAnswer, "a part of the stream is no JSON object");
					}
					return false;
				}
				if (Chunk.GetError().bIsThere || Event.Type == "error")
				{
					FailByWords(200, std::string_view());
					return false;
				}
				if (!Chunk.GetAbortWord().empty())
				{
					Builder.Fail(EModelFault::CutShort, "the server gave as its reason: " + Chunk.GetAbortWord());
					return false;
				}
				return true;
			}

			virtual void OnBody(std::string_view Body) override
			{
				if (!Chunk.Read(Body))
				{
					Builder.Fail(EModelFault::BadAnswer, "the answer is no JSON object");
				}
				else if (Chunk.GetError().bIsThere || !Chunk.HasChoices())
				{
					// What is no answer may be a refusal in words of its own.
					FailByWords(200, Chunk.HasChoices() ? std::string_view() : Body);
				}
				else if (!Chunk.GetAbortWord().empty())
				{
					Builder.Fail(EModelFault::CutShort, "the server gave as its reason: " + Chunk.GetAbortWord());
				}
				Builder.SetEnded();
			}

			virtual void OnRefusal(int Status, std::string_view Body) override
			{
				// Some put the object into a list.
				const size_t Start = std::min(Body.find_first_not_of(" \t\r\n["), Body.size());
				const size_t End = Body.starts_with('[') ? Body.find_last_of('}') : std::string_view::npos;
				const std::string_view Object = Body.substr(Start, End == std::string_view::npos ? End : End + 1 - Start);
				if (Object.starts_with('{'))
				{
					Chunk.Read(Object);
				}
				// A page for people says nothing that fits into a line.
				FailByWords(Status, Object.starts_with('<') ? std::string_view() : Body);
			}

		private:
			void FailByWords(int Status, std::string_view PlainText)
			{
				const FChatChunkReader::FErrorWords& Words = Chunk.GetError();
				std::string Text(!Words.Text.empty() ? std::string_view(Words.Text)
						: !Words.RootMessage.empty() ? std::string_view(Words.RootMessage)
						: !PlainText.empty()		 ? PlainText.substr(0, MaxWordsBytes)
						: !Words.Type.empty()		 ? std::string_view(Words.Type)
													 : std::string_view(Words.Code));
				// One that only passes requests on says little itself.
				Text += Words.More.empty() ? "" : ": " + Words.More;
				FModelProblem Problem;
				Problem.Fault = ModelFaults::FromRefusal(Status, { Text, Words.Type, Words.Code });
				Problem.Status = Status;
				const int64_t Named = ContextSizes::Check(Words.ContextTokens);
				Problem.ContextTokens = Named > 0 ? Named : ContextSizes::Check(ModelFaults::FindContextTokens(Text));
				Problem.Detail = std::move(Text);
				Builder.Fail(std::move(Problem));
			}

			FReplyBuilder& Builder;
			FChatChunkReader Chunk;
		};

		std::string FindText(const rapidjson::Value& Object, const char* Name)
		{
			const auto Member = Object.FindMember(Name);
			return Member != Object.MemberEnd() && Member->value.IsString()
				? std::string(Member->value.GetString(), Member->value.GetStringLength())
				: std::string();
		}
	}

	std::string FChatCompletions::MakeBaseUrl(std::string_view Address)
	{
		FWebAddress Parsed;
		std::string Problem;
		if (!FWebAddress::Parse(Address, Parsed, Problem))
		{
			return std::string(Address);
		}
		// People paste the address of the call itself, as their server's page gives it.
		for (const std::string_view Call : { "/chat/completions", "/completions", "/responses", "/models" })
		{
			if (Parsed.Path.ends_with(Call))
			{
				Parsed.Path.erase(Parsed.Path.size() - Call.size());
			}
		}
		if (Parsed.Path.empty())
		{
			Parsed.Path = "/v1";
		}
		return Parsed.ToString();
	}

	FHttpRequest FChatCompletions::MakeRequest(const FModelServer& Server, const FModelRequest& Request) const
	{
		FHttpRequest Http = MakeHttpRequest(Server, "/chat/completions");
		Http.Body = WriteChatRequest(Request);
		return Http;
	}

	std::unique_ptr<IReplyReader> FChatCompletions::MakeReader(FReplyBuilder& Builder) const
	{
		return std::make_unique<FChatReader>(Builder);
	}

	FHttpRequest FChatCompletions::MakeListRequest(const FModelServer& Server) const
	{
		FHttpRequest Http = MakeHttpRequest(Server, "/models");
		SetSmallLimits(Http);
		return Http;
	}

	std::vector<FHttpRequest> FChatCompletions::MakeSizeRequests(const FModelServer& Server, std::string_view Model) const
	{
		std::vector<FHttpRequest> Requests = ContextSizes::MakeRequests(MakeBaseUrl(Server.BaseUrl), Model);
		for (FHttpRequest& Http : Requests)
		{
			FillRequest(Http, Server);
			SetSmallLimits(Http);
		}
		return Requests;
	}

	int64_t FChatCompletions::ReadSize(std::string_view Body, std::string_view Model) const
	{
		if (const int64_t Size = ContextSizes::Read(Body))
		{
			return Size;
		}
		std::vector<FModelInfo> Models;
		ReadList(Body, Models);
		const FModelInfo* const Named = FindModel(Models, Model);
		return Named ? Named->ContextTokens : 0;
	}

	bool FChatCompletions::ReadList(std::string_view Body, std::vector<FModelInfo>& OutModels) const
	{
		rapidjson::Document Parsed;
		Parsed.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNanAndInfFlag>(Body.data(), Body.size());
		if (Parsed.HasParseError())
		{
			return false;
		}
		// Under either name, or the array alone.
		const rapidjson::Value* List = &Parsed;
		for (const char* Name : { "data", "models" })
		{
			if (Parsed.IsObject() && List == &Parsed)
			{
				const auto Member = Parsed.FindMember(Name);
				List = Member != Parsed.MemberEnd() && Member->value.IsArray() ? &Member->value : List;
			}
		}
		if (!List->IsArray())
		{
			return false;
		}
		for (const rapidjson::Value& Model : List->GetArray())
		{
			FModelInfo Info;
			if (Model.IsString())
			{
				Info.Id = std::string(Model.GetString(), Model.GetStringLength());
			}
			else if (Model.IsObject())
			{
				Info.Id = FindText(Model, "id");
				Info.Id = Info.Id.empty() ? FindText(Model, "name") : Info.Id;
				Info.ContextTokens = ContextSizes::FindInModel(Model);
			}
			if (!Info.Id.empty() && OutModels.size() < MaxModels)
			{
				OutModels.push_back(std::move(Info));
			}
		}
		return true;
	}
}
