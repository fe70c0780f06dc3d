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

TEST(StringSearch, DefaultsIgnoreCaseButCharactersAreExact)
{
	const FString Text(TEXT("One two ONE"));
	EXPECT_EQ(Text.Find(TEXT("one")), 0);
	EXPECT_EQ(Text.Find(TEXT("one"), ESearchCase::IgnoreCase, ESearchDir::FromStart, 1), 8);
	EXPECT_EQ(Text.Find(TEXT("one"), ESearchCase::CaseSensitive), INDEX_NONE);
	EXPECT_EQ(Text.Find(TEXT("one"), ESearchCase::IgnoreCase, ESearchDir::FromEnd), 8);
	EXPECT_EQ(Text.Find(TEXT("one"), ESearchCase::IgnoreCase, ESearchDir::FromEnd, 10), 0);
	EXPECT_TRUE(Text.Contains(TEXT("TWO")));
	EXPECT_TRUE(Text.StartsWith(TEXT("oNE")));
	EXPECT_TRUE(Text.EndsWith(TEXT("one")));
	EXPECT_EQ(Utf8(Text.Replace(TEXT("one"), TEXT("1"))), "1 two 1");
	EXPECT_EQ(Utf8(Text.Replace(TEXT("ONE"), TEXT("1"), ESearchCase::CaseSensitive)), "One two 1");
	int32 Index = 7;
	EXPECT_FALSE(Text.FindChar(TEXT('t') - 32, Index));
	EXPECT_EQ(Index, INDEX_NONE);
	EXPECT_TRUE(Text.FindLastChar(TEXT('O'), Index));
	EXPECT_EQ(Index, 8);
	EXPECT_EQ(FString(TEXT("")).Find(TEXT("x")), INDEX_NONE);
}

TEST(StringSlices, Clamp)
{
	const FString Text(TEXT("abcde"));
	struct FCase
	{
		const char* Why;
		FString Result;
		const char* Expected;
	};
	const FCase Cases[] = {
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
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(Utf8(Case.Result), Case.Expected) << Case.Why;
	}
	FString Inline(Text);
	Inline.MidInline(1, 3);
	Inline.LeftChopInline(1);
	Inline.RightChopInline(1);
	EXPECT_EQ(Utf8(Inline), "c");
}

