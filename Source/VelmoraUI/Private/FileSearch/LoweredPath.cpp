#include "FileSearch/LoweredPath.h"

#include "Math/UnrealMathUtility.h"
#include "Misc/Char.h"

#include <bit>
#include <cstring>

namespace Velmora::UI
{

	namespace
	{

		// Neither is an ASCII character: one stands after the path, the other for what no such path holds.
		constexpr uint8 NoChar = 0xFF;
		constexpr uint8 NotInAsciiPath = 0xFE;

		constexpr int32 CharCount = 0x10000;

		uint8 ToLowerAscii(uint8 Char)
		{
			return static_cast<uint8>(Char + (static_cast<uint8>(Char - 'A') < 26 ? 32 : 0));
		}

		/** What to look for in an ASCII path. Also some characters beyond ASCII, the Kelvin sign is one, have their lower case in it. */
		uint8 ToWantedAscii(TCHAR Char)
		{
			const TCHAR Lower = FChar::ToLower(Char);
			return Lower < 128 ? static_cast<uint8>(Lower) : NotInAsciiPath;
		}

		/** The engine's lower case of every character: it searches for each one beyond ASCII, which is too slow for whole projects. */
		struct FLowerTable
		{
			FLowerTable()
			{
				for (int32 Char = 0; Char < CharCount; ++Char)
				{
					Lower[Char] = FChar::ToLower(static_cast<TCHAR>(Char));
				}
			}

			static const FLowerTable& Get()
			{
				static const FLowerTable Instance;
				return Instance;
			}

			TCHAR Lower[CharCount];
		};
		static_assert(sizeof(TCHAR) == 2, "The table has an entry for each character.");

	} // namespace

	bool FAsciiPath::Assign(FStringView Path)
	{
		const TCHAR* const Text = Path.GetData();
		const int32 PathLength = Path.Len();
		if (PathLength > MaxLength)
		{
			return false;
		}
		Length = PathLength;
		// 1. The windows read beyond the end of the path: what stands there matches nothing.
		std::memset(Chars + PathLength, NoChar, Lanes);
		uint16 Seen = 0;
		// 2. A short path, one by one.
		if (PathLength < Lanes)
		{
			for (int32 Index = 0; Index < PathLength; ++Index)
			{
				Seen |= static_cast<uint16>(Text[Index]);
				Chars[Index] = ToLowerAscii(static_cast<uint8>(Text[Index]));
			}
			return Seen < 128;
		}
		// 3. A longer one by windows. Whether all of it is ASCII is gathered on the way: one bit above the seventh is enough to see.
		uint16 SeenInLane[Lanes] = {};
		for (int32 Done = 0; Done < PathLength; Done += Lanes)
		{
			// The last window is moved back into the path; what is done twice comes out the same.
			const int32 Base = FMath::Min(Done, PathLength - Lanes);
			// Not written in place: for all that the compiler knows, the path might lie there.
			uint8 Window[Lanes];
			for (int32 Lane = 0; Lane < Lanes; ++Lane)
			{
				SeenInLane[Lane] |= static_cast<uint16>(Text[Base + Lane]);
				Window[Lane] = ToLowerAscii(static_cast<uint8>(Text[Base + Lane]));
			}
			std::memcpy(Chars + Base, Window, Lanes);
		}
		for (const uint16 Lane : SeenInLane)
		{
			Seen |= Lane;
		}
		return Seen < 128;
	}

	bool FAsciiPath::Walk(FStringView Query, FGreedyMatch& OutMatch) const
	{
		FGreedyMatch Match;
		int32 Base = 0;
		// The lanes of the window after the last match.
		uint32 Free = ~0u;
		const TCHAR* const QueryEnd = Query.GetData() + Query.Len();
		for (const TCHAR* Char = Query.GetData(); Char != QueryEnd; ++Char)
		{
			// 1. In this window, after the last match. Mostly the next character of the query is near.
			const uint8 Wanted = ToWantedAscii(*Char);
			uint32 Hits = FindInWindow(Base, Wanted) & Free;
			// 2. In the windows after it.
			while (Hits == 0)
			{
				Base += Lanes;
				if (Base >= Length)
				{
					return false;
				}
				Free = ~0u;
				Hits = FindInWindow(Base, Wanted);
			}
			// 3. The first one is taken, whatever comes later: greedy, as the score is defined. Two shifts, since one by all bits is
			// undefined.
			const int32 Lane = std::countr_zero(Hits);
			Free = ~0u << Lane << 1;
			Match.Last = Base + Lane;
			Match.First = Match.First == INDEX_NONE ? Match.Last : Match.First;
			Match.BehindSlashCount += Match.Last > 0 && Chars[Match.Last - 1] == '/' ? 1 : 0;
		}
		OutMatch = Match;
		return true;
	}

