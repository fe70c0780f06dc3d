#include "FileSearch/AtTokenState.h"

#include "Math/UnrealMathUtility.h"
#include "Misc/Char.h"

namespace Velmora::UI
{

	namespace
	{

		/** Letters and digits are those of FChar, so that a token does not depend on the locale of the process. */
		bool IsAtTokenChar(TCHAR Char)
		{
			return FChar::IsAlnum(Char) || Char == TEXT('_') || Char == TEXT('.') || Char == TEXT('-') || Char == TEXT('/') ||
				Char == TEXT('\\');
		}

		constexpr int32 AtScanBlock = 2048;

		bool IsAtOrLineFeedInBlock(const TCHAR* Block)
		{
			// As wide as the characters, so that many are compared at once.
			uint16 Found = 0;
			for (int32 Offset = 0; Offset < AtScanBlock; ++Offset)
			{
				Found |= static_cast<uint16>(Block[Offset] == TEXT('@')) | static_cast<uint16>(Block[Offset] == TEXT('\n'));
			}
			return Found != 0;
		}

		/**
		 * Index of the nearest '@' to the left of the cursor on its line, -1 if there is none. Blanks do not end the walk. It is made
		 * at each key, so a long line is passed in blocks, without a branch for each character.
		 */
		int32 FindAtBefore(const TCHAR* Text, int32 Cursor)
		{
			int32 Index = Cursor;
			while (Index >= AtScanBlock && !IsAtOrLineFeedInBlock(Text + Index - AtScanBlock))
			{
				Index -= AtScanBlock;
			}
			while (--Index >= 0 && Text[Index] != TEXT('@'))
			{
				if (Text[Index] == TEXT('\n'))
				{
					return -1;
				}
			}
			return Index;
		}

		/** Of ASCII alone; other letters are left to the look at each character. */
		bool IsPlainTokenBlock(const TCHAR* Block)
		{
			// A count as wide as the characters, so that many are compared at once.
			uint16 Count = 0;
			for (int32 Offset = 0; Offset < AtScanBlock; ++Offset)
			{
				const uint16 Char = static_cast<uint16>(Block[Offset]);
				const uint16 FromLetterA = static_cast<uint16>((Char | 0x20) - 'a');
				// Minus, point, slash and the digits follow one another.
				const uint16 FromMinus = static_cast<uint16>(Char - '-');
				const uint16 Letter = FromLetterA < static_cast<uint16>(26) ? 1 : 0;
				const uint16 Digit = FromMinus < static_cast<uint16>(13) ? 1 : 0;
				const uint16 Underscore = Char == '_' ? 1 : 0;
				const uint16 Backslash = Char == '\\' ? 1 : 0;
				Count += Letter | Digit | Underscore | Backslash;
			}
			return Count == AtScanBlock;
		}

		/** The first character from Index on that is none of a token; the length when all are. In blocks as well. */
		int32 FindTokenEnd(const TCHAR* Text, int32 Index, int32 Length)
		{
			while (Length - Index >= AtScanBlock && IsPlainTokenBlock(Text + Index))
			{
				Index += AtScanBlock;
			}
			while (Index < Length && IsAtTokenChar(Text[Index]))
			{
				++Index;
			}
			return Index;
		}

	} // namespace

	FAtTokenState ComputeAtTokenState(const FString& Text, int32 CursorIndex)
	{
		FAtTokenState State;
		const TCHAR* const Chars = *Text;
		const int32 Length = Text.Len();
		const int32 Cursor = FMath::Clamp(CursorIndex, 0, Length);

		// 1. The sign that the token begins with, on the line of the cursor.
		State.AtIndex = FindAtBefore(Chars, Cursor);
		if (State.AtIndex == -1)
		{
			return State;
		}
		// 2. Its end: the first character that no path holds, or the end of the text, and so past the cursor as well.
		State.TokenEnd = FindTokenEnd(Chars, State.AtIndex + 1, Length);
		// 3. All of the token is looked for, also what stands after the cursor; but only while the cursor touches it.
		State.Query = Text.Mid(State.AtIndex + 1, State.TokenEnd - State.AtIndex - 1);
		State.bActive = Cursor <= State.TokenEnd;
		return State;
	}

	void ApplyAtTokenReplacement(
		const FString& Text, int32 StartIndex, int32 EndIndex, const FString& Replacement, FString& OutText, int32& OutCursorIndex)
	{
		const int32 Length = Text.Len();
		// The text may have changed since the token was found: a range that is not there replaces nothing.
		if (StartIndex < 0 || EndIndex < StartIndex || EndIndex > Length)
		{
			OutCursorIndex = FMath::Clamp(StartIndex, 0, Length);
			OutText = Text;
			return;
		}
		FString NewText;
		NewText.Reserve(Length - (EndIndex - StartIndex) + Replacement.Len());
		NewText.AppendChars(*Text, StartIndex);
		NewText.Append(Replacement);
		NewText.AppendChars(*Text + EndIndex, Length - EndIndex);
		OutCursorIndex = StartIndex + Replacement.Len();
		OutText = MoveTemp(NewText);
	}

} // namespace Velmora::UI
