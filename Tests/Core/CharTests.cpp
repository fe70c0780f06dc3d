#include "Support/Base/Printers.h"

TEST(CharClasses, Facts)
{
	struct FCase
	{
		TCHAR Char;
		bool bAlnum;
		bool bDigit;
		bool bSpace;
		bool bUpper;
		bool bLower;
	};
	const FCase Cases[] = {
		{ TEXT('a'), true, false, false, false, true },
		{ TEXT('Z'), true, false, false, true, false },
		{ TEXT('7'), true, true, false, false, false },
		{ TEXT('_'), false, false, false, false, false },
		{ TEXT('+'), false, false, false, false, false },
		{ TEXT(' '), false, false, true, false, false },
		{ TEXT('\v'), false, false, true, false, false },
		{ 0x0, false, false, false, false, false },
		{ 0x1c, false, false, false, false, false },
		{ 0x7f, false, false, false, false, false },
		{ 0x85, false, false, true, false, false },
		{ 0xa0, false, false, true, false, false },
		{ TEXT('é'), true, false, false, false, true },
		{ TEXT('Ž'), true, false, false, true, false },
		{ TEXT('ž'), true, false, false, false, true },
		{ 0x00d7, false, false, false, false, false },
		{ 0x0663, true, false, false, false, false },
		{ 0x2163, false, false, false, false, false },
		{ 0x4e2d, true, false, false, false, false },
		{ 0xac00, true, false, false, false, false },
		{ 0x2014, false, false, false, false, false },
		{ 0x200b, false, false, false, false, false },
		{ 0x180e, false, false, false, false, false },
		{ 0x202f, false, false, true, false, false },
		{ 0xd83d, false, false, false, false, false },
		{ 0xdc64, false, false, false, false, false },
		{ 0xfeff, false, false, false, false, false },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE((uint32)Case.Char);
		EXPECT_EQ(FChar::IsAlnum(Case.Char), Case.bAlnum);
		EXPECT_EQ(FChar::IsDigit(Case.Char), Case.bDigit);
		EXPECT_EQ(FChar::IsWhitespace(Case.Char), Case.bSpace);
		EXPECT_EQ(FChar::IsUpper(Case.Char), Case.bUpper);
		EXPECT_EQ(FChar::IsLower(Case.Char), Case.bLower);
	}
}

TEST(CharClasses, WhiteSpaceIsExactlyThisSet)
{
	int32 Count = 0;
	for (uint32 Unit = 0; Unit < 0x10000; ++Unit)
	{
		Count += FChar::IsWhitespace((TCHAR)Unit) ? 1 : 0;
	}
	EXPECT_EQ(Count, 5 + 1 + 2 + 1 + 11 + 2 + 1 + 1 + 1);
}

TEST(CharCase, OneToOne)
{
	struct FCase
	{
		TCHAR Upper;
		TCHAR Lower;
	};
	const FCase Pairs[] = { { TEXT('A'), TEXT('a') }, { TEXT('É'), TEXT('é') }, { TEXT('Ÿ'), TEXT('ÿ') }, { TEXT('Ж'), TEXT('ж') },
		{ TEXT('Σ'), TEXT('σ') }, { 0x0187, 0x0188 }, { 0x10a0, 0x2d00 }, { 0x1f88, 0x1f80 }, { 0xa64a, 0xa64b } };
	for (const FCase& Pair : Pairs)
	{
		EXPECT_EQ(FChar::ToLower(Pair.Upper), Pair.Lower);
		EXPECT_EQ(FChar::ToUpper(Pair.Lower), Pair.Upper);
	}
	for (const TCHAR Same : { TEXT('1'), TEXT('['), TEXT('`'), TEXT('ß'), (TCHAR)0xd83d, (TCHAR)0x4e2d })
	{
		EXPECT_EQ(FChar::ToLower(Same), Same);
		EXPECT_EQ(FChar::ToUpper(Same), Same);
	}
}

