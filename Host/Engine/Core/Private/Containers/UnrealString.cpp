#include "Containers/UnrealString.h"

#include "Containers/StringConv.h"
#include "Math/UnrealMathUtility.h"

// Text of 16-bit units as the editor has it: comparisons ignore letter case unless asked otherwise, positions count
// units and not letters. Arguments may be parts of the text that is changed, so results are made aside where that could
// matter.

namespace
{
	int32 LineEndLength(FStringView Text, int32 Index)
	{
		if (Text[Index] == '\r')
		{
			return Index + 1 < Text.Len() && Text[Index + 1] == '\n' ? 2 : 1;
		}
		return Text[Index] == '\n' ? 1 : 0;
	}

	/** Cuts Text wherever DelimiterLength(Text, Index) is above 0. An empty text has no pieces. */
	template <typename DelimiterLengthType>
	int32 CutIntoPieces(FStringView Text, TArray<FString>& OutArray, bool bCullEmpty, const DelimiterLengthType& DelimiterLength)
	{
		TArray<FString> Pieces; // The text may be an element of OutArray.
		if (!Text.IsEmpty())
		{
			int32 Start = 0;
			const auto AddPiece = [&](int32 End)
			{
				if (End > Start || !bCullEmpty)
				{
					Pieces.Emplace(Text.Mid(Start, End - Start));
				}
			};
			for (int32 Index = 0; Index < Text.Len();)
			{
				const int32 Length = DelimiterLength(Text, Index);
				if (Length > 0)
				{
					AddPiece(Index);
					Index += Length;
					Start = Index;
				}
				else
				{
					++Index;
				}
			}
			AddPiece(Text.Len());
		}
		OutArray = MoveTemp(Pieces);
		return OutArray.Num();
	}

	struct FEscape
	{
		TCHAR Char;
		TCHAR Letter;
	};
	constexpr FEscape Escapes[] = {
		{ TEXT('\n'), TEXT('n') },
		{ TEXT('\r'), TEXT('r') },
		{ TEXT('\t'), TEXT('t') },
		{ TEXT('\''), TEXT('\'') },
		{ TEXT('"'), TEXT('"') },
		{ TEXT('\\'), TEXT('\\') },
	};

	bool IsListed(const TArray<TCHAR>* Chars, TCHAR Char)
	{
		return !Chars || Chars->Contains(Char);
	}
}

FString::FString(const char* String)
{
	if (String)
	{
		FUTF8ToTCHAR::Append(Data, String, (int32)std::char_traits<char>::length(String));
	}
}

FString FString::Concat(FStringView A, FStringView B)
{
	FString Result;
	Result.Data.reserve((std::size_t)A.Len() + (std::size_t)B.Len());
	Result.Append(A);
	Result.Append(B);
	return Result;
}

void FString::AppendInt(int32 Number)
{
	Append(FromInt(Number));
}

void FString::InsertAt(int32 Index, TCHAR Char)
{
	check(Index >= 0 && Index <= Len());
	Data.insert((std::size_t)Index, 1, Char);
}

void FString::InsertAt(int32 Index, const FString& Text)
{
	check(Index >= 0 && Index <= Len());
	Data.insert((std::size_t)Index, Text.Data);
}

void FString::RemoveAt(int32 Index, int32 Count, EAllowShrinking)
{
	check(Index >= 0 && Count >= 0 && Count <= Len() - Index);
	Data.erase((std::size_t)Index, (std::size_t)Count);
}

void FString::PathAppend(const TCHAR* Text, int32 TextLength)
{
	const auto IsSlash = [](TCHAR Char) { return Char == '/' || Char == '\\'; };
	const bool bLeftEnds = !IsEmpty() && IsSlash(Data.back());
	const bool bRightBegins = TextLength > 0 && IsSlash(Text[0]);
	if (!IsEmpty() && !bLeftEnds && !bRightBegins)
	{
		AppendChar(TEXT('/'));
	}
	const int32 Skip = bLeftEnds && bRightBegins ? 1 : 0;
	if (TextLength > Skip)
	{
		Data.append(Text + Skip, (std::size_t)(TextLength - Skip));
	}
}

FString FString::Mid(int32 Start, int32 Count) const&
{
	// A start before the text takes its share of the count, as the slice would.
	if (Start < 0 && Count != 0x7fffffff)
	{
		Count = static_cast<int32>(FMath::Max<int64>(int64(Count) + Start, 0));
	}
	return FString(FStringView(*this).Mid(Start, Count));
}

