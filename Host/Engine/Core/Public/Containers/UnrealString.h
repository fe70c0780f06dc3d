#pragma once

#include "Containers/Array.h"
#include "Containers/ContainersFwd.h"
#include "Containers/StringView.h"
#include "Misc/AssertionMacros.h"
#include "Misc/CString.h"
#include "Misc/StringFormat.h"

#include <string>

namespace UE::String
{
	template <typename T>
	concept CChar = std::is_same_v<T, TCHAR> || std::is_same_v<T, char>;
}

/**
 * Text in UTF-16 units. Lengths and positions count units. The operators ==, !=, < ignore case; Equals and Compare respect it.
 * Searching ignores case unless told otherwise; single characters are compared exactly. May hold null units.
 */
class CORE_API FString
{
public:
	using ElementType = TCHAR;

	FString() = default;
	FString(const FString&) = default;
	FString(FString&& Other) noexcept
		: Data(static_cast<std::u16string&&>(Other.Data))
	{
		Other.Data.clear();
	}
	FString(const TCHAR* String)
		: Data(String ? String : TEXT(""))
	{
	}
	/** UTF-8. */
	explicit FString(const char* String);
	explicit FString(FStringView View)
		: Data(View.GetData() ? View.GetData() : TEXT(""), (std::size_t)View.Len())
	{
	}
	FString(int32 Len, const TCHAR* String)
		: Data(String, (std::size_t)Len)
	{
	}
	FString& operator=(const FString&) = default;
	FString& operator=(FString&& Other) noexcept
	{
		Data.swap(Other.Data);
		if (this != &Other)
		{
			Other.Data.clear();
		}
		return *this;
	}
	FString& operator=(const TCHAR* String)
	{
		Data = String ? String : TEXT("");
		return *this;
	}
	FString& operator=(FStringView View)
	{
		Data.assign(View.GetData() ? View.GetData() : TEXT(""), (std::size_t)View.Len());
		return *this;
	}
	static FString ConstructFromPtrSize(const TCHAR* Pointer, int32 Size) { return FString(FStringView(Pointer, Size)); }

