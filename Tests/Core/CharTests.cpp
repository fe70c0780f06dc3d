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

TEST(Encoding, Utf8OfBrokenText)
{
	const std::tuple<const char*, std::u16string, const char*> Cases[] = {
		{ "a pair", { 0xd83d, 0xdc64 }, "\xf0\x9f\x91\xa4" },
		{ "high alone", { 'a', 0xd83d, 'b' },
			"a\xef\xbf\xbd"
			"b" },
		{ "low alone", { 0xdc64 }, "\xef\xbf\xbd" },
		{ "reversed pair", { 0xdc64, 0xd83d }, "\xef\xbf\xbd\xef\xbf\xbd" },
		{ "high before a pair", { 0xd83d, 0xd83d, 0xdc64 }, "\xef\xbf\xbd\xf0\x9f\x91\xa4" },
		{ "edges of the lengths", { 0x7f, 0x80, 0x7ff, 0x800, 0xffff }, "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf" },
	};
	for (const auto& [Why, Units, Expected] : Cases)
	{
		EXPECT_EQ(Utf8(FStringView(Units.data(), (int32)Units.size())), Expected) << Why;
	}
	const TCHAR WithNull[] = { 'a', 0, 'b' };
	EXPECT_EQ(Utf8(FStringView(WithNull, 3)), std::string("a\0b", 3));
}

TEST(Encoding, TextOfBrokenUtf8)
{
	const std::tuple<const char*, const char*, std::u16string> Cases[] = {
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
	for (const auto& [Why, Bytes, Expected] : Cases)
	{
		const FUTF8ToTCHAR Converted(Bytes);
		EXPECT_EQ(std::u16string(Converted.Get(), (std::size_t)Converted.Length()), Expected) << Why;
	}
	EXPECT_STREQ(TCHAR_TO_UTF8(UTF8_TO_TCHAR("über")), "über");
}
