#include "Platform/TextFixture.h"

#include <chrono>

using TextWrap = FTextTest;

TEST_F(TextWrap, LinesEndWhereTheyShould)
{
	struct FCase
	{
		const char* Why;
		const TCHAR* Text;
		int32 Letters; // Width of a line; 0 does not wrap.
		const char* Lines;
	};
	const FCase Cases[] = {
		{ "an empty text has one empty line", TEXT(""), 10, "[]" },
		{ "nothing is wrapped without a width", TEXT("one two three four five six"), 0, "[one two three four five six]" },
		{ "words stay whole, blanks hang", TEXT("one two three"), 7, "[one two ][three]" },
		{ "a line is filled to its last pixel", TEXT("one two three"), 13, "[one two three]" },
		{ "and not beyond", TEXT("one two three"), 12, "[one two ][three]" },
		{ "many blanks hang too", TEXT("one      two"), 4, "[one      ][two]" },
		{ "leading blanks indent", TEXT("  ab cd"), 4, "[  ab ][cd]" },
		{ "a long word breaks between letters", TEXT("abcdefghij"), 4, "[abcd][efgh][ij]" },
		{ "but begins on a line of its own", TEXT("x abcdefgh"), 4, "[x ][abcd][efgh]" },
		{ "and what follows goes on behind its rest", TEXT("abcdef gh ij"), 4, "[abcd][ef ][gh ][ij]" },
		{ "narrower than a letter still moves on", TEXT("abc"), -1, "[a][b][c]" },
		{ "hyphens allow a break behind them", TEXT("well-known thing"), 6, "[well-][known ][thing]" },
		{ "slashes of a path do", TEXT("Source/Game/Player"), 8, "[Source/][Game/][Player]" },
		{ "no break before closing marks", TEXT("one (two) three"), 9, "[one (two) ][three]" },
		{ "no-break spaces hold together", TEXT("a b\u00A0c d"), 4, "[a ][b\u00A0c ][d]" },
		{ "all three line breaks", TEXT("a\nb\r\nc\rd"), 0, "[a][b][c][d]" },
		{ "empty lines, also at the end", TEXT("\n\na\n"), 5, "[][][a][]" },
		{ "a tab goes to a stop of four", TEXT("a\tb c"), 6, "[a\tb ][c]" },
		{ "a tab hangs like a blank", TEXT("abcd\tef"), 4, "[abcd\t][ef]" },
		{ "blanks alone never wrap", TEXT("       "), 3, "[       ]" },
		{ "ideographs break anywhere, but not before their full stop", TEXT("\u4E2D\u6587\u5B57\u3002"), 6,
			"[\u4E2D\u6587][\u5B57\u3002]" },
		{ "an emoji family is one", TEXT("\U0001F468\u200D\U0001F469\u200D\U0001F467\U0001F468\u200D\U0001F469\u200D\U0001F467"), 3,
			"[\U0001F468\u200D\U0001F469\u200D\U0001F467][\U0001F468\u200D\U0001F469\u200D\U0001F467]" },
		{ "a line of emoji and words", TEXT("go \U0001F600 now"), 6, "[go \U0001F600 ][now]" },
		{ "right to left wraps in reading order", TEXT("\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD"), 6,
			"[\u05E9\u05DC\u05D5\u05DD ][\u05E2\u05D5\u05DC\u05DD]" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		const TSharedRef<FTextParagraph> Paragraph = Make(Case.Text);
		Paragraph->Wrap(Case.Letters < 0 ? 1.0f : static_cast<float>(Case.Letters) * Letter());
		EXPECT_EQ(Lines(*Paragraph, Case.Text), Case.Lines);
	}
}

TEST_F(TextWrap, NegativeAndBrokenWidthsDoNotWrap)
{
	for (const float Width : { 0.0f, -5.0f, std::numeric_limits<float>::quiet_NaN() })
	{
		const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("one two three"));
		Paragraph->Wrap(Width);
		EXPECT_EQ(Paragraph->GetLineCount(), 1);
	}
}