TEST(Encoding, Utf8OfBrokenText)
{
	struct FCase
	{
		const char* Why;
		std::u16string Units;
		const char* Expected;
	};
	const FCase Cases[] = {
		{ "a pair", { 0xd83d, 0xdc64 }, "\xf0\x9f\x91\xa4" },
		{ "high alone", { 'a', 0xd83d, 'b' },
			"a\xef\xbf\xbd"
			"b" },
		{ "low alone", { 0xdc64 }, "\xef\xbf\xbd" },
		{ "reversed pair", { 0xdc64, 0xd83d }, "\xef\xbf\xbd\xef\xbf\xbd" },
		{ "high before a pair", { 0xd83d, 0xd83d, 0xdc64 }, "\xef\xbf\xbd\xf0\x9f\x91\xa4" },
		{ "edges of the lengths", { 0x7f, 0x80, 0x7ff, 0x800, 0xffff }, "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf" },
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(Utf8(FStringView(Case.Units.data(), (int32)Case.Units.size())), Case.Expected) << Case.Why;
	}
	const TCHAR WithNull[] = { 'a', 0, 'b' };
	EXPECT_EQ(Utf8(FStringView(WithNull, 3)), std::string("a\0b", 3));
}

TEST(Encoding, TextOfBrokenUtf8)
{
	struct FCase
	{
		const char* Why;
		const char* Bytes;
		std::u16string Expected;
	};
	const FCase Cases[] = {
		{ "plain", "a\xc3\xa9\xe2\x82\xac", { 'a', 0xe9, 0x20ac } },
		{ "four bytes", "\xf0\x9f\x91\xa4", { 0xd83d, 0xdc64 } },
		{ "a stray byte", "a\x80z", { 'a', 0xfffd, 'z' } },
		{ "cut short, then text", "\xe2\x82z", { 0xfffd, 'z' } },
		{ "cut short at the end", "\xf0\x9f\x91", { 0xfffd } },
		{ "overlong", "\xc0\xaf", { 0xfffd, 0xfffd } },
		{ "a surrogate", "\xed\xa0\x80", { 0xfffd, 0xfffd, 0xfffd } },
		{ "too large", "\xf4\x90\x80\x80", { 0xfffd, 0xfffd, 0xfffd, 0xfffd } },
		{ "two cut short", "\xe2\x82\xe2\x82", { 0xfffd, 0xfffd } },
	};
	for (const FCase& Case : Cases)
	{
		const FUTF8ToTCHAR Converted(Case.Bytes);
		EXPECT_EQ(std::u16string(Converted.Get(), (std::size_t)Converted.Length()), Case.Expected) << Case.Why;
	}
	EXPECT_STREQ(TCHAR_TO_UTF8(UTF8_TO_TCHAR("über")), "über");
}

TEST(Views, SliceAndSearchWithoutEndingNull)
{
	const FString Text(TEXT("  Alpha Beta  "));
	const FStringView View = FStringView(Text).TrimStartAndEnd();
	EXPECT_EQ(Utf8(View.Left(5)), "Alpha");
	EXPECT_EQ(Utf8(View.RightChop(6)), "Beta");
	EXPECT_TRUE(View.Left(5) == FStringView(TEXT("ALPHA")));
	EXPECT_FALSE(View.Left(5).Equals(TEXT("ALPHA")));
	EXPECT_TRUE(View.StartsWith(TEXT("alpha")) && View.EndsWith(TEXT("BETA")));
	EXPECT_EQ(View.Find(TEXT("Beta")), 6);
	EXPECT_EQ(View.Left(8).Find(TEXT("Beta")), INDEX_NONE) << "the end of the view counts";
	EXPECT_EQ(TEXTVIEW("abc").Len(), 3);
	EXPECT_TRUE(FStringView().IsEmpty() && FStringView(nullptr).IsEmpty());
}
