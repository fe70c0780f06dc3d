#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"
#include "Http/EventStreamReader.h"
#include "Model/ModelTypes.h"
#include "Model/ReplyBuilder.h"

namespace Velmora
{
	/** Reads one answer of a server and hands its pieces to a builder. What is broken becomes a problem of the answer. */
	class IReplyReader
	{
	public:
		virtual ~IReplyReader() = default;

		/** Returns false when the answer is complete or cannot go on. */
		virtual bool OnEvent(const FServerEvent& Event) = 0;

		/** The whole body of a server that did not stream. */
		virtual void OnBody(std::string_view Body) = 0;

		/** The body of a refusal (status 400 and up), which may be anything. */
		virtual void OnRefusal(int Status, std::string_view Body) = 0;
	};

	/** The language that a server speaks over HTTP. Without state; any thread. */
	class IModelDialect
	{
	public:
		virtual ~IModelDialect() = default;

		/** Asks for an answer that streams. Broken characters in the request are replaced. */
		virtual FHttpRequest MakeRequest(const FModelServer& Server, const FModelRequest& Request) const = 0;
		virtual std::unique_ptr<IReplyReader> MakeReader(FReplyBuilder& Builder) const = 0;

		/** Asks which models there are. */
		virtual FHttpRequest MakeListRequest(const FModelServer& Server) const = 0;

		/** False when the body is no list of models. */
		virtual bool ReadList(std::string_view Body, std::vector<FModelInfo>& OutModels) const = 0;

		/** Asks what a list need not tell: how large a model is. One after the other, for each server knows one at the most. */
		virtual std::vector<FHttpRequest> MakeSizeRequests(const FModelServer& Server, std::string_view Model) const = 0;

		/** In tokens, from an answer to one of these, which may be anything; 0 when it does not say. */
		virtual int64_t ReadSize(std::string_view Body, std::string_view Model) const = 0;
	};
}