TEST_F(TextWrap, SizesCountLettersAndLines)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("one two   \nthree"));
	const FFontLineMetrics Metrics = Shaper().GetLineMetrics(Mono(), 1.0f);
	EXPECT_EQ(Paragraph->GetSize(), FVector2f(7 * Letter(), 2 * Metrics.LineHeight)) << "hanging blanks have no width";
	EXPECT_EQ(Paragraph->GetUnwrappedWidth(), 7 * Letter());
	Paragraph->Wrap(4 * Letter());
	EXPECT_EQ(Paragraph->GetSize(), FVector2f(4 * Letter(), 4 * Metrics.LineHeight)) << "a word of five breaks at four";
	EXPECT_EQ(Paragraph->GetUnwrappedWidth(), 7 * Letter());
	EXPECT_EQ(Paragraph->GetLine(1).Top, Metrics.LineHeight);
	EXPECT_GE(Paragraph->GetLine(0).Baseline, Metrics.Ascent);
}

TEST_F(TextWrap, ScaleAndSizeAreExactPixels)
{
	// 12 points are 16 pixels, and the font's letters are 0.6 em wide.
	EXPECT_EQ(Letter(), 10.0f);
	EXPECT_EQ(Make(TEXT("x"), Mono(), 2.0f)->GetSize().X, 19.0f);
	EXPECT_GT(Shaper().GetLineMetrics(Mono(), 2.0f).LineHeight, 1.8f * Shaper().GetLineMetrics(Mono(), 1.0f).LineHeight);
	FSlateFontInfo Spaced = Mono();
	Spaced.LetterSpacing = 125; // 2 of 16 pixels behind each letter.
	EXPECT_EQ(Make(TEXT("xx"), Spaced)->GetSize().X, 24.0f);
}

TEST_F(TextWrap, FallbackGlyphsDoNotChangeTheLineHeight)
{
	EXPECT_EQ(Make(TEXT("\U0001F600 \u4E2D\u6587 \u0634"), Body())->GetSize().Y, Make(TEXT("x"), Body())->GetSize().Y);
}

TEST_F(TextWrap, BothWaysOfShapingAgree)
{
	// The complex way is the plain way's judge: it sees the whole line, not word by word.
	const TCHAR* const Texts[] = {
		TEXT("The quick brown fox, (so they say) jumps over: the lazy dog!"),
		TEXT("Source/Game/Player.cpp:120: error C2039: 'Foo' - see https://example.org/a/b?c=d&e=f#g and C:\\Temp"),
		TEXT("x = a->b + c::d<e>(f) && !g || h[3] ? i : j; // \"quoted\" 100% $5.00 - 3,141.59"),
		TEXT("na\u00EFve caf\u00E9 \u2014 \u201Cquotes\u201D \u2026 \u0434\u043B\u0438\u043D\u043D\u044B\u0435 "
			 "\u0441\u043B\u043E\u0432\u0430 \u03B1\u03B2\u03B3"),
	};
	FShaperFont Font(std::make_shared<FFontSystem>(), Mono(), 1.0f);
	for (const TCHAR* Text : Texts)
	{
		SCOPED_TRACE(Utf8(Text));
		const TSharedRef<FTextParagraph> Plain = Make(Text);
		const FComplexLine Judge(Font, TextUnits::FView(Text));
		for (int32 Letters = 4; Letters < 60; ++Letters)
		{
			std::string Expected;
			for (int32 First = 0; First < Judge.GetStopCount();)
			{
				const int32 End = Judge.FindLineEnd(First, static_cast<float>(Letters) * Letter());
				Expected += "[" + Utf8(FStringView(Text).Mid(First, End - First)) + "]";
				First = End;
			}
			Plain->Wrap(static_cast<float>(Letters) * Letter());
			ASSERT_EQ(Lines(*Plain, Text), Expected) << Letters << " letters";
		}
	}
}

TEST_F(TextWrap, AnotherWidthShapesNothing)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("some words and \u4E2D\u6587\nmore words and a longword"), Body());
	const FTextShaperCounters Before = Shaper().GetCounters();
	for (float Width = 20.0f; Width < 200.0f; Width += 7.0f)
	{
		Paragraph->Wrap(Width);
	}
	EXPECT_EQ(Shaper().GetCounters().WordsShaped, Before.WordsShaped);
	EXPECT_GT(Shaper().GetCounters().Wraps, Before.Wraps);
	Paragraph->Wrap(20.0f);
	const uint64 Wraps = Shaper().GetCounters().Wraps;
	Paragraph->Wrap(10000.0f);
	Paragraph->Wrap(0.0f);
	Paragraph->Wrap(20000.0f);
	EXPECT_EQ(Shaper().GetCounters().Wraps, Wraps + 1) << "all three leave it unwrapped";
}

