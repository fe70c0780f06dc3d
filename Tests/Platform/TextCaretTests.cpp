#include "Platform/TextFixture.h"

using TextCaret = FTextTest;

TEST_F(TextCaret, StepsOverWholeGraphemes)
{
	const std::tuple<const char*, const TCHAR*, const char*> Cases[] = {
		{ "letters", TEXT("abc"), "0 1 2 3" },
		{ "a surrogate pair", TEXT("a\U0001F600b"), "0 1 3 4" },
		{ "a combining mark", TEXT("e\u0301x"), "0 2 3" },
		{ "a heap of marks", TEXT("e\u0301\u0302\u0303\u0304x"), "0 5 6" },
		{ "a family of three", TEXT("\U0001F468\u200D\U0001F469\u200D\U0001F467!"), "0 8 9" },
		{ "flags are pairs", TEXT("\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7"), "0 4 8" },
		{ "a skin tone", TEXT("\U0001F44D\U0001F3FD\U0001F44D"), "0 4 6" },
		{ "a keycap", TEXT("1\uFE0F\u20E3 2"), "0 3 4 5" },
		{ "both units of a line break", TEXT("a\r\nb\n\rc"), "0 1 3 4 5 6 7" },
		{ "a jamo syllable", TEXT("\u1112\u1161\u11AB\uAC00"), "0 3 4" },
		{ "Devanagari with a vowel sign", TEXT("\u0915\u093F\u0928"), "0 2 3" },
		{ "lone surrogates are one each", TEXT("a\xD83D") TEXT("b\xDE00") TEXT("c"), "0 1 2 3 4 5" },
		{ "control characters too", TEXT("a\x01\x1B\u0085") TEXT("b"), "0 1 2 3 4 5" },
		{ "Hebrew", TEXT("\u05D0\u05D1"), "0 1 2" },
		{ "a tab is one step", TEXT("\ta\U0001F600\t"), "0 1 2 4 5" },
	};
	for (const auto& [Why, Input, Expected] : Cases)
	{
		SCOPED_TRACE(Why);
		const FStringView Text(Input);
		const TSharedRef<FTextParagraph> Paragraph = Make(Text);
		EXPECT_EQ(Steps(*Paragraph, Text.Len()), Expected);
		EXPECT_EQ(StepsBack(*Paragraph, Text.Len()), Expected);
	}
}

TEST_F(TextCaret, ANullIsACharacterLikeAnyOther)
{
	const TCHAR Text[] = { TEXT('a'), 0, TEXT('b') };
	const TSharedRef<FTextParagraph> Paragraph = Make(FStringView(Text, 3));
	EXPECT_EQ(Steps(*Paragraph, 3), "0 1 2 3");
	EXPECT_GT(Paragraph->GetCaretX(0, 2), Paragraph->GetCaretX(0, 1)) << "its replacement sign has a width";
}

TEST_F(TextCaret, PositionsAndIndicesAreInverse)
{
	// clang-format off
	const TCHAR* const Texts[] = {
		TEXT("plain words, here"), TEXT("\tindented  twice "), TEXT("e\u0301\U0001F600 mixed"), TEXT("abc \u05E9\u05DC\u05D5\u05DD def"),
		TEXT("\u0627\u0644\u0633\u0644\u0627\u0645"), TEXT("\u4E2D\u6587abc"), TEXT(""),
	};
	// clang-format on
	for (const TCHAR* Raw : Texts)
	{
		const FStringView Text(Raw);
		SCOPED_TRACE(Utf8(Text));
		const TSharedRef<FTextParagraph> Paragraph = Make(Text, Body());
		for (int32 Index = 0; Index <= Text.Len(); Index = Index < Text.Len() ? Paragraph->GetNextGrapheme(Index) : Index + 1)
		{
			const float X = Paragraph->GetCaretX(0, Index);
			const int32 Found = Paragraph->GetIndexAt(0, X);
			// At the border of two directions two indices share a place.
			EXPECT_EQ(Paragraph->GetCaretX(0, Found), X) << Index;
		}
	}
}

TEST_F(TextCaret, PlainPositionsCountLetters)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("ab  cd\te"));
	EXPECT_EQ(Paragraph->GetCaretX(0, 0), 0.0f);
	EXPECT_EQ(Paragraph->GetCaretX(0, 1), 1 * Letter());
	EXPECT_EQ(Paragraph->GetCaretX(0, 3), 3 * Letter()) << "between two blanks";
	EXPECT_EQ(Paragraph->GetCaretX(0, 6), 6 * Letter());
	EXPECT_EQ(Paragraph->GetCaretX(0, 7), 8 * Letter()) << "behind the tab";
	EXPECT_EQ(Paragraph->GetCaretX(0, 8), 9 * Letter());
	EXPECT_EQ(Paragraph->GetCaretX(0, 99), 9 * Letter()) << "clamped";
	EXPECT_EQ(Paragraph->GetCaretX(0, -1), 0.0f);
	EXPECT_EQ(Paragraph->GetIndexAt(0, -100.0f), 0);
	EXPECT_EQ(Paragraph->GetIndexAt(0, 0.4f * Letter()), 0);
	EXPECT_EQ(Paragraph->GetIndexAt(0, 0.6f * Letter()), 1);
	EXPECT_EQ(Paragraph->GetIndexAt(0, 2.6f * Letter()), 3) << "nearest blank";
	EXPECT_EQ(Paragraph->GetIndexAt(0, 1000.0f), 8);
}

