#pragma once

#include "CoreMinimal.h"
#include "Markdown/MarkdownParser.h"
#include "Misc/Char.h"

#include <bit>
#include <cstring>

/** Character tests and scans that the parser's sources share. */
namespace Velmora::Markdown::Scan
{

	/** Puts the read position back when a rule gives up. A rule that succeeds calls Keep() on its last line. */
	class FRewind
	{
	public:
		explicit FRewind(int32& InPosition)
			: Position(InPosition)
			, Saved(InPosition)
		{
		}

		~FRewind()
		{
			if (!bKept)
			{
				Position = Saved;
			}
		}

		FRewind(const FRewind&) = delete;
		FRewind& operator=(const FRewind&) = delete;

		int32 GetStart() const { return Saved; }
		void Keep() { bKept = true; }

	private:
		int32& Position;
		const int32 Saved;
		bool bKept = false;
	};

	inline bool IsBlankOrTab(TCHAR Char)
	{
		return Char == TEXT(' ') || Char == TEXT('\t');
	}

	/** Blank or tab as the rules see it: a control character in the text counts too, a line end does not. */
	inline bool IsRawBlank(TCHAR Char)
	{
		return Char <= 32 && Char != TEXT('\n') && Char != TEXT('\r');
	}

	/** Letters, digits and the underscore: no emphasis begins after one or ends before one. */
	inline bool IsWordChar(TCHAR Char)
	{
		if (Char < 128)
		{
			const bool bLetter = static_cast<uint32>((Char | 32) - TEXT('a')) < 26;
			const bool bDigit = static_cast<uint32>(Char - TEXT('0')) < 10;
			return bLetter || bDigit || Char == TEXT('_');
		}
		return FChar::IsAlnum(Char);
	}

	/**
	 * First index in [From, End) whose character is a hit, End if there is none. The test maps a character to 1 or 0. Eight
	 * characters are tested at once, without a branch in between, which compilers turn into vector instructions.
	 */
	template <typename TestType>
	int32 FindFirst(const TCHAR* Text, int32 From, int32 End, TestType Test)
	{
		static_assert(sizeof(TCHAR) == sizeof(uint16));
		static_assert(std::endian::native == std::endian::little, "The first hit is sought in the lowest bits.");
		constexpr int32 Lanes = 8;
		while (End - From >= Lanes)
		{
			uint16 Hits[Lanes];
			for (int32 Lane = 0; Lane < Lanes; ++Lane)
			{
				Hits[Lane] = Test(static_cast<uint16>(Text[From + Lane]));
			}
			uint64 Low;
			uint64 High;
			std::memcpy(&Low, Hits, sizeof(Low));
			std::memcpy(&High, Hits + Lanes / 2, sizeof(High));
			if ((Low | High) != 0)
			{
				return From + (Low != 0 ? std::countr_zero(Low) / 16 : Lanes / 2 + std::countr_zero(High) / 16);
			}
			From += Lanes;
		}
		while (From < End && Test(static_cast<uint16>(Text[From])) == 0)
		{
			++From;
		}
		return From;
	}

	inline int32 FindChar(const TCHAR* Text, int32 From, int32 End, TCHAR Char)
	{
		const uint16 Wanted = static_cast<uint16>(Char);
		return FindFirst(Text, From, End, [Wanted](uint16 Unit) { return static_cast<uint16>(Unit == Wanted); });
	}

	inline int32 FindEither(const TCHAR* Text, int32 From, int32 End, TCHAR First, TCHAR Second)
	{
		const uint16 A = static_cast<uint16>(First);
		const uint16 B = static_cast<uint16>(Second);
		return FindFirst(Text, From, End,
			[A, B](uint16 Unit) { return static_cast<uint16>(static_cast<uint16>(Unit == A) + static_cast<uint16>(Unit == B)); });
	}

	/** First index at or after From at which the literal stands, Length if there is none. */
	inline int32 FindLiteral(const TCHAR* Text, int32 From, int32 Length, const TCHAR* Literal, int32 LiteralLength)
	{
		const int32 End = Length - LiteralLength + 1;
		for (int32 Index = From; (Index = FindChar(Text, Index, End, Literal[0])) < End; ++Index)
		{
			if (std::memcmp(Text + Index, Literal, LiteralLength * sizeof(TCHAR)) == 0)
			{
				return Index;
			}
		}
		return Length;
	}

	/** Narrows [Start, End) to leave out whitespace on both sides. */
	inline void TrimRange(const TCHAR* Text, int32& Start, int32& End)
	{
		while (Start < End && FChar::IsWhitespace(Text[Start]))
		{
			++Start;
		}
		while (Start < End && FChar::IsWhitespace(Text[End - 1]))
		{
			--End;
		}
	}

	/** The characters of [Start, End) with whitespace removed on both sides. */
	inline FString MakeTrimmed(const TCHAR* Text, int32 Start, int32 End)
	{
		TrimRange(Text, Start, End);
		return FString(FStringView(Text + Start, End - Start));
	}

} // namespace Velmora::Markdown::Scan
