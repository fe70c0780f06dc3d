// Texts share what was shaped, and a cut text keeps what is shown of it. Neither can be told from a picture, so this file reaches
// past access control.

#include "Support/UiDriver.h"

#include "Host/TextShaper.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SToolTip.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	FText Words(int32 Count)
	{
		FString Text;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Text += Index % 3 == 0 ? TEXT("wandering ") : TEXT("words ");
		}
		return FText::FromString(Text.TrimEnd());
	}

	FVector2D Wanted(const TSharedRef<SWidget>& Widget)
	{
		Widget->SlatePrepass(1.0f);
		return Widget->GetDesiredSize();
	}

	double LineHeight()
	{
		return Wanted(SNew(STextBlock).Text(INVTEXT("x"))).Y;
	}

	/** The colours of all glyph runs on screen, one per run. */
	TArray<FSlateDrawElement> GlyphRuns()
	{
		return FSlateApplication::Get().GetLastElements().GetElements().FilterByPredicate(
			[](const FSlateDrawElement& Element) { return Element.Type == ESlateDrawType::Glyphs; });
	}
}

using FTextBlock = FWidgetTest;

TEST_F(FTextBlock, WantsItsLinesUnwrapped)
{
	const double Line = LineHeight();
	EXPECT_GT(Line, 10.0);
	EXPECT_EQ(Wanted(SNew(STextBlock)).Y, Line) << "no text, one empty line";
	EXPECT_EQ(Wanted(SNew(STextBlock)).X, 0.0);
	EXPECT_EQ(Wanted(SNew(STextBlock).Text(INVTEXT("a\nbb\r\nc"))).Y, 3 * Line);
	EXPECT_EQ(Wanted(SNew(STextBlock).Text(Words(50)).AutoWrapText(true)).Y, Line) << "nobody has given it a width yet";
	EXPECT_GT(Wanted(SNew(STextBlock).Text(INVTEXT("See "))).X, Wanted(SNew(STextBlock).Text(INVTEXT("See"))).X)
		<< "the blank is the gap to the next widget";
	EXPECT_EQ(Wanted(SNew(STextBlock).Text(INVTEXT("i")).MinDesiredWidth(80.0f)).X, 80.0);
	const FVector2D Plain = Wanted(SNew(STextBlock).Text(INVTEXT("Plain")));
	EXPECT_EQ(Wanted(SNew(STextBlock).Text(INVTEXT("Plain")).Margin(FMargin(1.0f, 2.0f, 3.0f, 4.0f))), Plain + FVector2D(4.0, 6.0));
	EXPECT_EQ(Wanted(SNew(STextBlock).Text(INVTEXT("Plain")).LineHeightPercentage(2.0f)).Y, 2 * Line);
	const TSharedRef<STextBlock> Fixed = SNew(STextBlock).Text(Words(30)).WrapTextAt(120.0f);
	EXPECT_LE(Wanted(Fixed).X, 120.0);
	EXPECT_GT(Wanted(Fixed).Y, 5 * Line);
}

TEST_F(FTextBlock, WrapsToItsRoomInTheSameFrame)
{
	TSharedPtr<STextBlock> Text;
	TSharedPtr<SWidget> Below;
	Show(SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[SAssignNew(Text, STextBlock).Text(Words(100)).AutoWrapText(true)] +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Below, SBox).HeightOverride(5)]);
	const double Line = LineHeight();
	const float Wide = GetRect(*Below).Top;
	EXPECT_GT(Text->GetDesiredSize().X, 1280.0) << "it would like one line";
	EXPECT_EQ(Wide, Text->Paragraph->GetLineCount() * Line);
	EXPECT_GT(Wide, Line);

	const uint64 Made = ITextShaper::Get().GetCounters().ParagraphsMade;
	Resize(640, 800);
	EXPECT_EQ(GetRect(*Below).Top, Text->Paragraph->GetLineCount() * Line);
	EXPECT_GE(GetRect(*Below).Top, 2 * Wide - Line);
	Resize(1280, 800);
	EXPECT_EQ(GetRect(*Below).Top, Wide);
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade, Made) << "a width alone shapes nothing";

	Text->SetText(INVTEXT("short"));
	PumpFrame();
	EXPECT_EQ(GetRect(*Below).Top, Line);
}