void FString::LeftInline(int32 Count, EAllowShrinking)
{
	if (Count < Len())
	{
		Data.resize((std::size_t)(Count < 0 ? 0 : Count));
	}
}

void FString::LeftChopInline(int32 Count, EAllowShrinking)
{
	if (Count > 0)
	{
		LeftInline(Len() - Count);
	}
}

void FString::RightChopInline(int32 Count, EAllowShrinking)
{
	if (Count > 0)
	{
		Data.erase(0, (std::size_t)Count);
	}
}

void FString::MidInline(int32 Start, int32 Count, EAllowShrinking)
{
	*this = Mid(Start, Count);
}

int32 FString::Find(FStringView Sub, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir, int32 StartPosition) const
{
	if (SearchDir == ESearchDir::FromStart)
	{
		return UE::String::FindFirst(**this, Len(), Sub.GetData(), Sub.Len(), SearchCase, StartPosition);
	}
	// From the end the match lies before the start position.
	const int32 End = StartPosition == INDEX_NONE || StartPosition > Len() ? Len() : StartPosition;
	return UE::String::FindLast(**this, Len(), Sub.GetData(), Sub.Len(), SearchCase, End - Sub.Len());
}

// On a mismatch only the last star gets another try: an earlier one that takes more leaves no more to a later one.
bool FString::MatchesWildcard(FStringView Wildcard, ESearchCase::Type SearchCase) const
{
	// Greedy, going back to the last star on a mismatch.
	int32 Text = 0;
	int32 Pattern = 0;
	int32 StarPattern = INDEX_NONE;
	int32 StarText = 0;
	const auto Same = [SearchCase](TCHAR A, TCHAR B)
	{ return A == B || (SearchCase == ESearchCase::IgnoreCase && FChar::ToLower(A) == FChar::ToLower(B)); };
	while (Text < Len())
	{
		if (Pattern < Wildcard.Len() && Wildcard[Pattern] == '*')
		{
			StarPattern = Pattern++;
			StarText = Text;
		}
		else if (Pattern < Wildcard.Len() && (Wildcard[Pattern] == '?' || Same(Wildcard[Pattern], (*this)[Text])))
		{
			++Pattern;
			++Text;
		}
		else if (StarPattern != INDEX_NONE)
		{
			Pattern = StarPattern + 1;
			Text = ++StarText;
		}
		else
		{
			return false;
		}
	}
	while (Pattern < Wildcard.Len() && Wildcard[Pattern] == '*')
	{
		++Pattern;
	}
	return Pattern == Wildcard.Len();
}

bool FString::RemoveFromStart(FStringView Prefix, ESearchCase::Type SearchCase)
{
	if (Prefix.IsEmpty() || !StartsWith(Prefix, SearchCase))
	{
		return false;
	}
	RightChopInline(Prefix.Len());
	return true;
}

FString FString::Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase) const
{
	FString Result(*this);
	Result.ReplaceInline(From, To, SearchCase);
	return Result;
}

// Put together anew beside the old text: moving the rest at each hit would cost the square of the length.
int32 FString::ReplaceInline(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase)
{
	const FStringView Old(From);
	const FStringView New(To);
	int32 Count = 0;
	int32 Copied = 0;
	FString Result;
	while (!Old.IsEmpty())
	{
		const int32 Found = UE::String::FindFirst(**this, Len(), Old.GetData(), Old.Len(), SearchCase, Copied);
		if (Found == INDEX_NONE)
		{
			break;
		}
		Result.AppendChars(**this + Copied, Found - Copied);
		Result.Append(New);
		Copied = Found + Old.Len();
		++Count;
	}
	if (Count > 0)
	{
		Result.AppendChars(**this + Copied, Len() - Copied);
		*this = MoveTemp(Result);
	}
	return Count;
}

void FString::ReplaceCharInline(TCHAR From, TCHAR To, ESearchCase::Type SearchCase)
{
	for (TCHAR& Each : Data)
	{
		if (Each == From || (SearchCase == ESearchCase::IgnoreCase && FChar::ToLower(Each) == FChar::ToLower(From)))
		{
			Each = To;
		}
	}
}

void FString::ReplaceCharWithEscapedCharInline(const TArray<TCHAR>* Chars)
{
	FString Result;
	Result.Reserve(Len());
	for (const TCHAR Each : Data)
	{
		TCHAR Letter = 0;
		for (const FEscape& Escape : Escapes)
		{
			if (Escape.Char == Each && IsListed(Chars, Each))
			{
				Letter = Escape.Letter;
			}
		}
		if (Letter)
		{
			Result.AppendChar(TEXT('\\'));
		}
		Result.AppendChar(Letter ? Letter : Each);
	}
	*this = MoveTemp(Result);
}

