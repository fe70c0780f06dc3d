#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Host/AgentActivity.h"

namespace Velmora
{
	/**
	 * The side of Agent Activity that works: rows are opened, grow and are closed on any thread, and come to the game thread
	 * together. What a fast server sends is joined here, so that a piece costs a lock and a copy and no task of its own.
	 */
	class FActivityFeed
	{
	public:
		static FActivityFeed& Get();

		/** Gives the row's number. Its time begins now. */
		uint32 Open(FAgentActivityEntry&& Entry);

		/** More of a request's answer or thinking: bytes, characters may be cut. */
		void AddPiece(uint32 Id, bool bIsThinking, std::string_view Bytes);

		/** Ends a row. Fill sets what is known by then; it is called on the game thread. */
		void Close(uint32 Id, std::function<void(FAgentActivityEntry&)> Fill);

		/** A row that is over as it begins. */
		void AddNote(EAgentActivityKind Kind, std::string_view Sentence);

		/** @return A number for EndTurn. */
		uint32 BeginTurn(std::string_view Agent);
		void EndTurn(uint32 Turn);

		/** What a request of the turn under way came to, in place of the pieces that were counted for it. */
		void CountTokens(int64 Pieces, int64 Tokens);

		/** Takes what has come since; for the game thread. */
		struct FItem
		{
			uint32 Id = 0;
			TSharedPtr<FAgentActivityEntry> Opened;
			std::string Text;
			std::string Thinking;
			int64 Pieces = 0;
			std::function<void(FAgentActivityEntry&)> Fill;
			double OpenedAt = 0.0;
			double ClosedAt = 0.0;
		};
		std::vector<FItem> Take();
		FAgentTurnStatus GetTurnStatus();

	private:
		/** The last item of that row, or a new one behind all others. */
		FItem& FindItem(uint32 Id);

		/** Has the game thread take what there is, unless it will anyway. Lock held. */
		void Announce();

		std::mutex Mutex;
		std::vector<FItem> Items;
		bool bIsAnnounced = false;
		uint32 LastId = 0;

		uint32 LastTurn = 0;
		uint32 RunningTurn = 0;
		double TurnStart = 0.0;
		int64 TurnTokens = 0;
		std::string TurnAgent;
	};
}
