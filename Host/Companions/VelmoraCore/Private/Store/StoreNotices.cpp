#include "Store/StoreNotices.h"

#include <mutex>

#include "Async/Async.h"

namespace Velmora::StoreNotices
{
	namespace
	{
		std::mutex NoticesMutex;
		TArray<FString> WaitingNotices;

		/** Game thread. */
		TFunction<void()> NoticeListener;
	}

	void Add(const FString& Sentence)
	{
		{
			const std::scoped_lock Lock(NoticesMutex);
			WaitingNotices.Add(Sentence);
		}
		Remind();
	}

	TArray<FString> Take()
	{
		const std::scoped_lock Lock(NoticesMutex);
		return MoveTemp(WaitingNotices);
	}

	void SetListener(TFunction<void()> Listener)
	{
		NoticeListener = MoveTemp(Listener);
	}

	void Remind()
	{
		{
			const std::scoped_lock Lock(NoticesMutex);
			if (WaitingNotices.Num() == 0)
			{
				return;
			}
		}
		AsyncTask(ENamedThreads::GameThread,
			[]
			{
				if (const TFunction<void()> Copy = NoticeListener)
				{
					Copy();
				}
			});
	}
}
