#pragma once

#include <string>
#include <string_view>

#include "CoreMinimal.h"

namespace Velmora
{
	/** Where a server is. A key belongs to scheme, host and port and goes nowhere else. */
	struct VELMORAWIRE_API FWebAddress
	{
		/** "http" or "https". */
		std::string Scheme;

		/** In lower case; an IPv6 address without its brackets. */
		std::string Host;
		int Port = 0;

		/** Starts with '/' and does not end with one; empty for the root. */
		std::string Path;

		/**
		 * Any text may come in. Pure.
		 *
		 * @param OutProblem  One sentence on failure that says what an address looks like.
		 */
		static bool Parse(std::string_view Text, FWebAddress& OutAddress, std::string& OutProblem);

		/** "https://api.example.org:8443"; the scheme's own port is left out. */
		std::string GetOrigin() const;

		/** The whole address. */
		std::string ToString() const { return GetOrigin() + Path; }

		/** This machine, by name or number. */
		bool IsLoopback() const;
		bool IsEncrypted() const { return Scheme == "https"; }
	};
}