TEST_F(FTextBlock, BoundTextIsAlwaysTrue)
{
	FString Source = TEXT("left");
	TSharedPtr<STextBlock> Text;
	TSharedPtr<SWidget> Beside;
	Show(SNew(SHorizontalBox) +
		SHorizontalBox::Slot().AutoWidth()[SAssignNew(Text, STextBlock).Text_Lambda([&Source] { return FText::FromString(Source); })] +
		SHorizontalBox::Slot().AutoWidth()[SAssignNew(Beside, SBox).WidthOverride(5)]);
	const float Before = GetRect(*Beside).Left;
	const uint64 Made = ITextShaper::Get().GetCounters().ParagraphsMade;
	for (int32 Frame = 0; Frame < 5; ++Frame)
	{
		PumpFrame();
	}
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade, Made) << "equal text made anew is not shaped anew";
	Source = TEXT("LEFT");
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), FTextList({ "LEFT" }));
	EXPECT_GT(GetRect(*Beside).Left, Before) << "letter case counts";
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade, Made + 1);
}

TEST_F(FTextBlock, SetTextShapesOnlyWhatDiffers)
{
	TSharedPtr<STextBlock> Text;
	Show(SNew(SBox).HAlign(HAlign_Left)[SAssignNew(Text, STextBlock).Text(INVTEXT("same"))]);
	const uint64 Made = ITextShaper::Get().GetCounters().ParagraphsMade;
	Text->SetText(INVTEXT("same"));
	EXPECT_FALSE(Text->NeedsPrepass());
	PumpFrame();
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade, Made);
	Text->SetText(INVTEXT("Same"));
	PumpFrame();
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade, Made + 1);
	Text->SetFont(FCoreStyle::GetDefaultFontStyle("Bold", 20.0f));
	PumpFrame();
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade, Made + 2);
}

TEST_F(FTextBlock, ShortTextsShareTheirLayoutUntilOneWraps)
{
	TSharedPtr<STextBlock> One;
	TSharedPtr<STextBlock> Other;
	TSharedPtr<STextBlock> OtherCase;
	Show(SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[SAssignNew(One, STextBlock).Text(INVTEXT("two words"))] +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(OtherCase, STextBlock).Text(INVTEXT("Two words"))] +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Other, STextBlock).Text(FText::FromString(TEXT("two words")))]);
	EXPECT_EQ(One->Paragraph, Other->Paragraph);
	EXPECT_NE(One->Paragraph, OtherCase->Paragraph);

	Other->SetWrapTextAt(50.0f);
	PumpFrame();
	EXPECT_EQ(Other->Paragraph->GetLineCount(), 2);
	EXPECT_EQ(One->Paragraph->GetLineCount(), 1);
	EXPECT_EQ(GetRect(*Other).Height(), 2 * GetRect(*One).Height());
	Other->SetWrapTextAt(0.0f);
	PumpFrame();
	EXPECT_EQ(GetRect(*Other).Height(), GetRect(*One).Height());

	One->SetFont(FCoreStyle::GetDefaultFontStyle("Bold", 20.0f));
	PumpFrame();
	EXPECT_NE(One->Paragraph, Other->Paragraph);
}

TEST_F(FTextBlock, TooLongTextIsCutOff)
{
	TSharedPtr<STextBlock> Clipped;
	TSharedPtr<STextBlock> Elided;
	const auto Narrow = [](const TSharedRef<SWidget>& Content) -> TSharedRef<SWidget> { return SNew(SBox).WidthOverride(60)[Content]; };
	Show(SNew(SVerticalBox) +
		SVerticalBox::Slot().AutoHeight().HAlign(
			HAlign_Left)[Narrow(SAssignNew(Clipped, STextBlock).Text(INVTEXT("Player dash with cooldown")))] +
		SVerticalBox::Slot().AutoHeight().HAlign(HAlign_Left)[Narrow(
			SAssignNew(Elided, STextBlock).Text(INVTEXT("Player dash with cooldown")).OverflowPolicy(ETextOverflowPolicy::Ellipsis))]);
	for (const FSlateDrawElement& Run : GlyphRuns())
	{
		EXPECT_LE(Run.Clip.Right, 60.0f) << "no glyph outside its widget";
	}
	ASSERT_TRUE(Elided->Elided.IsValid());
	EXPECT_LE(Elided->Elided->Paragraph->GetUnwrappedWidth(), 60.0f);
	EXPECT_GT(Elided->Elided->Paragraph->GetUnwrappedWidth(), 40.0f);
	EXPECT_FALSE(Clipped->Elided.IsValid());

	// A room too small for anything, and graphemes of several units, must not hang or split.
	Elided->SetText(FText::FromString(TEXT("\U0001F468\u200D\U0001F469\u200D\U0001F467\U0001F468\u200D\U0001F469\u200D\U0001F467\U0001F468"
										   "\u200D\U0001F469\u200D\U0001F467 family")));
	PumpFrame();
	EXPECT_LE(Elided->Elided->Paragraph->GetUnwrappedWidth(), 60.0f);
	Elided->SetText(FText::FromString(FString(1, TEXT("\xD800")) + TEXT("lone surrogate at the start")));
	PumpFrame();
	EXPECT_LE(Elided->Elided->Paragraph->GetUnwrappedWidth(), 60.0f);
}

