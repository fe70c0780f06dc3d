#include "Http/HttpExchange.h"

#include <algorithm>

#include "Http/WebAddress.h"

namespace Velmora
{
	namespace
	{
		/** How long the polite end of a complete answer may take, so that its connection can be used again. */
		constexpr double EndGraceSeconds = 0.05;

		bool EqualsIgnoringCase(std::string_view A, std::string_view B)
		{
			const auto ToLower = [](char Byte) { return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte; };
			return std::equal(A.begin(), A.end(), B.begin(), B.end(), [&](char X, char Y) { return ToLower(X) == ToLower(Y); });
		}

		std::string_view TrimBlanks(std::string_view Text)
		{
			while (!Text.empty() && (Text.front() == ' ' || Text.front() == '\t'))
			{
				Text.remove_prefix(1);
			}
			while (!Text.empty() && (Text.back() == ' ' || Text.back() == '\t' || Text.back() == '\r' || Text.back() == '\n'))
			{
				Text.remove_suffix(1);
			}
			return Text;
		}

		EHttpEnd EndOf(CURLcode Code)
		{
			switch (Code)
			{
			case CURLE_OK:
				return EHttpEnd::Complete;
			case CURLE_COULDNT_RESOLVE_HOST:
			case CURLE_COULDNT_RESOLVE_PROXY:
				return EHttpEnd::NotResolved;
			case CURLE_COULDNT_CONNECT:
			case CURLE_OPERATION_TIMEDOUT:
				return EHttpEnd::NotConnected;
			case CURLE_SSL_CONNECT_ERROR:
			case CURLE_PEER_FAILED_VERIFICATION:
			case CURLE_SSL_CERTPROBLEM:
			case CURLE_SSL_ISSUER_ERROR:
			case CURLE_SSL_INVALIDCERTSTATUS:
				return EHttpEnd::NotTrusted;
			case CURLE_SSL_CACERT_BADFILE:
			case CURLE_URL_MALFORMAT:
				return EHttpEnd::BadRequest;
			case CURLE_PARTIAL_FILE:
			case CURLE_GOT_NOTHING:
			case CURLE_RECV_ERROR:
			case CURLE_SEND_ERROR:
			case CURLE_HTTP2:
			case CURLE_HTTP2_STREAM:
				return EHttpEnd::CutShort;
			default:
				return EHttpEnd::Failed;
			}
		}
	}

	FHttpExchange::FHttpExchange(const FHttpRequest& InRequest, IHttpReader& InReader)
		: Request(InRequest)
		, Reader(InReader)
		, Easy(curl_easy_init())
		, Start(FClock::now())
		, LastActivity(Start)
	{
	}

	bool FHttpExchange::Refuse(EHttpEnd End, std::string Detail)
	{
		Reply.End = End;
		Reply.Detail = std::move(Detail);
		bIsEnded = true;
		return false;
	}

