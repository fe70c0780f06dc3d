#pragma once

#include <string>
#include <string_view>

#include "Model/ActivityFeed.h"
#include "Model/ModelClient.h"
#include "Model/ModelConnection.h"

namespace Velmora
{
	/** What one turn with a model tells Agent Activity. On the turn's worker; the turn begins and ends with it. */
	class FModelActivity
	{
	public:
		explicit FModelActivity(const FModelConnection& InConnection);
		~FModelActivity();
		FModelActivity(const FModelActivity&) = delete;
		FModelActivity& operator=(const FModelActivity&) = delete;

		/** A row that is under way until it goes out of scope; without a result it was stopped. */
		class FRow
		{
		public:
			explicit FRow(FAgentActivityEntry&& Entry);
			~FRow();
			FRow(const FRow&) = delete;
			FRow& operator=(const FRow&) = delete;

			void SetResult(std::string_view Text);

		private:
			const bool bHasResult;
			const uint32 Id;
			FString Result;
			bool bIsDone = false;
		};

		FModelReply Ask(FModelClient& Client, const FModelRequest& Request);
		FRow OpenCall(const FModelCall& Call);
		FRow OpenWait(std::string_view Why);

		/** Known once the connection or the server has said so. */
		void SetContextTokens(int64 Tokens) { ContextTokens = Tokens; }

	private:
		const FModelConnection& Connection;
		const uint32 Turn;
		int64 ContextTokens = 0;
	};
}
