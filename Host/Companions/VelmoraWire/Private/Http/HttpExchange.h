#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include <curl/curl.h>

#include "Http/HttpRequest.h"

namespace Velmora
{
	struct FEasyDeleter
	{
		void operator()(CURL* Easy) const { curl_easy_cleanup(Easy); }
	};
	struct FHeaderListDeleter
	{
		void operator()(curl_slist* List) const { curl_slist_free_all(List); }
	};

	/** One request on its way: its settings, its limits, and what has come of its answer. */
	class FHttpExchange
	{
	public:
		using FClock = std::chrono::steady_clock;

		FHttpExchange(const FHttpRequest& InRequest, IHttpReader& InReader);

		/** False when the request cannot be made; the reply tells why. */
		bool Prepare();

		CURL* GetEasy() const { return Easy.get(); }

		/** Milliseconds until a limit may be reached. */
		int GetWaitMilliseconds() const;

		/** A limit has been reached, or enough has come: the exchange is to be ended. */
		bool IsOver();

		/** What the library says at the end. */
		void Finish(CURLcode Code);
		void FinishCancelled();

		/**
		 * The connection was kept from an earlier exchange, and the server had given it up before it answered with anything. The library
		 * asks anew by itself then, but not over HTTP/2.
		 */
		bool WasConnectionGone() const;

		FHttpReply TakeReply();

	private:
		static size_t OnHeader(char* Bytes, size_t Size, size_t Count, void* Self);
		static size_t OnBody(char* Bytes, size_t Size, size_t Count, void* Self);
		static int OnProgress(void* Self, curl_off_t, curl_off_t, curl_off_t, curl_off_t Sent);

		bool SetAddress();
		bool SetHeaders();
		bool TakeHeader(std::string_view Line);
		bool TakeBody(std::string_view Bytes);
		void TellHead();

		/** What the failure that the library calls Code is, where its name alone misleads. */
		void NameFailure(CURLcode Code);
		bool Refuse(EHttpEnd End, std::string Detail);
		double SecondsSince(FClock::time_point Time) const;

		const FHttpRequest& Request;
		IHttpReader& Reader;
		std::unique_ptr<curl_slist, FHeaderListDeleter> Headers;
		const std::unique_ptr<CURL, FEasyDeleter> Easy;
		char ErrorText[CURL_ERROR_SIZE] = {};

		FHttpReply Reply;
		const FClock::time_point Start;
		FClock::time_point LastActivity;
		FClock::time_point EnoughSince;
		curl_off_t SentBytes = 0;
		size_t HeaderBytes = 0;
		bool bHasByte = false;

		/** The head that comes only announces another one. */
		bool bIsInterim = false;
		bool bHeadIsTold = false;
		bool bHasEnough = false;

		/** Set by what stops the exchange from our side. */
		bool bIsEnded = false;
	};
}
