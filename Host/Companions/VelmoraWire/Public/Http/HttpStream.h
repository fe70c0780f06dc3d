#pragma once

#include <memory>

#include "CoreMinimal.h"
#include "Http/HttpRequest.h"

namespace Velmora
{
	/**
	 * Makes HTTP requests one after the other on the calling worker and keeps the connection between them. Redirects
	 * are not followed, since a key would travel; nothing is decompressed; certificates are always checked; no
	 * address of this machine goes through a proxy. All connections close with the stream.
	 */
	class VELMORAWIRE_API FHttpStream
	{
	public:
		FHttpStream();
		~FHttpStream();
		FHttpStream(const FHttpStream&) = delete;
		FHttpStream& operator=(const FHttpStream&) = delete;

		/** Blocks until the exchange has ended or is cancelled. One at a time. */
		FHttpReply Run(const FHttpRequest& Request, IHttpReader& Reader);

		/** For good: the exchange under way ends at once and its connection is closed, later ones do not begin. Any thread. */
		void Cancel();

	private:
		class FMulti;
		const std::unique_ptr<FMulti> Multi;
	};
}
