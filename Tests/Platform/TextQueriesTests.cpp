#include "Platform/TextFixture.h"
#include "Support/ParagraphQueries.h"

/**
 * Every question that a caret, a click or a selection can put, over texts of every kind: at every pixel from well before
 * a line to well after it, and at every offset from before the text to after it.
 */
using TextQueries = FTextTest;

TEST_F(TextQueries, AnyTextAnswersAtEveryPixelAndOffset)
{
	const std::pair<const char*, const TCHAR*> Cases[] = {
		{ "nothing", TEXT("") },
		{ "a leading blank", TEXT(" a") },
		{ "leading blanks", TEXT("    return Value;") },
		{ "a leading tab", TEXT("\treturn Value;") },
		{ "tabs between and after", TEXT("a\tb\t\tc\t") },
		{ "trailing blanks", TEXT("some words   ") },
		{ "only blanks", TEXT("     ") },
		{ "only tabs", TEXT("\t\t") },
		{ "blanks and tabs in turn", TEXT(" \t \t ") },
		{ "empty lines", TEXT("\n\n\n") },
		{ "indented lines between empty ones", TEXT("\n  a\n\n\tb\n   ") },
		{ "every kind of line end", TEXT("a\r\n b\r\tc\n\rd") },
		{ "right to left", TEXT("\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD") },
		{ "right to left after blanks", TEXT("  \u0627\u0644\u0633\u0644\u0627\u0645 ") },
		{ "both directions and a tab", TEXT("\tabc \u05E9\u05DC\u05D5\u05DD\t12 def ") },
		{ "emoji", TEXT(" \U0001F600\U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1E9\U0001F1EA\t") },
		{ "marks on nothing", TEXT("\u0301\u0302 \u0301\n\u0303") },
		{ "joiners alone", TEXT("\u200D \uFE0F\t\u200D") },
		{ "scripts that stack", TEXT("  \u0915\u094D\u0937\u093F \u0E19\u0E49\u0E33\t") },
		{ "lone surrogates", TEXT(" \xD83D") TEXT(" \xDE00") TEXT("\t\xDE00\xD83D ") },
		{ "control characters", TEXT(" \x01\x1B\x7F\u0085\u2028\u2029\t") },
	};
	for (const auto& [Why, Expected] : Cases)
	{
		SCOPED_TRACE(Why);
		const FStringView Text(Expected);
		for (const FSlateFontInfo& Font : { Mono(), Body() })
		{
			const TSharedRef<ITextParagraph> Paragraph = Shaper().MakeParagraph(Text, Font, 1.0f);
			for (const float Width : { 0.0f, 1.0f, 25.0f, 70.0f, 2000.0f })
			{
				SCOPED_TRACE(Width);
				Paragraph->Wrap(Width);
				EXPECT_EQ(AskEveryPixel(*Paragraph, Text.Len()), "");
				EXPECT_EQ(AskEveryOffset(*Paragraph, Text.Len()), "");
			}
		}
	}
}

TEST_F(TextQueries, BlanksWithoutWidthAnswerToo)
{
	FSlateFontInfo Tiny = Body();
	Tiny.Size = 0.0f;
	FSlateFontInfo Tight = Mono();
	Tight.LetterSpacing = -2000;
	for (const FSlateFontInfo& Font : { Tiny, Tight })
	{
		for (const TCHAR* const Line : { TEXT("\ta\t\tb"), TEXT("\t\u05E9\t\u05DC") })
		{
			const FStringView Text(Line);
			const TSharedRef<ITextParagraph> Paragraph = Shaper().MakeParagraph(Text, Font, 1.0f);
			Paragraph->Wrap(10.0f);
			EXPECT_EQ(AskEveryPixel(*Paragraph, Text.Len()), "");
			EXPECT_EQ(AskEveryOffset(*Paragraph, Text.Len()), "");
		}
	}
}

TEST_F(TextQueries, VeryLongWordsAnswerToo)
{
	for (const TCHAR* const Around : { TEXT(""), TEXT(" "), TEXT("\t") })
	{
		FString Text(Around);
		for (int32 Count = 0; Count < 700; ++Count)
		{
			Text.AppendChar(TEXT('w'));
		}
		Text += Around;
		const TSharedRef<ITextParagraph> Paragraph = Shaper().MakeParagraph(Text, Mono(), 1.0f);
		for (const float Width : { 0.0f, 3.0f, 90.0f })
		{
			SCOPED_TRACE(Width);
			Paragraph->Wrap(Width);
			EXPECT_EQ(AskEveryPixel(*Paragraph, Text.Len()), "");
		}
		Paragraph->Wrap(300.0f);
		EXPECT_EQ(AskEveryOffset(*Paragraph, Text.Len()), "");
	}
}

TEST_F(TextQueries, APlaceBeforeTheTextIsItsBegin)
{
	const TCHAR* const Texts[] = { TEXT(" a"), TEXT("\ta"), TEXT("   "), TEXT("\t"), TEXT("a") };
	for (const TCHAR* Text : Texts)
	{
		SCOPED_TRACE(Utf8(FStringView(Text)));
		EXPECT_EQ(Shaper().MakeParagraph(Text, Mono(), 1.0f)->GetIndexAt(0, -7.0f), 0);
	}
}