	bool FHttpExchange::Prepare()
	{
		if (!Easy)
		{
			return Refuse(EHttpEnd::Failed, "out of memory");
		}
		if (!SetAddress() || !SetHeaders())
		{
			return false;
		}
		CURL* const E = Easy.get();
		// 1. What may be spoken, and where: two protocols, no redirect, no signal, no waiting for "100 Continue".
		curl_easy_setopt(E, CURLOPT_PROTOCOLS_STR, "http,https");
		curl_easy_setopt(E, CURLOPT_FOLLOWLOCATION, 0L);
		curl_easy_setopt(E, CURLOPT_NOSIGNAL, 1L);
		curl_easy_setopt(E, CURLOPT_TCP_KEEPALIVE, 1L);
		// What a proxy says before it connects is no byte of the server's.
		curl_easy_setopt(E, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
		curl_easy_setopt(E, CURLOPT_USERAGENT, "VelmoraUI/0.1");
		// A name server that hangs must not keep a cancelled exchange.
		curl_easy_setopt(E, CURLOPT_QUICK_EXIT, 1L);
		curl_easy_setopt(E, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(Request.Limits.ConnectSeconds * 1000.0));
		if (!Request.CaFile.empty())
		{
			curl_easy_setopt(E, CURLOPT_CAINFO, Request.CaFile.c_str());
		}

		// 2. What is sent. The request outlives the exchange, so that nothing is copied.
		if (!Request.Body.empty())
		{
			curl_easy_setopt(E, CURLOPT_POST, 1L);
			curl_easy_setopt(E, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(Request.Body.size()));
			curl_easy_setopt(E, CURLOPT_POSTFIELDS, Request.Body.data());
		}

		// 3. Who takes what comes.
		curl_easy_setopt(E, CURLOPT_ERRORBUFFER, ErrorText);
		curl_easy_setopt(E, CURLOPT_HEADERFUNCTION, &FHttpExchange::OnHeader);
		curl_easy_setopt(E, CURLOPT_HEADERDATA, this);
		curl_easy_setopt(E, CURLOPT_WRITEFUNCTION, &FHttpExchange::OnBody);
		curl_easy_setopt(E, CURLOPT_WRITEDATA, this);
		curl_easy_setopt(E, CURLOPT_NOPROGRESS, 0L);
		curl_easy_setopt(E, CURLOPT_XFERINFOFUNCTION, &FHttpExchange::OnProgress);
		curl_easy_setopt(E, CURLOPT_XFERINFODATA, this);
		return true;
	}

	bool FHttpExchange::SetAddress()
	{
		FWebAddress Address;
		std::string Problem;
		if (!FWebAddress::Parse(Request.Url, Address, Problem))
		{
			return Refuse(EHttpEnd::BadRequest, Problem);
		}
		curl_easy_setopt(Easy.get(), CURLOPT_URL, Request.Url.c_str());
		if (Address.IsLoopback())
		{
			// Users have a proxy in their environment, which knows nothing of this machine.
			curl_easy_setopt(Easy.get(), CURLOPT_PROXY, "");
			curl_easy_setopt(Easy.get(), CURLOPT_NOPROXY, "*");
		}
		else if (!Request.Proxy.empty())
		{
			FWebAddress ProxyAddress;
			if (!FWebAddress::Parse(Request.Proxy, ProxyAddress, Problem))
			{
				return Refuse(EHttpEnd::BadRequest, "The proxy cannot be used. " + Problem);
			}
			curl_easy_setopt(Easy.get(), CURLOPT_PROXY, Request.Proxy.c_str());
			curl_easy_setopt(Easy.get(), CURLOPT_NOPROXY, "");
		}
		return true;
	}

	bool FHttpExchange::SetHeaders()
	{
		const auto Add = [this](const char* Line)
		{
			if (curl_slist* const Longer = curl_slist_append(Headers.get(), Line))
			{
				(void)Headers.release();
				Headers.reset(Longer);
			}
		};
		for (const std::string& Line : Request.Headers)
		{
			// A line break in a value would be a header of somebody else's.
			if (std::any_of(Line.begin(), Line.end(), [](char Byte) { return static_cast<unsigned char>(Byte) < 0x20 || Byte == 0x7F; }))
			{
				return Refuse(EHttpEnd::BadRequest, "A header or the key holds a line break or another control character.");
			}
			Add(Line.c_str());
		}
		Add("Expect:");
		curl_easy_setopt(Easy.get(), CURLOPT_HTTPHEADER, Headers.get());
		return true;
	}

	double FHttpExchange::SecondsSince(FClock::time_point Time) const
	{
		return std::chrono::duration<double>(FClock::now() - Time).count();
	}

	int FHttpExchange::GetWaitMilliseconds() const
	{
		const double Limit = bHasByte ? Request.Limits.SilenceSeconds : Request.Limits.ConnectSeconds + Request.Limits.FirstByteSeconds;
		double Left = std::min(Limit - SecondsSince(LastActivity), Request.Limits.TotalSeconds - SecondsSince(Start));
		if (bHasEnough)
		{
			Left = std::min(Left, EndGraceSeconds - SecondsSince(EnoughSince));
		}
		// Looks up now and then in any case: a library's own timers are its own matter.
		return static_cast<int>(std::clamp(Left * 1000.0 + 1.0, 0.0, 1000.0));
	}

	bool FHttpExchange::IsOver()
	{
		if (bIsEnded)
		{
			return true;
		}
		if (bHasEnough && SecondsSince(EnoughSince) >= EndGraceSeconds)
		{
			Reply.End = EHttpEnd::Complete;
			bIsEnded = true;
			return true;
		}
		if (SecondsSince(Start) >= Request.Limits.TotalSeconds)
		{
			Refuse(EHttpEnd::TotalTimeout, std::string());
			return true;
		}
		curl_off_t ConnectMicroseconds = 0;
		curl_easy_getinfo(Easy.get(), CURLINFO_PRETRANSFER_TIME_T, &ConnectMicroseconds);
		const bool bIsConnected = ConnectMicroseconds > 0;
		const double Quiet = SecondsSince(LastActivity);
		if (bHasByte ? Quiet >= Request.Limits.SilenceSeconds
					 : Quiet >= Request.Limits.FirstByteSeconds + (bIsConnected ? 0.0 : Request.Limits.ConnectSeconds))
		{
			Refuse(bHasByte ? EHttpEnd::Silence : EHttpEnd::FirstByteTimeout, std::string());
			return true;
		}
		return false;
	}

	void FHttpExchange::Finish(CURLcode Code)
	{
		if (bIsEnded)
		{
			return;
		}
		bIsEnded = true;
		Reply.End = bHasEnough ? EHttpEnd::Complete : EndOf(Code);
		if (Reply.End != EHttpEnd::Complete)
		{
			NameFailure(Code);
		}
		else
		{
			// An answer without a body has a head all the same.
			TellHead();
		}
	}

	void FHttpExchange::NameFailure(CURLcode Code)
	{
		Reply.Detail = ErrorText[0] ? ErrorText : curl_easy_strerror(Code);
		long ProxyStatus = 0;
		curl_easy_getinfo(Easy.get(), CURLINFO_HTTP_CONNECTCODE, &ProxyStatus);
		if (ProxyStatus >= 400)
		{
			// The server was never spoken to, so nothing of its answer can have broken off.
			Reply.End = EHttpEnd::NotConnected;
			Reply.Detail = "the proxy refuses with status " + std::to_string(ProxyStatus);
		}
		else if (Code == CURLE_SSL_CONNECT_ERROR && Reply.Detail.find("wrong version number") != std::string::npos)
		{
			// No certificate is at fault: nobody showed one.
			Reply.End = EHttpEnd::Failed;
			Reply.Detail = "it speaks without encryption, so its address begins with http:// instead of https://";
		}
	}

	void FHttpExchange::FinishCancelled()
	{
		Reply.End = EHttpEnd::Cancelled;
		bIsEnded = true;
	}

	bool FHttpExchange::WasConnectionGone() const
	{
		long NewConnections = 1;
		return Easy && Reply.End == EHttpEnd::CutShort && HeaderBytes == 0 && Reply.ReceivedBytes == 0 &&
			curl_easy_getinfo(Easy.get(), CURLINFO_NUM_CONNECTS, &NewConnections) == CURLE_OK && NewConnections == 0;
	}

	FHttpReply FHttpExchange::TakeReply()
	{
		curl_off_t RetryAfter = 0;
		if (Easy && curl_easy_getinfo(Easy.get(), CURLINFO_RETRY_AFTER, &RetryAfter) == CURLE_OK && RetryAfter > 0)
		{
			Reply.RetryAfterSeconds = static_cast<double>(RetryAfter);
		}
		Reply.Seconds = SecondsSince(Start);
		return std::move(Reply);
	}

	size_t FHttpExchange::OnHeader(char* Bytes, size_t Size, size_t Count, void* Self)
	{
		return static_cast<FHttpExchange*>(Self)->TakeHeader(std::string_view(Bytes, Size * Count)) ? Size * Count : 0;
	}

	size_t FHttpExchange::OnBody(char* Bytes, size_t Size, size_t Count, void* Self)
	{
		return static_cast<FHttpExchange*>(Self)->TakeBody(std::string_view(Bytes, Size * Count)) ? Size * Count : 0;
	}

	int FHttpExchange::OnProgress(void* Self, curl_off_t, curl_off_t, curl_off_t, curl_off_t Sent)
	{
		FHttpExchange* const Exchange = static_cast<FHttpExchange*>(Self);
		if (Sent != Exchange->SentBytes)
		{
			Exchange->SentBytes = Sent;
			Exchange->LastActivity = FClock::now();
		}
		return 0;
	}

	bool FHttpExchange::TakeHeader(std::string_view Line)
	{
		LastActivity = FClock::now();
		// "100 Continue" and the like come from whatever stands before the model, which may still take its time.
		bIsInterim = Line.starts_with("HTTP/") ? Line.find(" 1") == Line.find(' ') : bIsInterim;
		if (!bHasByte && !bIsInterim)
		{
			bHasByte = true;
			Reply.FirstByteSeconds = SecondsSince(Start);
		}
		HeaderBytes += Line.size();
		if (HeaderBytes > Request.Limits.MaxHeaderBytes)
		{
			return Refuse(EHttpEnd::TooLarge, "The head of the answer is too large.");
		}
		if (bHeadIsTold)
		{
			// Trailers of a chunked body say nothing that is needed.
			return true;
		}
		if (Line.starts_with("HTTP/"))
		{
			// Another head: the one before was only of the proxy, or announced this one.
			Reply.Head = FHttpHead();
			return true;
		}
		const size_t Colon = Line.find(':');
		if (Colon == std::string_view::npos)
		{
			return true;
		}
		const std::string_view Name = Line.substr(0, Colon);
		const std::string_view Value = TrimBlanks(Line.substr(Colon + 1));
		if (EqualsIgnoringCase(Name, "content-type"))
		{
			Reply.Head.ContentType = Value;
		}
		else if (EqualsIgnoringCase(Name, "location"))
		{
			Reply.Head.Location = Value;
		}
		else if (EqualsIgnoringCase(Name, "content-encoding"))
		{
			Reply.Head.bIsCompressed |= !Value.empty() && !EqualsIgnoringCase(Value, "identity");
		}
		else if (EqualsIgnoringCase(Name, "transfer-encoding") && !EqualsIgnoringCase(Value, "chunked") &&
			!EqualsIgnoringCase(Value, "identity"))
		{
			// The library unpacks what is compressed on its way, without a bound and unasked.
			return Refuse(EHttpEnd::Compressed, std::string());
		}
		return true;
	}

	void FHttpExchange::TellHead()
	{
		if (bHeadIsTold)
		{
			return;
		}
		bHeadIsTold = true;
		long Status = 0;
		curl_easy_getinfo(Easy.get(), CURLINFO_RESPONSE_CODE, &Status);
		Reply.Head.Status = static_cast<int>(Status);
		Reader.OnHead(Reply.Head);
	}

	bool FHttpExchange::TakeBody(std::string_view Bytes)
	{
		LastActivity = FClock::now();
		TellHead();
		Reply.ReceivedBytes += Bytes.size();
		if (bHasEnough)
		{
			return true;
		}
		if (Reply.Head.bIsCompressed)
		{
			return Refuse(EHttpEnd::Compressed, std::string());
		}
		if (Reply.ReceivedBytes > Request.Limits.MaxBodyBytes)
		{
			return Refuse(EHttpEnd::TooLarge, std::string());
		}
		switch (Reader.OnBytes(Bytes))
		{
		case IHttpReader::EFlow::More:
			return true;
		case IHttpReader::EFlow::Enough:
			bHasEnough = true;
			EnoughSince = FClock::now();
			return true;
		case IHttpReader::EFlow::Stop:
			return Refuse(EHttpEnd::Stopped, std::string());
		}
		return false;
	}
}