TEST_F(TextCaret, InsideAClusterItSnapsToItsStart)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("a\U0001F600b"));
	EXPECT_EQ(Paragraph->GetCaretX(0, 2), Paragraph->GetCaretX(0, 1));
}

TEST_F(TextCaret, AnIndexAtAWrapBelongsToTheNextLine)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("one two\nthree"));
	Paragraph->Wrap(4 * Letter());
	ASSERT_EQ(Paragraph->GetLineCount(), 4);
	EXPECT_EQ(Paragraph->GetLineOfIndex(3), 0);
	EXPECT_EQ(Paragraph->GetLineOfIndex(4), 1);
	EXPECT_EQ(Paragraph->GetLineOfIndex(7), 1) << "before the line break";
	EXPECT_EQ(Paragraph->GetLineOfIndex(8), 2);
	EXPECT_EQ(Paragraph->GetLineOfIndex(1000), 3);
	EXPECT_EQ(Paragraph->GetLineOfIndex(-1), 0);
	EXPECT_EQ(Paragraph->GetIndexAt(0, 1000.0f), 3) << "a click behind a wrapped line stays on it";
	EXPECT_EQ(Paragraph->GetIndexAt(1, 1000.0f), 7) << "and at a line break it may stand at the end";
	EXPECT_EQ(Paragraph->GetIndexAt(2, 1000.0f), 11) << "a broken word has no blank to stand before";
}

TEST_F(TextCaret, SelectionsInOneDirectionAreOneSpan)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("one two\nthree"));
	TArray<FParagraphSpan> Spans;
	Paragraph->GetSpans(0, 2, 100, Spans);
	ASSERT_EQ(Spans.Num(), 1);
	EXPECT_EQ(Spans[0].Left, 2 * Letter());
	EXPECT_EQ(Spans[0].Right, 7 * Letter());
	Paragraph->GetSpans(0, 5, 5, Spans);
	Paragraph->GetSpans(0, 9, 12, Spans);
	Paragraph->GetSpans(1, 0, 4, Spans);
	EXPECT_EQ(Spans.Num(), 1) << "nothing on these lines";
}

TEST_F(TextCaret, MixedDirectionsGiveSeveralSpans)
{
	// Shown as "ab" and the three Hebrew letters from right to left.
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("ab\u05D0\u05D1\u05D2"));
	const float Width = Paragraph->GetSize().X;
	const float Hebrew = Paragraph->GetCaretX(0, 2);
	EXPECT_EQ(Hebrew, Width) << "the caret before the first Hebrew letter stands at the right";
	EXPECT_LT(Paragraph->GetCaretX(0, 4), Paragraph->GetCaretX(0, 3));
	TArray<FParagraphSpan> Spans;
	Paragraph->GetSpans(0, 1, 3, Spans);
	ASSERT_EQ(Spans.Num(), 2) << "b, and aleph at the far right";
	EXPECT_EQ(Spans[0].Left, Letter());
	EXPECT_EQ(Spans[0].Right, 2 * Letter());
	EXPECT_EQ(Spans[1].Right, Width);
	EXPECT_GT(Spans[1].Left, Spans[0].Right);
	Spans.Reset();
	Paragraph->GetSpans(0, 0, 5, Spans);
	ASSERT_EQ(Spans.Num(), 1) << "neighbours are joined";
	EXPECT_EQ(Spans[0].Right, Width);
	EXPECT_EQ(Paragraph->GetIndexAt(0, Width - 1.0f), 2);
}

TEST_F(TextCaret, WordMoves)
{
	const FStringView Text = TEXT("Foo_bar  baz->qux(1)\n\u00E9t\u00E9 e\u0301te\u0301 \u4E2D\u6587\u3042");
	const TSharedRef<FTextParagraph> Paragraph = Make(Text);
	const auto Walk = [&Paragraph, &Text](bool bForward)
	{
		std::string Result;
		int32 Index = bForward ? 0 : Text.Len();
		const int32 End = Text.Len() - Index;
		while (Index != End)
		{
			Index = bForward ? Paragraph->GetNextWord(Index) : Paragraph->GetPreviousWord(Index);
			Result += std::to_string(Index) + " ";
		}
		return Result;
	};
	EXPECT_EQ(Walk(true), "9 14 18 21 25 31 33 34 ");
	EXPECT_EQ(Walk(false), "33 31 25 21 18 14 9 0 ");
}

TEST_F(TextCaret, DoubleClicksTakeWordsBlanksAndMarks)
{
	const FStringView Text = TEXT("foo_1   (b\u00E4r)\n\U0001F600\U0001F600 e\u0301x");
	// clang-format off
	const std::pair<int32, const char*> Cases[] = {
		{ 0, "foo_1" }, { 3, "foo_1" }, { 5, "foo_1" }, { 6, "   " }, { 8, "(" }, { 9, "b\u00E4r" }, { 12, "b\u00E4r" }, { 13, ")" },
		{ 14, "\U0001F600" }, { 16, "\U0001F600" }, { 19, "e\u0301x" }, { 22, "e\u0301x" },
	};
	// clang-format on
	const TSharedRef<FTextParagraph> Paragraph = Make(Text);
	for (const auto& [Index, Taken] : Cases)
	{
		int32 Begin = 0;
		int32 End = 0;
		Paragraph->GetWordAt(Index, Begin, End);
		EXPECT_EQ(Utf8(Text.Mid(Begin, End - Begin)), Taken) << Index;
	}
	int32 Begin = -1;
	int32 End = -1;
	Make(TEXT("a\n\nb"))->GetWordAt(2, Begin, End);
	EXPECT_EQ(Begin, End) << "an empty line has no word";
}