TEST_F(TextWrap, KnownWordsAreNotShapedAgain)
{
	Make(TEXT("alpha beta gamma"), Body());
	const uint64 Before = Shaper().GetCounters().WordsShaped;
	Make(TEXT("gamma alpha beta beta"), Body());
	EXPECT_EQ(Shaper().GetCounters().WordsShaped, Before);
}

TEST_F(TextWrap, UnchangedLinesKeepTheirRuns)
{
	const TSharedRef<FTextParagraph> Paragraph = Make(TEXT("one two three"));
	Paragraph->Wrap(8 * Letter());
	const FGlyphRun* const Run = Paragraph->GetRuns(0)[0].Glyphs.Get();
	Paragraph->Wrap(9 * Letter());
	EXPECT_EQ(Paragraph->GetRuns(0)[0].Glyphs.Get(), Run);
	Paragraph->Wrap(4 * Letter());
	EXPECT_NE(Paragraph->GetLineCount(), 2);
}

class TextLimits : public FTextTest
{
protected:
	static std::basic_string<TCHAR> Repeat(const TCHAR* Piece, size_t Units)
	{
		std::basic_string<TCHAR> Text;
		while (Text.size() < Units)
		{
			Text += Piece;
		}
		return Text;
	}
	static double Measure(const std::basic_string<TCHAR>& Text, int32& OutLines)
	{
		const auto Begin = std::chrono::steady_clock::now();
		const TSharedRef<FTextParagraph> Paragraph = Make(FStringView(Text.data(), static_cast<int32>(Text.size())), Body());
		Paragraph->Wrap(300.0f);
		OutLines = Paragraph->GetLineCount();
		EXPECT_EQ(Paragraph->GetLine(OutLines - 1).EndIndex, static_cast<int32>(Text.size()));
		Paragraph->GetRuns(OutLines / 2);
		return std::chrono::duration<double>(std::chrono::steady_clock::now() - Begin).count();
	}
};

TEST_F(TextLimits, TenMegabytesAreLaidOut)
{
	int32 LineCount = 0;
	Measure(Repeat(TEXT("Lorem ipsum dolor sit amet, consectetur adipiscing elit 0123456789.\n"), 10 * 1000 * 1000), LineCount);
	EXPECT_GT(LineCount, 140000);
	Measure(Repeat(TEXT("x"), 1000 * 1000), LineCount);
	EXPECT_GT(LineCount, 10000);
	Measure(Repeat(TEXT("\n"), 1000 * 1000), LineCount);
	EXPECT_EQ(LineCount, 1000 * 1000 + 1);
}

TEST_F(TextLimits, TheWordCacheIsBounded)
{
	const auto CountShaped = [](const FString& Text)
	{
		const uint64 Before = Shaper().GetCounters().WordsShaped;
		Make(Text, Body());
		return Shaper().GetCounters().WordsShaped - Before;
	};
	constexpr int32 Count = 3 * static_cast<int32>(FShaperFont::MaxWords);
	for (int32 Word = 0; Word < Count; ++Word)
	{
		Make(FString::Printf(TEXT("w%d"), Word), Body());
	}
	EXPECT_EQ(CountShaped(FString::Printf(TEXT("w%d"), Count - 1)), 0u) << "the last is kept";
	EXPECT_GT(CountShaped(TEXT("w0")), 0u) << "the first is gone";

	// It follows what texts hold.
	const auto Held = Make(TEXT("held by a text"), Body());
	for (int32 Word = 0; Word < 2 * static_cast<int32>(FShaperFont::FewWords); ++Word)
	{
		Make(FString::Printf(TEXT("n%d"), Word), Body());
	}
	EXPECT_EQ(CountShaped(TEXT("text held")), 0u);
	EXPECT_GT(CountShaped(TEXT("n0")), 0u) << "nobody holds it";
}
