#pragma once

#include "CoreMinimal.h"
#include "Containers/StringView.h"

namespace Velmora::UI
{

	/** Where the characters of a query stand in a path when each of them takes the first place that is left. */
	struct FGreedyMatch
	{
		int32 First = INDEX_NONE;
		int32 Last = INDEX_NONE;
		/** How many of them stand right after a slash. */
		int32 BehindSlashCount = 0;
	};

	/**
	 * A path that is plain ASCII and not too long, as nearly all are: copied in lower case into bytes, which are looked at sixteen
	 * at a time, in loops without a branch that compilers turn into vector instructions. Lives on the stack.
	 */
	class FAsciiPath
	{
	public:
		static constexpr int32 MaxLength = 496;

		/** False when the path is not plain ASCII, and then not to be used. */
		bool Assign(FStringView Path);

		/** False when some character of the query has no place. */
		bool Walk(FStringView Query, FGreedyMatch& OutMatch) const;

		/** First place at or after From where the query stands as a run, INDEX_NONE if there is none. The query is not empty. */
		int32 FindRun(FStringView Query, int32 From) const;

		bool HasSlash(int32 From, int32 End) const;

	private:
		static constexpr int32 Lanes = 16;

		/** A bit for each of the characters from Base on that is Char, the first one lowest. */
		uint32 FindInWindow(int32 Base, uint8 Char) const;
		static uint32 GatherBits(const uint8 (&Hits)[Lanes]);

		int32 Length = 0;
		/** With room for the rest of a window after the path. */
		uint8 Chars[MaxLength + Lanes];
	};

	/** Any path, looked at one character at a time. The text must outlive it. */
	class FWidePath
	{
	public:
		explicit FWidePath(FStringView InPath)
			: Path(InPath)
		{
		}

		// As those of FAsciiPath.
		bool Walk(FStringView Query, FGreedyMatch& OutMatch) const;
		int32 FindRun(FStringView Query, int32 From) const;
		bool HasSlash(int32 From, int32 End) const;

	private:
		FStringView Path;
	};

} // namespace Velmora::UI
