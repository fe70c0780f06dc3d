#pragma once

#include <algorithm>
#include <chrono>

#include "Store/ConversationStore.h"

namespace Velmora
{
	class FConversationStore::FTurn
	{
	public:
		FTurn(FConversationStore& InStore, int32 TimeoutMilliseconds)
			: Store(InStore)
			, End(std::chrono::steady_clock::now() + std::chrono::milliseconds(TimeoutMilliseconds))
		{
			std::unique_lock Lock(Store.TurnMutex);
			++Store.WaitingCount;
			const auto IsFree = [this] { return !Store.bIsTaken; };
			bIsMine = Store.TurnEnded.wait_until(Lock, End, IsFree);
			if (!bIsMine && Store.bIsOpening)
			{
				// A worker makes or opens the file just now; to refuse would not be any quicker than to wait.
				bIsMine = Store.TurnEnded.wait_until(Lock, End + std::chrono::milliseconds(WorkerTimeoutMilliseconds), IsFree);
			}
			--Store.WaitingCount;
			Store.bIsTaken = Store.bIsTaken || bIsMine;
		}

		~FTurn()
		{
			if (bIsMine)
			{
				const std::scoped_lock Lock(Store.TurnMutex);
				Store.bIsTaken = false;
			}
			Store.TurnEnded.notify_one();
		}

		FTurn(const FTurn&) = delete;
		FTurn& operator=(const FTurn&) = delete;

		bool IsMine() const { return bIsMine; }

		/** What is left of the timeout. */
		int32 GetMilliseconds() const
		{
			const auto Left = std::chrono::duration_cast<std::chrono::milliseconds>(End - std::chrono::steady_clock::now());
			return std::max(1, static_cast<int32>(Left.count()));
		}

	private:
		FConversationStore& Store;
		const std::chrono::steady_clock::time_point End;
		bool bIsMine = false;
	};
}