TEST_F(FTextBlock, JustificationMovesLines)
{
	const auto LeftEdgeOf = [this](ETextJustify::Type Justification)
	{
		Show(SNew(STextBlock).Text(INVTEXT("word")).Justification(Justification));
		return GlyphRuns()[0].Rect.Left;
	};
	const double Width = Wanted(SNew(STextBlock).Text(INVTEXT("word"))).X;
	EXPECT_EQ(LeftEdgeOf(ETextJustify::Left), 0.0f);
	EXPECT_NEAR(LeftEdgeOf(ETextJustify::Center), (1280.0 - Width) / 2.0, 1.0);
	EXPECT_NEAR(LeftEdgeOf(ETextJustify::Right), 1280.0 - Width, 1.0);
}

TEST_F(FTextBlock, OnlyLinesInViewArePainted)
{
	FString Many;
	for (int32 Line = 0; Line < 5000; ++Line)
	{
		Many += TEXT("line\n");
	}
	Show(SNew(SBox).Padding(0.0f, -20000.0f, 0.0f, 0.0f).VAlign(VAlign_Top)[SNew(STextBlock).Text(FText::FromString(Many))]);
	EXPECT_GT(GlyphRuns().Num(), 20);
	EXPECT_LT(GlyphRuns().Num(), 80);
}

TEST_F(FTextBlock, AnUnknownFontIsChequered)
{
	AllowUnknownNames();
	Show(SNew(STextBlock).Text(INVTEXT("lost")).Font(FAppStyle::GetFontStyle("NoSuchFont")));
	EXPECT_EQ(App().GetLastElements().GetChequerCount(), 1);
}

TEST_F(FTextBlock, StrikeAndUnderlineFollowTheirLines)
{
	static const FTextBlockStyle Struck = []
	{
		FTextBlockStyle Style = FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>("NormalText");
		FSlateBrush Line;
		Line.TintColor = FSlateColor(FLinearColor(FColor(0xE6, 0xE6, 0xE6, 0xFF)));
		return Style.SetStrikeBrush(Line);
	}();
	TSharedPtr<STextBlock> Text;
	Show(SNew(SBox).HAlign(
		HAlign_Left)[SNew(SBox).WidthOverride(200)[SAssignNew(Text, STextBlock).Text(Words(20)).TextStyle(&Struck).AutoWrapText(true)]]);
	int32 Lines = 0;
	for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
	{
		if (Element.Type == ESlateDrawType::Box)
		{
			EXPECT_EQ(Element.Rect.Height(), 1.0f);
			EXPECT_EQ(Element.Color, FColor(0xE6, 0xE6, 0xE6, 0xFF));
			++Lines;
		}
	}
	EXPECT_EQ(Lines, Text->Paragraph->GetLineCount());
	EXPECT_GT(Lines, 1);
}

TEST_F(FTextBlock, ToolTipsAreAtMost320Wide)
{
	const TSharedRef<SToolTip> Short = SNew(SToolTip).Text(INVTEXT("Dismiss this error"));
	EXPECT_EQ(Wanted(Short).Y, 28.0) << "one line of 16 and padding";
	EXPECT_LT(Wanted(Short).X, 200.0);
	EXPECT_TRUE(Short->HasContent());
	const TSharedRef<SToolTip> Empty = SNew(SToolTip);
	EXPECT_FALSE(Empty->HasContent());
	const TSharedRef<SToolTip> Long = SNew(SToolTip).Text(Words(40));
	Show(SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)[Long]);
	EXPECT_EQ(GetRect(*Long).Width(), 320.0f);
	EXPECT_GT(GetRect(*Long).Height(), 12.0f + 3 * 16.0f);
	EXPECT_EQ(static_cast<int32>(GetRect(*Long).Height() - 12.0f) % 16, 0);
}