	int32 FAsciiPath::FindRun(FStringView Query, int32 From) const
	{
		const TCHAR* const Wanted = Query.GetData();
		const int32 LastOffset = Query.Len() - 1;
		const uint8 First = ToWantedAscii(Wanted[0]);
		const uint8 Last = ToWantedAscii(Wanted[LastOffset]);
		const int32 End = Length - LastOffset;
		for (int32 Base = From; Base < End; Base += Lanes)
		{
			// 1. Both ends of the run at once: where both fit, the middle nearly always does.
			uint8 Hits[Lanes];
			for (int32 Lane = 0; Lane < Lanes; ++Lane)
			{
				Hits[Lane] = static_cast<uint8>(Chars[Base + Lane] == First) & static_cast<uint8>(Chars[Base + LastOffset + Lane] == Last);
			}
			// 2. The candidates from the left, each struck off when its middle does not fit.
			for (uint32 Mask = GatherBits(Hits); Mask != 0; Mask &= Mask - 1)
			{
				const int32 Start = Base + std::countr_zero(Mask);
				int32 Matched = 1;
				while (Matched < LastOffset && Chars[Start + Matched] == ToWantedAscii(Wanted[Matched]))
				{
					++Matched;
				}
				if (Matched >= LastOffset)
				{
					return Start;
				}
			}
		}
		return INDEX_NONE;
	}

	bool FAsciiPath::HasSlash(int32 From, int32 End) const
	{
		for (int32 Base = From; Base < End; Base += Lanes)
		{
			if (const uint32 Hits = FindInWindow(Base, '/'))
			{
				return Base + std::countr_zero(Hits) < End;
			}
		}
		return false;
	}

	inline uint32 FAsciiPath::FindInWindow(int32 Base, uint8 Char) const
	{
		uint8 Hits[Lanes];
		for (int32 Lane = 0; Lane < Lanes; ++Lane)
		{
			Hits[Lane] = static_cast<uint8>(Chars[Base + Lane] == Char);
		}
		return GatherBits(Hits);
	}

	inline uint32 FAsciiPath::GatherBits(const uint8 (&Hits)[Lanes])
	{
		static_assert(std::endian::native == std::endian::little, "The first hit is to be the lowest bit.");
		constexpr int32 Half = Lanes / 2;
		uint64 Low;
		uint64 High;
		std::memcpy(&Low, Hits, sizeof(Low));
		std::memcpy(&High, Hits + Half, sizeof(High));
		if ((Low | High) == 0)
		{
			return 0;
		}
		// The product has the lowest bits of the eight bytes in its uppermost byte.
		constexpr uint64 Gather = 0x0102040810204080ull;
		constexpr int32 Uppermost = 56;
		return static_cast<uint32>(Low * Gather >> Uppermost) | static_cast<uint32>(High * Gather >> Uppermost) << Half;
	}

	bool FWidePath::Walk(FStringView Query, FGreedyMatch& OutMatch) const
	{
		const TCHAR* const Lower = FLowerTable::Get().Lower;
		const TCHAR* const Text = Path.GetData();
		const TCHAR* const Wanted = Query.GetData();
		FGreedyMatch Match;
		int32 QueryIndex = 0;
		// The same walk as that over ASCII, one character at a time; letters are lowered by the table.
		for (int32 Index = 0; Index < Path.Len() && QueryIndex < Query.Len(); ++Index)
		{
			if (Lower[Text[Index]] == Lower[Wanted[QueryIndex]])
			{
				Match.Last = Index;
				Match.First = QueryIndex == 0 ? Index : Match.First;
				Match.BehindSlashCount += Index > 0 && Text[Index - 1] == TEXT('/') ? 1 : 0;
				++QueryIndex;
			}
		}
		OutMatch = Match;
		return QueryIndex == Query.Len();
	}

	int32 FWidePath::FindRun(FStringView Query, int32 From) const
	{
		const TCHAR* const Lower = FLowerTable::Get().Lower;
		const TCHAR* const Text = Path.GetData();
		const TCHAR* const Wanted = Query.GetData();
		for (int32 Start = From; Start <= Path.Len() - Query.Len(); ++Start)
		{
			int32 Matched = 0;
			while (Matched < Query.Len() && Lower[Text[Start + Matched]] == Lower[Wanted[Matched]])
			{
				++Matched;
			}
			if (Matched == Query.Len())
			{
				return Start;
			}
		}
		return INDEX_NONE;
	}

	bool FWidePath::HasSlash(int32 From, int32 End) const
	{
		int32 Index = INDEX_NONE;
		return Path.Mid(From, End - From).FindChar(TEXT('/'), Index);
	}

} // namespace Velmora::UI
