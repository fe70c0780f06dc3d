#include "Store/StoreNotices.h"

#include <mutex>
#include <utility>

#include "Async/Async.h"

namespace Velmora::StoreNotices
{
	namespace
	{
		std::mutex NoticesMutex;
		std::vector<std::string> WaitingNotices;
		std::vector<std::string> WaitingNews;

		/** Game thread. */
		TFunction<void()> NoticeListener;
	}

	void Add(std::string Sentence)
	{
		{
			const std::scoped_lock Lock(NoticesMutex);
			WaitingNotices.push_back(std::move(Sentence));
		}
		Remind();
	}

	void AddNews(std::string Sentence)
	{
		{
			const std::scoped_lock Lock(NoticesMutex);
			WaitingNews.push_back(std::move(Sentence));
		}
		Remind();
	}

	std::vector<std::string> Take()
	{
		const std::scoped_lock Lock(NoticesMutex);
		return std::exchange(WaitingNotices, {});
	}

	std::vector<std::string> TakeNews()
	{
		const std::scoped_lock Lock(NoticesMutex);
		return std::exchange(WaitingNews, {});
	}

	void SetListener(TFunction<void()> Listener)
	{
		NoticeListener = MoveTemp(Listener);
	}

	void Remind()
	{
		{
			const std::scoped_lock Lock(NoticesMutex);
			if (WaitingNotices.empty() && WaitingNews.empty())
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
