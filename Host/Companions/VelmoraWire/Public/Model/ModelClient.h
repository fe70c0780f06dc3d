#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"
#include "Http/HttpStream.h"
#include "Model/ModelDialect.h"

namespace Velmora
{
	/**
	 * Asks one server, once per call: neither repeats nor waits. Whatever the server does comes back as an answer with
	 * or without a problem. Blocks on the calling worker. The server's address is the only one that is ever called.
	 */
	class VELMORAWIRE_API FModelClient
	{
	public:
		/** The dialect must outlive the client. */
		FModelClient(const IModelDialect& InDialect, const FModelServer& InServer);

		/** Gets the body of the request right before it is sent; the key is in none. */
		using FOnSend = std::function<void(std::string_view Body)>;

		/** @param OnPiece  Called on this thread as the answer comes; so is OnSend. No piece has the key or a part of it. */
		FModelReply Ask(const FModelRequest& Request, FReplyBuilder::FOnPiece OnPiece = nullptr, const FOnSend& OnSend = nullptr);

		/** Returns no problem with the list, or a problem and no list. @param MaxSeconds  That it may take in all, if above zero. */
		FModelProblem ListModels(std::vector<FModelInfo>& OutModels, double MaxSeconds = 0.0);

		/**
		 * How many tokens a conversation with that model may have, from what servers tell beside their list; 0 when it is not told,
		 * nothing when cancelled. @param MaxSeconds  That it may take in all.
		 */
		std::optional<int64_t> AskForSize(std::string_view Model, double MaxSeconds);

		/** For good: what is under way ends at once, its connection is closed. Any thread. */
		void Cancel() { Stream.Cancel(); }

	private:
		const IModelDialect& Dialect;
		const FModelServer Server;
		FHttpStream Stream;
	};

	/** One or two sentences for people: what went wrong with that server and what to do about it. Pure. */
	VELMORAWIRE_API std::string DescribeProblem(const FModelProblem& Problem, const FModelServer& Server, std::string_view Model);
}