	/** The text, ended by a null unit; never null. */
	const TCHAR* operator*() const { return Data.c_str(); }
	const TCHAR* GetData() const { return Data.c_str(); }
	int32 Len() const { return (int32)Data.size(); }
	int32 Num() const { return Len(); }
	bool IsEmpty() const { return Data.empty(); }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Len(); }
	TCHAR& operator[](int32 Index)
	{
		check(Index >= 0 && Index <= Len());
		return Data[(std::size_t)Index];
	}
	const TCHAR& operator[](int32 Index) const
	{
		check(Index >= 0 && Index <= Len());
		return Data[(std::size_t)Index];
	}
	TCHAR* begin() { return Data.data(); }
	TCHAR* end() { return Data.data() + Data.size(); }
	const TCHAR* begin() const { return Data.data(); }
	const TCHAR* end() const { return Data.data() + Data.size(); }

	void Empty(int32 Slack = 0)
	{
		std::u16string().swap(Data);
		Reserve(Slack);
	}
	/** Empties and keeps the memory. */
	void Reset(int32 NewReservedSize = 0)
	{
		Data.clear();
		Reserve(NewReservedSize);
	}
	void Reserve(int32 Count)
	{
		if (Count > 0)
		{
			Data.reserve((std::size_t)Count);
		}
	}
	void Shrink() { Data.shrink_to_fit(); }

	// Appending.
	FString& AppendChar(TCHAR Char)
	{
		Data.push_back(Char);
		return *this;
	}
	FString& AppendChars(const TCHAR* String, int32 Count)
	{
		Data.append(String, (std::size_t)Count);
		return *this;
	}
	FString& Append(FStringView Text) { return AppendChars(Text.GetData() ? Text.GetData() : TEXT(""), Text.Len()); }
	FString& Append(const TCHAR* Text) { return Append(FStringView(Text)); }
	FString& Append(const FString& Text)
	{
		Data.append(Text.Data);
		return *this;
	}
	FString& Append(const TCHAR* Text, int32 Count) { return AppendChars(Text, Count); }
	void AppendInt(int32 Number);
	FString& operator+=(const FString& Other) { return Append(Other); }
	FString& operator+=(const TCHAR* Other) { return Append(Other); }
	FString& operator+=(FStringView Other) { return Append(Other); }
	template <UE::String::CChar CharType>
	FString& operator+=(CharType Char)
	{
		return AppendChar((TCHAR)Char);
	}
	void InsertAt(int32 Index, TCHAR Char);
	void InsertAt(int32 Index, const FString& Text);
	void RemoveAt(int32 Index, int32 Count = 1, EAllowShrinking AllowShrinking = EAllowShrinking::Default);
	/** Joins two parts of a path with exactly one slash. */
	void PathAppend(const TCHAR* Text, int32 TextLength);
	FString& operator/=(FStringView Other)
	{
		PathAppend(Other.GetData(), Other.Len());
		return *this;
	}

	// Slices clamp.
	FString Left(int32 Count) const& { return FString(FStringView(*this).Left(Count)); }
	FString LeftChop(int32 Count) const& { return FString(FStringView(*this).LeftChop(Count)); }
	FString Right(int32 Count) const& { return FString(FStringView(*this).Right(Count)); }
	FString RightChop(int32 Count) const& { return FString(FStringView(*this).RightChop(Count)); }
	FString Mid(int32 Start, int32 Count) const&;
	FString Mid(int32 Start) const& { return Mid(Start, 0x7fffffff); }
	void LeftInline(int32 Count, EAllowShrinking AllowShrinking = EAllowShrinking::Default);
	void LeftChopInline(int32 Count, EAllowShrinking AllowShrinking = EAllowShrinking::Default);
	void RightChopInline(int32 Count, EAllowShrinking AllowShrinking = EAllowShrinking::Default);
	void MidInline(int32 Start, int32 Count = 0x7fffffff, EAllowShrinking AllowShrinking = EAllowShrinking::Default);

	// Comparing.
	bool Equals(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const
	{
		return FStringView(*this).Equals(Other, SearchCase);
	}
	int32 Compare(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const
	{
		return FStringView(*this).Compare(Other, SearchCase);
	}

	// Searching. INDEX_NONE when not found.
	int32 Find(FStringView Sub, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase, ESearchDir::Type SearchDir = ESearchDir::FromStart,
		int32 StartPosition = INDEX_NONE) const;
	int32 Find(const TCHAR* Sub, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase, ESearchDir::Type SearchDir = ESearchDir::FromStart,
		int32 StartPosition = INDEX_NONE) const
	{
		return Find(FStringView(Sub), SearchCase, SearchDir, StartPosition);
	}
	int32 Find(const FString& Sub, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart, int32 StartPosition = INDEX_NONE) const
	{
		return Find(FStringView(Sub), SearchCase, SearchDir, StartPosition);
	}
	bool Contains(
		FStringView Sub, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase, ESearchDir::Type SearchDir = ESearchDir::FromStart) const
	{
		return Find(Sub, SearchCase, SearchDir) != INDEX_NONE;
	}
	bool FindChar(TCHAR Char, int32& OutIndex) const { return FStringView(*this).FindChar(Char, OutIndex); }
	bool FindLastChar(TCHAR Char, int32& OutIndex) const { return FStringView(*this).FindLastChar(Char, OutIndex); }
	template <typename Predicate>
	int32 FindLastCharByPredicate(Predicate Pred, int32 Count) const
	{
		for (int32 Index = (Count < Len() ? Count : Len()) - 1; Index >= 0; --Index)
		{
			if (Pred(Data[(std::size_t)Index]))
			{
				return Index;
			}
		}
		return INDEX_NONE;
	}
	template <typename Predicate>
	int32 FindLastCharByPredicate(Predicate Pred) const
	{
		return FindLastCharByPredicate(Pred, Len());
	}
	bool StartsWith(FStringView Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return FStringView(*this).StartsWith(Prefix, SearchCase);
	}
	bool EndsWith(FStringView Suffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return FStringView(*this).EndsWith(Suffix, SearchCase);
	}
	/** * stands for any run, ? for one unit. */
	bool MatchesWildcard(FStringView Wildcard, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	bool IsNumeric() const { return !IsEmpty() && FCString::IsNumeric(**this); }
	bool ToBool() const { return FCString::ToBool(**this); }

	// Changing.
	bool RemoveFromStart(FStringView Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase);
	UE_NODISCARD FString Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	/** How many places were replaced. */
	int32 ReplaceInline(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase);
	void ReplaceCharInline(TCHAR From, TCHAR To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase);
	/** Line feed, carriage return, tab, quotes and backslash become two characters each; or only those listed. */
	void ReplaceCharWithEscapedCharInline(const TArray<TCHAR>* Chars = nullptr);
	UE_NODISCARD FString ReplaceCharWithEscapedChar(const TArray<TCHAR>* Chars = nullptr) const;
	void TrimStartInline();
	void TrimEndInline();
	UE_NODISCARD FString TrimStart() const { return FString(FStringView(*this).TrimStart()); }
	UE_NODISCARD FString TrimEnd() const { return FString(FStringView(*this).TrimEnd()); }
	UE_NODISCARD FString TrimStartAndEnd() const { return FString(FStringView(*this).TrimStartAndEnd()); }
	/** At most one Char at each end. */
	void TrimCharInline(TCHAR Char, bool* bCharRemoved = nullptr);
	UE_NODISCARD FString TrimChar(TCHAR Char, bool* bCharRemoved = nullptr) const;
	UE_NODISCARD FString TrimQuotes(bool* bQuotesRemoved = nullptr) const { return TrimChar(TEXT('"'), bQuotesRemoved); }
	void ToLowerInline();
	void ToUpperInline();
	UE_NODISCARD FString ToLower() const;
	UE_NODISCARD FString ToUpper() const;

	// Taking apart. Both outputs may be the string itself; neither is touched when there is no separator.
	bool Split(FStringView Separator, FString* LeftPart, FString* RightPart, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart) const;
	/** Pieces between delimiters, which are matched exactly. Returns their number. */
	int32 ParseIntoArray(TArray<FString>& OutArray, const TCHAR* Delimiter, bool bCullEmpty = true) const;
	int32 ParseIntoArray(TArray<FString>& OutArray, const TCHAR* const* Delimiters, int32 NumDelimiters, bool bCullEmpty = true) const;
	/** Splits at CR LF, LF and CR. */
	int32 ParseIntoArrayLines(TArray<FString>& OutArray, bool bCullEmpty = true) const;

	// Making.
	template <typename... ArgTypes>
	static FString Printf(UE::StringFormat::TCheckedFormat<std::type_identity_t<ArgTypes>...> Format, ArgTypes... Args)
	{
		const UE::StringFormat::FArg Packed[] = { UE::StringFormat::MakeArg(Args)..., UE::StringFormat::FArg() };
		FString Result;
		UE::StringFormat::Append(Result, Format.Text, Packed, (int32)sizeof...(ArgTypes));
		return Result;
	}
	static FString FromInt(int64 Number);
	static FString Chr(TCHAR Char) { return FString(FStringView(&Char, 1)); }
	static FString ChrN(int32 Count, TCHAR Char);
	template <typename RangeType>
	static FString Join(const RangeType& Range, const TCHAR* Separator)
	{
		FString Result;
		bool bFirst = true;
		for (const auto& Element : Range)
		{
			if (!bFirst)
			{
				Result += Separator;
			}
			bFirst = false;
			Result += Element;
		}
		return Result;
	}
	template <typename RangeType, typename ProjectionType>
	static FString JoinBy(const RangeType& Range, const TCHAR* Separator, ProjectionType Projection)
	{
		FString Result;
		bool bFirst = true;
		for (const auto& Element : Range)
		{
			if (!bFirst)
			{
				Result += Separator;
			}
			bFirst = false;
			Result += Projection(Element);
		}
		return Result;
	}

	friend bool operator==(const FString& A, const FString& B) { return UE::String::EqualsIgnoreCase(*A, A.Len(), *B, B.Len()); }
	friend bool operator==(const FString& A, const TCHAR* B) { return FStringView(A) == FStringView(B); }
	friend bool operator<(const FString& A, const FString& B) { return A.Compare(B, ESearchCase::IgnoreCase) < 0; }
	friend bool operator<=(const FString& A, const FString& B) { return A.Compare(B, ESearchCase::IgnoreCase) <= 0; }
	friend bool operator>(const FString& A, const FString& B) { return A.Compare(B, ESearchCase::IgnoreCase) > 0; }
	friend bool operator>=(const FString& A, const FString& B) { return A.Compare(B, ESearchCase::IgnoreCase) >= 0; }
	friend uint32 GetTypeHash(const FString& String) { return UE::String::HashIgnoreCase(*String, String.Len()); }

	friend FString operator+(const FString& A, const FString& B) { return Concat(A, B); }
	friend FString operator+(FString&& A, const FString& B) { return static_cast<FString&&>(A.Append(B)); }
	friend FString operator+(const FString& A, const TCHAR* B) { return Concat(A, B); }
	friend FString operator+(FString&& A, const TCHAR* B) { return static_cast<FString&&>(A.Append(B)); }
	friend FString operator+(const TCHAR* A, const FString& B) { return Concat(A, B); }
	friend FString operator+(const FString& A, FStringView B) { return Concat(A, B); }
	friend FString operator+(FString&& A, FStringView B) { return static_cast<FString&&>(A.Append(B)); }
	friend FString operator+(FStringView A, const FString& B) { return Concat(A, B); }
	template <UE::String::CChar CharType>
	friend FString operator+(const FString& A, CharType B)
	{
		const TCHAR Char = (TCHAR)B;
		return Concat(A, FStringView(&Char, 1));
	}
	template <UE::String::CChar CharType>
	friend FString operator+(FString&& A, CharType B)
	{
		return static_cast<FString&&>(A.AppendChar((TCHAR)B));
	}
	template <UE::String::CChar CharType>
	friend FString operator+(CharType A, const FString& B)
	{
		const TCHAR Char = (TCHAR)A;
		return Concat(FStringView(&Char, 1), B);
	}
	friend FString operator/(const FString& A, const FString& B) { return FString(A) /= B; }
	friend FString operator/(const FString& A, const TCHAR* B) { return FString(A) /= FStringView(B); }
	friend FString operator/(const TCHAR* A, const FString& B) { return FString(A) /= B; }
	friend FString operator/(const FString& A, FStringView B) { return FString(A) /= B; }

private:
	static FString Concat(FStringView A, FStringView B);
	std::u16string Data;
};

// The end unit is no element.
inline int32 GetNum(const FString& String)
{
	return String.Len();
}

CORE_API FString LexToString(int8 Value);
CORE_API FString LexToString(int16 Value);
CORE_API FString LexToString(int32 Value);
CORE_API FString LexToString(int64 Value);
CORE_API FString LexToString(uint8 Value);
CORE_API FString LexToString(uint16 Value);
CORE_API FString LexToString(uint32 Value);
CORE_API FString LexToString(uint64 Value);
CORE_API FString LexToString(float Value);
CORE_API FString LexToString(double Value);
CORE_API FString LexToString(bool bValue);
inline FString LexToString(const TCHAR* Value)
{
	return FString(Value);
}
inline FString LexToString(const FString& Value)
{
	return Value;
}
inline FString LexToString(FString&& Value)
{
	return static_cast<FString&&>(Value);
}
