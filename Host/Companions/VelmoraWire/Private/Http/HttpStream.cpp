#include "Http/HttpStream.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <mutex>

#include <curl/curl.h>

#include "Http/HttpExchange.h"

namespace Velmora
{
	namespace
	{
		void StartLibrary()
		{
			static std::once_flag Once;
			std::call_once(Once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
		}

		/** Without signals the library leaves SIGPIPE to us: a peer that has gone must not end the process. */
		class FNoPipeSignal
		{
		public:
			FNoPipeSignal()
			{
				sigemptyset(&Pipe);
				sigaddset(&Pipe, SIGPIPE);
				pthread_sigmask(SIG_BLOCK, &Pipe, &Saved);
			}
			~FNoPipeSignal()
			{
				if (!sigismember(&Saved, SIGPIPE))
				{
					const timespec NoTime = {};
					while (sigtimedwait(&Pipe, nullptr, &NoTime) == SIGPIPE)
					{
					}
				}
				pthread_sigmask(SIG_SETMASK, &Saved, nullptr);
			}
			FNoPipeSignal(const FNoPipeSignal&) = delete;
			FNoPipeSignal& operator=(const FNoPipeSignal&) = delete;

		private:
			sigset_t Pipe;
			sigset_t Saved;
		};
	}

	class FHttpStream::FMulti
	{
	public:
		FMulti()
		{
			StartLibrary();
			Handle = curl_multi_init();
			if (Handle)
			{
				curl_multi_setopt(Handle, CURLMOPT_MAXCONNECTS, 2L);
			}
		}
		~FMulti()
		{
			const FNoPipeSignal NoSignal;
			if (Handle)
			{
				curl_multi_cleanup(Handle);
			}
		}
		FMulti(const FMulti&) = delete;
		FMulti& operator=(const FMulti&) = delete;

		FHttpReply Run(const FHttpRequest& Request, IHttpReader& Reader)
		{
			const FNoPipeSignal NoSignal;
			FHttpExchange Exchange(Request, Reader);
			RunOnce(Exchange);
			if (bIsCancelled || !Exchange.WasConnectionGone())
			{
				return Exchange.TakeReply();
			}
			FHttpExchange Again(Request, Reader);
			curl_easy_setopt(Again.GetEasy(), CURLOPT_FRESH_CONNECT, 1L);
			RunOnce(Again);
			return Again.TakeReply();
		}

		void Cancel()
		{
			bIsCancelled = true;
			if (Handle)
			{
				curl_multi_wakeup(Handle);
			}
		}

	private:
		void RunOnce(FHttpExchange& Exchange)
		{
			if (Handle && Exchange.Prepare() && curl_multi_add_handle(Handle, Exchange.GetEasy()) == CURLM_OK)
			{
				Drive(Exchange);
				// Closes the connection of what has not come to its end.
				curl_multi_remove_handle(Handle, Exchange.GetEasy());
			}
		}

		void Drive(FHttpExchange& Exchange)
		{
			while (true)
			{
				if (bIsCancelled)
				{
					Exchange.FinishCancelled();
					return;
				}
				int RunningCount = 0;
				if (curl_multi_perform(Handle, &RunningCount) != CURLM_OK)
				{
					Exchange.Finish(CURLE_FAILED_INIT);
					return;
				}
				int LeftCount = 0;
				while (const CURLMsg* const Message = curl_multi_info_read(Handle, &LeftCount))
				{
					if (Message->msg == CURLMSG_DONE && !bIsCancelled)
					{
						Exchange.Finish(Message->data.result);
						return;
					}
				}
				if (!bIsCancelled && Exchange.IsOver())
				{
					return;
				}
				curl_multi_poll(Handle, nullptr, 0, bIsCancelled ? 0 : Exchange.GetWaitMilliseconds(), nullptr);
			}
		}

		CURLM* Handle = nullptr;
		std::atomic<bool> bIsCancelled = false;
	};

	FHttpStream::FHttpStream()
		: Multi(std::make_unique<FMulti>())
	{
	}

	FHttpStream::~FHttpStream() = default;

	FHttpReply FHttpStream::Run(const FHttpRequest& Request, IHttpReader& Reader)
	{
		return Multi->Run(Request, Reader);
	}

	void FHttpStream::Cancel()
	{
		Multi->Cancel();
	}
}
