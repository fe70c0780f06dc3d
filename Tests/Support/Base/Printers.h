#pragma once

#include "CoreMinimal.h"
#include "Support/Base/SavedFolder.h"

#include <gtest/gtest.h>

#include <iosfwd>
#include <string>

// Texts are compared as UTF-8, never as FString or FText: those ignore letter case, or have no comparison at all.
std::string Utf8(const TCHAR* Text);
std::string Utf8(FStringView Text);
std::string Utf8(const FString& Text);
std::string Utf8(const FText& Text);
std::string Utf8(const FName& Name);

/** `"a", "b"`: a list of texts in one line. */
std::string Utf8(const TArray<FString>& Texts);

// How GoogleTest shows values when a comparison fails.
void PrintTo(const FString& Value, std::ostream* Out);
void PrintTo(const FText& Value, std::ostream* Out);
void PrintTo(const FName& Value, std::ostream* Out);
void PrintTo(const FLinearColor& Value, std::ostream* Out);
void PrintTo(const FColor& Value, std::ostream* Out);
void PrintTo(const FDateTime& Value, std::ostream* Out);
void PrintTo(const FTimespan& Value, std::ostream* Out);
void PrintTo(const FIntPoint& Value, std::ostream* Out);
void PrintTo(const FGuid& Value, std::ostream* Out);

namespace UE::Math
{
	void PrintTo(const TVector2<double>& Value, std::ostream* Out);
	void PrintTo(const TVector2<float>& Value, std::ostream* Out);
}

namespace TestPrinting
{
	void Put(std::ostream& Out, const char* Text);
	void PutPointer(std::ostream& Out, const void* Pointer);

	/** Types whose == ignores letter case, alone or inside another. */
	template <typename T>
	inline constexpr bool TIgnoresCase = false;
	template <>
	inline constexpr bool TIgnoresCase<FString> = true;
	template <>
	inline constexpr bool TIgnoresCase<FStringView> = true;
	template <>
	inline constexpr bool TIgnoresCase<FText> = true;
	template <typename T, typename A>
	inline constexpr bool TIgnoresCase<TArray<T, A>> = TIgnoresCase<T>;
	template <typename T>
	inline constexpr bool TIgnoresCase<TOptional<T>> = TIgnoresCase<T>;
	template <typename A, typename B>
	inline constexpr bool TIgnoresCase<TTuple<A, B>> = TIgnoresCase<A> || TIgnoresCase<B>;

	template <typename A, typename B>
	concept CIgnoringCase = TIgnoresCase<A> || TIgnoresCase<B>;
}

template <typename T>
void PrintTo(const TOptional<T>& Value, std::ostream* Out)
{
	if (Value.IsSet())
	{
		testing::internal::UniversalPrint(Value.GetValue(), Out);
	}
	else
	{
		TestPrinting::Put(*Out, "unset");
	}
}

template <typename T, ESPMode Mode>
void PrintTo(const TSharedPtr<T, Mode>& Value, std::ostream* Out)
{
	TestPrinting::PutPointer(*Out, Value.Get());
}

template <typename T, ESPMode Mode>
void PrintTo(const TSharedRef<T, Mode>& Value, std::ostream* Out)
{
	TestPrinting::PutPointer(*Out, &Value.Get());
}

template <typename T, typename A>
void PrintTo(const TArray<T, A>& Value, std::ostream* Out)
{
	TestPrinting::Put(*Out, "[");
	for (int32 Index = 0; Index < Value.Num(); ++Index)
	{
		TestPrinting::Put(*Out, Index > 0 ? ", " : "");
		testing::internal::UniversalPrint(Value[Index], Out);
	}
	TestPrinting::Put(*Out, "]");
}

// EXPECT_EQ and its kin on such types would pass a wrong letter case, so they do not compile. Compare Utf8 of both.
template <typename A, typename B>
requires TestPrinting::CIgnoringCase<A, B> testing::AssertionResult CmpHelperEQ(const char*, const char*, const A&, const B&)
= delete;

namespace testing::internal
{
	template <typename A, typename B>
	requires TestPrinting::CIgnoringCase<A, B> AssertionResult CmpHelperNE(const char*, const char*, const A&, const B&)
	= delete;
	template <typename A, typename B>
	requires TestPrinting::CIgnoringCase<A, B> AssertionResult CmpHelperLT(const char*, const char*, const A&, const B&)
	= delete;
	template <typename A, typename B>
	requires TestPrinting::CIgnoringCase<A, B> AssertionResult CmpHelperGT(const char*, const char*, const A&, const B&)
	= delete;
}