TEST(StringParts, ParseIntoArray)
{
	struct FCase
	{
		const char* Why;
		const TCHAR* Input;
		const TCHAR* Delimiter;
		bool bCull;
		const char* Expected;
	};
	const FCase Cases[] = {
		{ "empty pieces go", TEXT(",a,,b,"), TEXT(","), true, "\"a\", \"b\"" },
		{ "empty pieces stay", TEXT(",a,,b,"), TEXT(","), false, "\"\", \"a\", \"\", \"b\", \"\"" },
		{ "no text, no pieces", TEXT(""), TEXT(","), false, "" },
		{ "a delimiter is a whole text", TEXT("a--b-c"), TEXT("--"), true, "\"a\", \"b-c\"" },
		{ "a delimiter is exact", TEXT("1x2X3"), TEXT("x"), true, "\"1\", \"2X3\"" },
		{ "no delimiter inside", TEXT("abc"), TEXT(","), true, "\"abc\"" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		TArray<FString> Pieces{ TEXT("old") };
		const int32 Count = FString(Case.Input).ParseIntoArray(Pieces, Case.Delimiter, Case.bCull);
		EXPECT_EQ(Utf8(Pieces), Case.Expected);
		EXPECT_EQ(Count, Pieces.Num());
	}
	TArray<FString> Lines;
	FString(TEXT("a\r\nb\rc\n\nd\n")).ParseIntoArrayLines(Lines, false);
	EXPECT_EQ(Utf8(Lines), R"("a", "b", "c", "", "d", "")");
	FString(TEXT("a\r\n\r\nb\n")).ParseIntoArrayLines(Lines);
	EXPECT_EQ(Utf8(Lines), R"("a", "b")");
	Lines[0] = TEXT("x y");
	Lines[0].ParseIntoArray(Lines, TEXT(" "));
	EXPECT_EQ(Utf8(Lines), R"("x", "y")") << "the source may be an element of the result";
}

TEST(StringParts, SplitAndRemoveAndTrim)
{
	FString Text(TEXT("key=value=more"));
	FString Right;
	EXPECT_TRUE(Text.Split(TEXT("="), &Text, &Right));
	EXPECT_EQ(Utf8(Text) + "|" + Utf8(Right), "key|value=more");
	EXPECT_TRUE(Right.Split(TEXT("="), nullptr, &Right, ESearchCase::IgnoreCase, ESearchDir::FromEnd));
	EXPECT_EQ(Utf8(Right), "more");
	EXPECT_FALSE(Right.Split(TEXT("="), &Text, nullptr));
	EXPECT_EQ(Utf8(Text), "key");
	EXPECT_TRUE(Right.RemoveFromStart(TEXT("MO")));
	EXPECT_EQ(Utf8(Right), "re");
	EXPECT_EQ(Utf8(FString(TEXT("\u00a0\t a b \u3000\n")).TrimStartAndEnd()), "a b");
	EXPECT_EQ(Utf8(FString(TEXT("\"\"x\"")).TrimQuotes()), "\"x");
	EXPECT_EQ(Utf8(FString(TEXT("a\nb\t'c'\"\\")).ReplaceCharWithEscapedChar()), "a\\nb\\t\\'c\\'\\\"\\\\");
	const TArray<TCHAR> OnlyTabs{ TEXT('\t') };
	EXPECT_EQ(Utf8(FString(TEXT("\t\n")).ReplaceCharWithEscapedChar(&OnlyTabs)), "\\t\n");
}

TEST(StringMaking, PathsWildcardsAndNumbers)
{
	const FString Folder(TEXT("a"));
	EXPECT_EQ(Utf8(Folder / TEXT("b")), "a/b");
	EXPECT_EQ(Utf8(FString(TEXT("a/")) / TEXT("/b")), "a/b");
	EXPECT_EQ(Utf8(FString(TEXT("a/")) / TEXT("b") / Folder), "a/b/a");
	EXPECT_EQ(Utf8(FString() / TEXT("b")), "b");
	EXPECT_TRUE(FString(TEXT("Source/Main.CPP")).MatchesWildcard(TEXT("source/*.c?p")));
	EXPECT_FALSE(FString(TEXT("Main.cpp2")).MatchesWildcard(TEXT("*.cpp")));
	EXPECT_TRUE(FString(TEXT("")).MatchesWildcard(TEXT("**")));
	EXPECT_EQ(Utf8(FString::FromInt(MIN_int32)), "-2147483648");
	EXPECT_EQ(Utf8(FString::ChrN(3, TEXT('x'))), "xxx");
	EXPECT_EQ(Utf8(FString::Join(TArray<FString>{ TEXT("a"), TEXT("b") }, TEXT(", "))), "a, b");
	EXPECT_TRUE(FString(TEXT("-1.5")).IsNumeric());
	EXPECT_FALSE(FString(TEXT("1.5.2")).IsNumeric() || FString(TEXT("-")).IsNumeric() || FString().IsNumeric());
	EXPECT_TRUE(FString(TEXT("Yes")).ToBool() && FString(TEXT("2")).ToBool() && !FString(TEXT("no")).ToBool());
	FString Moved(TEXT("a text that is too long to be kept inside the object"));
	const FString Taken(MoveTemp(Moved));
	EXPECT_TRUE(Moved.IsEmpty());
	EXPECT_EQ(**FString(), 0);
}

TEST(CStringNumbers, ReadLikeTheCLibrary)
{
	EXPECT_EQ(FCString::Atoi(TEXT(" \t-42abc")), -42);
	EXPECT_EQ(FCString::Atoi(TEXT("99999999999")), MAX_int32);
	EXPECT_EQ(FCString::Atoi(TEXT("x")), 0);
	EXPECT_EQ(FCString::Strtoui64(TEXT("ffffffffffffffff"), nullptr, 16), MAX_uint64);
	EXPECT_EQ(FCString::Atod(TEXT("+1.5e3x")), 1500.0);
	EXPECT_EQ(FCString::Atod(TEXT("1,5")), 1.0);
	EXPECT_EQ(FCString::Atod(TEXT("-1e999")), -std::numeric_limits<double>::infinity());
	EXPECT_EQ(FCString::Atod(TEXT("1e-999")), 0.0);
	TCHAR* End = nullptr;
	const TCHAR* Text = TEXT("0x1Fg");
	EXPECT_EQ(FCString::Strtoi(Text, &End, 0), 31);
	EXPECT_EQ(End - Text, 4);
	EXPECT_LT(FCString::Stricmp(TEXT("abc"), TEXT("ABD")), 0);
}
