#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"

namespace Velmora
{
	/** How long and how much a server may be waited for. */
	struct FHttpLimits
	{
		/** Name looked up, connected, encrypted. */
		double ConnectSeconds = 10.0;

		/** From the last byte of the request that was sent to the first of the answer. */
		double FirstByteSeconds = 120.0;

		/** Between two bytes of the answer. */
		double SilenceSeconds = 60.0;

		/** For all of it; a server that drips for ever is still one that never ends. */
		double TotalSeconds = 3600.0;

		/** Of the body as it comes. */
		uint64_t MaxBodyBytes = uint64_t(1) << 30;

		/** Of all header lines together. */
		size_t MaxHeaderBytes = 256 * 1024;
	};

	/** One request. With a body it is a POST, else a GET. */
	struct FHttpRequest
	{
		std::string Url;

		/** "Name: value", one line each. */
		std::vector<std::string> Headers;
		std::string Body;

		/** File with the certificates to trust instead of the system's; empty for those. */
		std::string CaFile;

		/** Address of a proxy; empty for what the environment says. Never used for this machine itself. */
		std::string Proxy;
		FHttpLimits Limits;
	};

	/** How an exchange ended. */
	enum class EHttpEnd
	{
		Complete,
		Stopped, // The reader of the body wanted no more.
		Cancelled,
		BadRequest, // Address, header, proxy or CA file cannot be used; nothing was sent.
		NotResolved,
		NotConnected,
		NotTrusted, // The certificate, or encryption at all.
		FirstByteTimeout,
		Silence,
		TotalTimeout,
		CutShort, // The connection ended before the body did.
		TooLarge,
		Compressed, // The body is compressed, which was not asked for.
		Failed
	};

	/** The head of an answer. */
	struct FHttpHead
	{
		int Status = 0;
		std::string ContentType;

		/** Where a redirect points to; it is never followed. */
		std::string Location;
		bool bIsCompressed = false;
	};

	struct FHttpReply
	{
		EHttpEnd End = EHttpEnd::Failed;
		FHttpHead Head;

		/** What the library says of a failure; empty otherwise. Names no header. */
		std::string Detail;

		/** What the server asks to wait before the next try; negative when it says nothing. */
		double RetryAfterSeconds = -1.0;

		/** Negative when none came. */
		double FirstByteSeconds = -1.0;
		double Seconds = 0.0;
		uint64_t ReceivedBytes = 0;
	};

	/** Takes an answer as it comes, on the thread that waits for it. */
	class IHttpReader
	{
	public:
		enum class EFlow
		{
			More,
			Enough, // All is there: the end of the exchange is waited for a moment only, what still comes is dropped.
			Stop // Ends the exchange at once.
		};

		virtual ~IHttpReader() = default;

		/** Before the first bytes, once. */
		virtual void OnHead(const FHttpHead& Head) = 0;
		virtual EFlow OnBytes(std::string_view Bytes) = 0;
	};
}
