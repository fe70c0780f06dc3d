#include "Host/ConversationSearch.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "Async/Async.h"
#include "Host/HostFileNames.h"
#include "Host/HostTasks.h"
#include "Host/StoreLocation.h"
#include "Search/SearchIndex.h"
#include "Search/SearchText.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	/** The thread of one search, and what it is given. Results that are under way to the game thread hold it weakly. */
	class FConversationSearch::FWorker : public std::enable_shared_from_this<FWorker>
	{
	public:
		FWorker(const FStoreLocation& Location)
			: Index(HostFileNameToBytes(Location.GetDatabasePath()), HostFileNameToBytes(Location.GetSearchPath()), bStops)
		{
		}

		void Start()
		{
			Thread = std::thread([this] { Run(); });
		}

		void End()
		{
			{
				const std::scoped_lock Lock(Mutex);
				bEnds = true;
				bStops = true;
				++Serial;
			}
			Wake.notify_one();
			Thread.join();
		}

		void Ask(const FString& NewQuery, FOnResult NewOnResult)
		{
			{
				const std::scoped_lock Lock(Mutex);
				Query = NewQuery;
				OnResult = MoveTemp(NewOnResult);
				bIsAsked = true;
				bStops = true;
				++Serial;
				// From here on and not from when the thread wakes: who waits for background work may look before that.
				if (!Work)
				{
					Work.emplace();
				}
			}
			Wake.notify_one();
		}

	private:
		void Run()
		{
			for (;;)
			{
				FString Asked;
				uint64 AskedSerial = 0;
				{
					std::unique_lock Lock(Mutex);
					Wake.wait(Lock, [this] { return bIsAsked || bEnds; });
					if (bEnds)
					{
						Work.reset();
						return;
					}
					Asked = Query;
					AskedSerial = Serial;
					bIsAsked = false;
					bStops = false;
				}
				Look(Asked, AskedSerial);
				const std::scoped_lock Lock(Mutex);
				if (!bIsAsked)
				{
					Work.reset();
				}
			}
		}

		/** What is known is shown at once; a first look at a large store takes its time. */
		void Look(const FString& Asked, uint64 AskedSerial)
		{
			const std::vector<FString> Words = SearchText::ReadQuery(Asked);
			TOutcome<TArray<FConversationHit>> Found = Index.Find(Words, MaxHits);
			if (Found && !Words.empty())
			{
				Deliver(Asked, AskedSerial, Found, false);
			}
			const TOutcome<bool> CaughtUp = Index.CatchUp();
			if (!CaughtUp)
			{
				Deliver(Asked, AskedSerial, FOutcome(CaughtUp), true);
				return;
			}
			if (*CaughtUp || !Found)
			{
				Found = Index.Find(Words, MaxHits);
			}
			Deliver(Asked, AskedSerial, Found, true);
		}

		void Deliver(const FString& Asked, uint64 AskedSerial, const TOutcome<TArray<FConversationHit>>& Found, bool bIsComplete)
		{
			if (Found.Is(EOutcome::Stopped))
			{
				return;
			}
			FConversationSearchResult Result;
			Result.Query = Asked;
			Result.bIsComplete = bIsComplete;
			if (Found)
			{
				Result.Hits = *Found;
			}
			else
			{
				Result.Problem = Utf8Text::ToString(Found.Explain("The conversations could not be searched").GetWords());
			}
			AsyncTask(ENamedThreads::GameThread,
				[Weak = weak_from_this(), AskedSerial, Result = MoveTemp(Result)]
				{
					if (const std::shared_ptr<FWorker> Self = Weak.lock())
					{
						Self->Receive(AskedSerial, Result);
					}
				});
		}

		void Receive(uint64 AskedSerial, const FConversationSearchResult& Result)
		{
			FOnResult Receiver;
			{
				const std::scoped_lock Lock(Mutex);
				Receiver = AskedSerial == Serial ? OnResult : FOnResult();
			}
			if (Receiver)
			{
				Receiver(Result);
			}
		}

		std::thread Thread;
		std::mutex Mutex;
		std::condition_variable Wake;
		FString Query;
		FOnResult OnResult;
		/** Of the last question, so that answers to earlier ones are known. */
		uint64 Serial = 0;
		bool bIsAsked = false;
		/** While something is asked or looked for. */
		std::optional<FHostBackgroundWork> Work;
		bool bEnds = false;
		std::atomic<bool> bStops{ false };
		FSearchIndex Index;
	};

	FConversationSearch::FConversationSearch()
		: Worker(std::make_shared<FWorker>(GetStoreLocation()))
	{
		Worker->Start();
	}

	FConversationSearch::~FConversationSearch()
	{
		Worker->End();
	}

	void FConversationSearch::Search(const FString& Query, FOnResult OnResult)
	{
		Worker->Ask(Query, MoveTemp(OnResult));
	}
}
