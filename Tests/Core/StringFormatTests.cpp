#include "Support/Base/Printers.h"

#include <clocale>
#include <cstdio>

TEST(StringFormat, AgreesWithTheCLibrary)
{
	const double Doubles[] = { 0.0, -0.0, 0.05, 0.15, 0.25, 0.5, 1.5, 2.5, 0.1, 123456.789, 1e15, 1e-7, 1.0 / 3.0, 1e300, -9.995 };
	char Expected[512];
	for (const double Each : Doubles)
	{
#define EXPECT_SAME(Format) \
	std::snprintf(Expected, sizeof(Expected), Format, Each); \
	EXPECT_EQ(Utf8(FString::Printf(TEXT(Format), Each)), Expected) << Format;
		EXPECT_SAME("%f")
		EXPECT_SAME("%.0f")
		EXPECT_SAME("%.1f")
		EXPECT_SAME("%.2f")
		EXPECT_SAME("%+10.3f")
		EXPECT_SAME("%-12.1f|")
		EXPECT_SAME("%012.2f")
		EXPECT_SAME("%g")
		EXPECT_SAME("%.17g")
		EXPECT_SAME("%e")
		EXPECT_SAME("%.3G")
	}
	const int Integers[] = { 0, 1, -1, 42, -42, 2147483647, (-2147483647 - 1) };
	for (const int Each : Integers)
	{
		EXPECT_SAME("%d")
		EXPECT_SAME("%5d|%%")
		EXPECT_SAME("%-5d|")
		EXPECT_SAME("%05d")
		EXPECT_SAME("%+d")
		EXPECT_SAME("% d")
		EXPECT_SAME("%.3d")
		EXPECT_SAME("%x")
		EXPECT_SAME("%08X")
		EXPECT_SAME("%#x")
		EXPECT_SAME("%u")
		EXPECT_SAME("%o")
#undef EXPECT_SAME
	}
}

TEST(StringFormat, TextsCharactersAndWideNumbers)
{
	const FString Text(TEXT("äb"));
	EXPECT_EQ(Utf8(FString::Printf(TEXT("[%s|%5s|%-4s|%.1s]"), *Text, *Text, *Text, *Text)), "[äb|   äb|äb  |ä]");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%c%c"), TEXT('x'), TEXT('é'))), "xé");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%lld %llu %llx"), MIN_int64, MAX_uint64, MAX_uint64)),
		"-9223372036854775808 18446744073709551615 ffffffffffffffff");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%*d|%-*d|%.*f"), 4, 7, 3, 7, 1, 2.25)), "   7|7  |2.2");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%d %i"), true, (uint8)200)), "1 200");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("100%%"))), "100%");
	EXPECT_EQ(Utf8(FString::Printf(TEXT("%s"), (const TCHAR*)nullptr)), "(null)");
	const FString Long = FString::ChrN(100000, TEXT('x'));
	EXPECT_EQ(FString::Printf(TEXT("%s!"), *Long).Len(), 100001);
}

TEST(StringFormat, LiteralsAreCheckedAgainstTheirArguments)
{
	using namespace UE::StringFormat;
	const auto Fits = [](const TCHAR* Conversion, EArg Kind)
	{
		FPlaceholder Placeholder;
		ParsePlaceholder(Conversion, Placeholder);
		return Accepts(Placeholder, Kind);
	};
	EXPECT_TRUE(Fits(TEXT("d"), KindOf<int32>()));
	EXPECT_FALSE(Fits(TEXT("d"), KindOf<int64>())) << "64 bits need %lld";
	EXPECT_FALSE(Fits(TEXT("lld"), KindOf<int32>()));
	EXPECT_FALSE(Fits(TEXT("s"), KindOf<FString>())) << "pass *Text";
	EXPECT_FALSE(Fits(TEXT("s"), KindOf<const char*>()));
	EXPECT_FALSE(Fits(TEXT("f"), KindOf<int32>()));
	EXPECT_FALSE(Fits(TEXT("q"), KindOf<int32>()));
}

/** Runs a check under each locale of the machine whose rules differ from the plain one. */
class FLocaleTest : public testing::Test
{
protected:
	void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

TEST_F(FLocaleTest, NumbersAndCharactersDoNotFollowTheLocale)
{
	for (const char* Name : { "C", "C.utf8", "de_DE.UTF-8", "tr_TR.UTF-8", "de_DE", "fr_FR.UTF-8" })
	{
		if (!std::setlocale(LC_ALL, Name))
		{
			continue; // Not installed.
		}
		SCOPED_TRACE(Name);
		EXPECT_EQ(Utf8(FString::Printf(TEXT("%.2f %g"), 1234.5, 0.5)), "1234.50 0.5");
		EXPECT_EQ(FCString::Atod(TEXT("1.5")), 1.5);
		EXPECT_EQ(Utf8(FText::AsNumber(1234.5)), "1,234.5");
		EXPECT_EQ(Utf8(FString(TEXT("TITLE İ")).ToLower()), "title i");
		EXPECT_EQ(Utf8(FString(TEXT("title ı")).ToUpper()), "TITLE I");
		EXPECT_TRUE(FChar::IsAlnum(TEXT('é')) && FChar::IsAlnum(TEXT('д')) && !FChar::IsDigit(TEXT('٣')));
	}
}