FString FString::ReplaceCharWithEscapedChar(const TArray<TCHAR>* Chars) const
{
	FString Result(*this);
	Result.ReplaceCharWithEscapedCharInline(Chars);
	return Result;
}

void FString::TrimStartInline()
{
	RightChopInline(Len() - FStringView(*this).TrimStart().Len());
}

void FString::TrimEndInline()
{
	LeftInline(FStringView(*this).TrimEnd().Len());
}

void FString::TrimCharInline(TCHAR Char, bool* bCharRemoved)
{
	bool bRemoved = false;
	if (!IsEmpty() && Data.front() == Char)
	{
		Data.erase(0, 1);
		bRemoved = true;
	}
	if (!IsEmpty() && Data.back() == Char)
	{
		Data.pop_back();
		bRemoved = true;
	}
	if (bCharRemoved)
	{
		*bCharRemoved = bRemoved;
	}
}

FString FString::TrimChar(TCHAR Char, bool* bCharRemoved) const
{
	FString Result(*this);
	Result.TrimCharInline(Char, bCharRemoved);
	return Result;
}

void FString::ToLowerInline()
{
	for (TCHAR& Each : Data)
	{
		Each = FChar::ToLower(Each);
	}
}

void FString::ToUpperInline()
{
	for (TCHAR& Each : Data)
	{
		Each = FChar::ToUpper(Each);
	}
}

FString FString::ToLower() const
{
	FString Result(*this);
	Result.ToLowerInline();
	return Result;
}

FString FString::ToUpper() const
{
	FString Result(*this);
	Result.ToUpperInline();
	return Result;
}

bool FString::Split(
	FStringView Separator, FString* LeftPart, FString* RightPart, ESearchCase::Type SearchCase, ESearchDir::Type SearchDir) const
{
	const int32 Found = Separator.IsEmpty() ? INDEX_NONE : Find(Separator, SearchCase, SearchDir);
	if (Found == INDEX_NONE)
	{
		return false;
	}
	FString Before = Left(Found);
	FString After = RightChop(Found + Separator.Len());
	if (LeftPart)
	{
		*LeftPart = MoveTemp(Before);
	}
	if (RightPart)
	{
		*RightPart = MoveTemp(After);
	}
	return true;
}

int32 FString::ParseIntoArray(TArray<FString>& OutArray, const TCHAR* Delimiter, bool bCullEmpty) const
{
	return ParseIntoArray(OutArray, &Delimiter, 1, bCullEmpty);
}

// At each place the first delimiter of the list that fits ends a part, so "\r\n" has to stand before "\r".
int32 FString::ParseIntoArray(TArray<FString>& OutArray, const TCHAR* const* Delimiters, int32 NumDelimiters, bool bCullEmpty) const
{
	TArray<FStringView> Views;
	for (int32 Index = 0; Index < NumDelimiters; ++Index)
	{
		Views.Emplace(Delimiters[Index]);
	}
	return CutIntoPieces(*this, OutArray, bCullEmpty,
		[&Views](FStringView Text, int32 Index)
		{
			for (const FStringView& Delimiter : Views)
			{
				if (!Delimiter.IsEmpty() && Text[Index] == Delimiter[0] &&
					Text.RightChop(Index).StartsWith(Delimiter, ESearchCase::CaseSensitive))
				{
					return Delimiter.Len();
				}
			}
			return 0;
		});
}

int32 FString::ParseIntoArrayLines(TArray<FString>& OutArray, bool bCullEmpty) const
{
	return CutIntoPieces(*this, OutArray, bCullEmpty, &LineEndLength);
}

FString FString::FromInt(int64 Number)
{
	return Printf(TEXT("%lld"), Number);
}

FString FString::ChrN(int32 Count, TCHAR Char)
{
	FString Result;
	if (Count > 0)
	{
		Result.Data.assign((std::size_t)Count, Char);
	}
	return Result;
}

FString LexToString(int8 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(int16 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(int32 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(int64 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(uint8 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(uint16 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(uint32 Value)
{
	return FString::FromInt(Value);
}
FString LexToString(uint64 Value)
{
	return FString::Printf(TEXT("%llu"), Value);
}
FString LexToString(float Value)
{
	return FString::Printf(TEXT("%f"), Value);
}
FString LexToString(double Value)
{
	return FString::Printf(TEXT("%f"), Value);
}
FString LexToString(bool bValue)
{
	return bValue ? TEXT("true") : TEXT("false");
}
