#include "Widgets/ConversationHistoryRefresh.h"

#include "Agent/ConversationHistoryManager.h"
#include "Async/Async.h"

using Velmora::FConversationMetadata;

void FConversationHistoryRefresh::Request(const FString& SaveDir, FOnRead OnRead)
{
	// 1. The flag admits one at a time. Whoever comes second leaves a note, and any number of notes is one.
	bool bExpected = false;
	if (!bHistoryRefreshInFlight.compare_exchange_strong(bExpected, true))
	{
		bHistoryRefreshQueued.store(true);
		return;
	}
	// 2. Since one read runs at a time, no result can overtake another: the number only counts, and nothing is compared with it.
	HistoryRefreshRequestId.fetch_add(1);
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[SaveDir, OnRead = MoveTemp(OnRead)]() mutable
		{
			// 3. A store object of its own: they are not shared between threads.
			Velmora::FConversationHistoryManager Manager;
			Manager.Initialize(SaveDir);
			TArray<FConversationMetadata> Summaries = Manager.GetConversationSummaries();
			// 4. Back to the game thread, which alone touches widgets. Nothing of the caller stays here.
			AsyncTask(ENamedThreads::GameThread, [OnRead = MoveTemp(OnRead), Summaries = MoveTemp(Summaries)] { OnRead(Summaries); });
		});
}

bool FConversationHistoryRefresh::Finish()
{
	// In this order no request is lost: one that comes after the store starts a worker, one that came before the exchange is seen
	// by it.
	bHistoryRefreshInFlight.store(false);
	return bHistoryRefreshQueued.exchange(false);
}

bool FConversationHistoryRefresh::IsDueAfter(float DeltaTime, float Interval)
{
	static float Accumulator = 0.0f;
	Accumulator += DeltaTime;
	if (Accumulator < Interval)
	{
		return false;
	}
	// What is over is not carried on: after a long pause one read is enough.
	Accumulator = 0.0f;
	return true;
}
