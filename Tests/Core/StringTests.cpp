#include "Support/Base/Printers.h"

TEST(StringCase, OperatorsIgnoreItAndNamedComparisonsDoNot)
{
	const FString Upper(TEXT("ÄPFEL Straße Δ"));
	const FString Lower(TEXT("äpfel straße δ"));
	EXPECT_TRUE(Upper == Lower);
	EXPECT_TRUE(Upper == TEXT("äpfel Straße δ"));
	EXPECT_FALSE(Upper < Lower || Lower < Upper);
	EXPECT_FALSE(Upper.Equals(Lower));
	EXPECT_TRUE(Upper.Equals(Lower, ESearchCase::IgnoreCase));
	EXPECT_NE(Upper.Compare(Lower), 0);
	EXPECT_EQ(GetTypeHash(Upper), GetTypeHash(Lower));
	EXPECT_EQ(Utf8(Upper.ToLower()), "äpfel straße δ");
	EXPECT_FALSE(FString(TEXT("ß")) == TEXT("ss")) << "one unit folds to one unit";
}

TEST(StringCase, EqualTextsHashAlikeOverTheWholePlane)
{
	for (uint32 Unit = 1; Unit < 0x10000; ++Unit)
	{
		const FString Each = FString::Chr((TCHAR)Unit);
		const FString Lower = Each.ToLower();
		ASSERT_TRUE(Each == Lower) << Unit;
		ASSERT_EQ(GetTypeHash(Each), GetTypeHash(Lower)) << Unit;
		ASSERT_EQ(Utf8(Lower.ToLower()), Utf8(Lower)) << Unit;
	}
}

TEST(StringSlices, Clamp)
{
	const FString Text(TEXT("abcde"));
	const std::tuple<const char*, FString, const char*> Cases[] = {
		{ "left", Text.Left(2), "ab" },
		{ "left beyond", Text.Left(9), "abcde" },
		{ "left negative", Text.Left(-1), "" },
		{ "left chop", Text.LeftChop(2), "abc" },
		{ "right", Text.Right(2), "de" },
		{ "right chop", Text.RightChop(2), "cde" },
		{ "right chop beyond", Text.RightChop(9), "" },
		{ "mid", Text.Mid(1, 3), "bcd" },
		{ "mid to the end", Text.Mid(3), "de" },
		{ "mid beyond", Text.Mid(7, 3), "" },
		{ "mid before", Text.Mid(-2, 3), "a" },
		{ "mid long before", Text.Mid(MIN_int32, 3), "" },
		{ "mid of nothing from long before", Text.Mid(MIN_int32, MIN_int32), "" },
		{ "mid to the end from long before", Text.Mid(MIN_int32), "abcde" },
		{ "mid huge count", Text.Mid(4, MAX_int32), "e" },
	};
	for (const auto& [Why, Result, Expected] : Cases)
	{
		EXPECT_EQ(Utf8(Result), Expected) << Why;
	}
	FString Inline(Text);
	Inline.MidInline(1, 3);
	Inline.LeftChopInline(1);
	Inline.RightChopInline(1);
	EXPECT_EQ(Utf8(Inline), "c");
}
