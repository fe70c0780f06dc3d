#include "Support/UiDriver.h"

#include "Slate/Private/Framework/Text/TextEditor.h"
#include "Slate/Private/Framework/Text/TextView.h"
#include "Styling/CoreStyle.h"

#include <random>

class FTextViewTest : public FWidgetTest
{
protected:
	FTextDocument Document;
	TUniquePtr<FTextView> View;

	void Begin(const FString& Text, float Width = 200.0f, float Height = 100.0f, bool bWrap = true)
	{
		View = MakeView(Document, Width, Height, bWrap);
		Document.SetOnLinesChanged([this](int32 First, int32 Removed, int32 Added) { View->NoteLinesChanged(First, Removed, Added); });
		Document.SetText(Text);
	}
	static TUniquePtr<FTextView> MakeView(const FTextDocument& Document, float Width, float Height, bool bWrap)
	{
		TUniquePtr<FTextView> Result = MakeUnique<FTextView>(Document);
		Result->SetFont(FCoreStyle::GetDefaultFontStyle(TEXT("Regular"), 10.0f), 1.0f);
		Result->SetWrapWidth(bWrap ? Width : 0.0f);
		Result->SetViewSize(Width, Height);
		return Result;
	}
	static void Put(FTextDocument& Target, const FTextLocation& From, const FTextLocation& To, FTextFragment&& Piece)
	{
		FTextFragment Removed;
		Target.Exchange(From, To, MoveTemp(Piece), Removed);
	}
	static FString MakeLines(int32 Count)
	{
		FString Text;
		for (int32 Line = 0; Line < Count; ++Line)
		{
			Text += FString::Printf(TEXT("%sline %d"), Line > 0 ? TEXT("\n") : TEXT(""), Line);
		}
		return Text;
	}
	std::vector<int32> LinesInView()
	{
		std::vector<int32> Lines;
		View->ForEachRow([&Lines](const FTextRow& Row) { Lines.push_back(Row.Block.Line); });
		return Lines;
	}
};

TEST_F(FTextViewTest, OnlyLinesInViewAreShaped)
{
	Begin(MakeLines(50000));
	View->MeasureIfSmall();
	LinesInView();
	EXPECT_LE(View->CountShapedLines(), 12);
	View->ScrollToShow(View->PlaceOf(Document.GetEnd(), false), 1.0f);
	EXPECT_EQ(LinesInView().back(), 49999);
	EXPECT_LE(View->CountShapedLines(), 24);
	// A key in the middle of all shapes its own line.
	const uint64 Before = ITextShaper::Get().GetCounters().ParagraphsMade;
	Put(Document, FTextLocation(49998, 2), FTextLocation(49998, 2), FTextDocument::Parse(TEXT("x")));
	LinesInView();
	EXPECT_EQ(ITextShaper::Get().GetCounters().ParagraphsMade - Before, 1u);
}

TEST_F(FTextViewTest, ScrollingIsExactAndStopsAtBothEnds)
{
	Begin(MakeLines(1000), 200.0f, 100.0f);
	View->ScrollBy(-50.0f);
	EXPECT_EQ(View->GetScrollOffset(), 0.0);
	const float LineHeight = View->GetMetrics().LineHeight;
	for (int32 Step = 0; Step < 20; ++Step)
	{
		View->ScrollBy(LineHeight * 0.5f);
	}
	EXPECT_NEAR(View->GetScrollOffset(), LineHeight * 10.0f, 0.01);
	EXPECT_EQ(LinesInView().front(), 10);
	View->ScrollBy(1.0e7f);
	EXPECT_EQ(LinesInView().back(), 999);
	EXPECT_NEAR(View->GetScrollOffset(), View->GetContentHeight() - 100.0, 0.5);
	View->SetScrollOffset(View->GetContentHeight() * 0.5);
	EXPECT_NEAR(LinesInView().front(), 500, 4);
}

TEST_F(FTextViewTest, TheViewStaysWhereItIsWhenLinesAboveChange)
{
	Begin(MakeLines(1000));
	View->ScrollToLine(500);
	Put(Document, FTextLocation(10, 0), FTextLocation(10, 0), FTextDocument::Parse(TEXT("a\nb\nc\n")));
	EXPECT_EQ(LinesInView().front(), 503);
	Put(Document, FTextLocation(0, 0), FTextLocation(100, 0), FTextDocument::Parse(TEXT("")));
	EXPECT_EQ(LinesInView().front(), 403);
}

TEST_F(FTextViewTest, CaretAtAWrapHasTwoPlaces)
{
	Begin(TEXT("alpha beta gamma delta epsilon zeta eta theta"), 100.0f);
	bool bRowEnd = false;
	const FTextLocation End = View->GetRowEnd(FTextLocation(0, 0), false, bRowEnd);
	EXPECT_TRUE(bRowEnd);
	const FTextCaretPlace Upper = View->PlaceOf(End, true);
	const FTextCaretPlace Lower = View->PlaceOf(End, false);
	EXPECT_EQ(Upper.Row, 0);
	EXPECT_EQ(Lower.Row, 1);
	EXPECT_GT(Upper.X, 50.0f);
	EXPECT_EQ(Lower.X, 0.0f);
	EXPECT_TRUE(View->GetRowBegin(End, true) == FTextLocation(0, 0));
	EXPECT_TRUE(View->GetRowBegin(End, false) == End);
	// A click far to the right of the first row stays on it.
	const FTextLocation Clicked = View->Hit(FVector2f(500.0f, 2.0f), bRowEnd);
	EXPECT_EQ(View->PlaceOf(Clicked, bRowEnd).Row, 0);
	EXPECT_GE(Clicked.GetOffset(), End.GetOffset() - 1) << "blanks hang outside the row";
}

TEST_F(FTextViewTest, RowsUpAndDownKeepTheWishedPlace)
{
	Begin(TEXT("a long first line\nab\nanother long line"), 500.0f);
	const float X = View->PlaceOf(FTextLocation(0, 10), false).X;
	bool bRowEnd = false;
	EXPECT_TRUE(View->MoveRows(FTextLocation(0, 10), false, 1, X, bRowEnd) == FTextLocation(1, 2));
	const FTextLocation Third = View->MoveRows(FTextLocation(1, 2), false, 1, X, bRowEnd);
	EXPECT_EQ(Third.GetLineIndex(), 2);
	EXPECT_NEAR(View->PlaceOf(Third, false).X, X, 6.0f);
	EXPECT_TRUE(View->MoveRows(Third, false, 1, X, bRowEnd) == Document.GetEnd());
	EXPECT_TRUE(View->MoveRows(FTextLocation(0, 5), false, -1, X, bRowEnd) == FTextLocation(0, 0));
}

TEST_F(FTextViewTest, AVeryLongLineIsLaidOutInPieces)
{
	FString Long;
	while (Long.Len() < 1000000)
	{
		Long += TEXT("word and blank ");
	}
	Begin(Long, 400.0f, 200.0f);
	const uint64 Before = ITextShaper::Get().GetCounters().ParagraphsMade;
	const FTextCaretPlace Place = View->PlaceOf(FTextLocation(0, 500000), false);
	EXPECT_GT(Place.Block.Segment, 100);
	View->ScrollToShow(Place, 1.0f);
	float Top = 0.0f;
	ASSERT_TRUE(View->FindTop(Place.Block, Top));
	bool bRowEnd = false;
	const FTextLocation Back = View->Hit(FVector2f(Place.X + 0.5f, Top + Place.Top + 1.0f), bRowEnd);
	EXPECT_TRUE(Back == FTextLocation(0, 500000)) << Back.GetOffset();
	EXPECT_LE(ITextShaper::Get().GetCounters().ParagraphsMade - Before, 4u);
	// Every unit belongs to exactly one row, also across the pieces.
	View->ScrollToShow(View->PlaceOf(FTextLocation(0, FTextView::MaxSegment), false), 1.0f);
	int32 Expected = -1;
	View->ForEachRow(
		[&Expected](const FTextRow& Row)
		{
			EXPECT_TRUE(Expected < 0 || Row.Begin == Expected) << Row.Begin;
			Expected = Row.End;
		});
}

TEST_F(FTextViewTest, AKeyInALongLineShapesOnlyWhatItChanges)
{
	FString Long;
	for (int32 Word = 0; Word < 4000; ++Word)
	{
		Long += FString::Printf(TEXT("%d "), Word);
	}
	Begin(Long, 400.0f, 2000.0f);
	const auto ShowEnd = [this]
	{
		View->ScrollToShow(View->PlaceOf(Document.GetEnd(), false), 1.0f);
		LinesInView();
	};
	ShowEnd();
	const uint64 MadeBefore = ITextShaper::Get().GetCounters().ParagraphsMade;
	for (int32 Key = 0; Key < 3; ++Key)
	{
		// Two changes, as of a letter that replaces one, come before the view is asked again.
		Put(Document, Document.GetEnd(), Document.GetEnd(), FTextDocument::Parse(TEXT("x")));
		Put(Document, Document.GetEnd(), Document.GetEnd(), FTextDocument::Parse(TEXT("y")));
		ShowEnd();
	}
	EXPECT_LE(ITextShaper::Get().GetCounters().ParagraphsMade - MadeBefore, 4u) << "the last piece once a key, and once the first";
	const TUniquePtr<FTextView> Fresh = MakeView(Document, 400.0f, 2000.0f, true);
	Fresh->ScrollToShow(Fresh->PlaceOf(Document.GetEnd(), false), 1.0f);
	EXPECT_NEAR(View->PlaceOf(Document.GetEnd(), false).X, Fresh->PlaceOf(Document.GetEnd(), false).X, 0.01f);
	// Another font has other glyphs.
	const FSlateFontInfo Larger = FCoreStyle::GetDefaultFontStyle(TEXT("Regular"), 14.0f);
	View->SetFont(Larger, 1.0f);
	Fresh->SetFont(Larger, 1.0f);
	for (const int32 Before : { 2500, 3000, 3500 })
	{
		const FTextLocation Place(0, Document.GetLineLength(0) - Before);
		EXPECT_NEAR(View->PlaceOf(Place, false).X, Fresh->PlaceOf(Place, false).X, 0.01f);
	}
}

TEST_F(FTextViewTest, PreeditIsPartOfTheLineWhileItLasts)
{
	Begin(TEXT("abcd"), 500.0f);
	const float WithoutX = View->PlaceOf(FTextLocation(0, 4), false).X;
	View->SetPreedit(FTextLocation(0, 2), TEXT("WWW"));
	EXPECT_EQ(View->ToShown(FTextLocation(0, 2)), 2);
	EXPECT_EQ(View->ToShown(FTextLocation(0, 3)), 6);
	EXPECT_GT(View->PlaceOf(FTextLocation(0, 4), false).X, WithoutX + 20.0f);
	EXPECT_GT(View->PlaceInPreedit(3).X, View->PlaceInPreedit(0).X + 20.0f);
	bool bRowEnd = false;
	EXPECT_TRUE(View->Hit(FVector2f(View->PlaceInPreedit(1).X, 2.0f), bRowEnd) == FTextLocation(0, 2));
	View->SetPreedit(FTextLocation(), FStringView());
	EXPECT_EQ(View->PlaceOf(FTextLocation(0, 4), false).X, WithoutX);
}

TEST_F(FTextViewTest, RandomEditsLeaveTheSameLayoutAsAFreshOne)
{
	Begin(MakeLines(30), 90.0f, 120.0f);
	std::mt19937 Random(815);
	const auto Below = [&Random](int32 Limit) { return std::uniform_int_distribution<int32>(0, Limit)(Random); };
	const auto AnyPlace = [&]()
	{
		const int32 Line = Below(Document.GetLineCount() - 1);
		return FTextLocation(Line, Below(Document.GetLineLength(Line)));
	};
	const TCHAR* Pieces[] = { TEXT(""), TEXT("x"), TEXT("some words that wrap around the edge"), TEXT("\n"), TEXT("two\nlines\n"),
		TEXT("a\nb\nc\nd") };
	for (int32 Round = 0; Round < 150; ++Round)
	{
		FTextLocation From = AnyPlace();
		FTextLocation To = AnyPlace();
		if (To < From)
		{
			Swap(From, To);
		}
		if (Round % 3 != 0 || To.GetLineIndex() > From.GetLineIndex() + 3)
		{
			To = From;
		}
		Put(Document, From, To, FTextDocument::Parse(Pieces[Below(5)]));
		View->ScrollBy(static_cast<float>(Below(80) - 40));
		View->MeasureIfSmall();

		const TUniquePtr<FTextView> Fresh = MakeView(Document, 90.0f, 120.0f, true);
		Fresh->MeasureIfSmall();
		ASSERT_NEAR(View->GetContentHeight(), Fresh->GetContentHeight(), 0.01) << Round;
		Fresh->SetScrollOffset(View->GetScrollOffset());
		const FTextLocation Place = AnyPlace();
		const FTextCaretPlace Kept = View->PlaceOf(Place, false);
		const FTextCaretPlace Made = Fresh->PlaceOf(Place, false);
		ASSERT_TRUE(Kept.Block == Made.Block && Kept.Row == Made.Row && Kept.X == Made.X) << Round;
	}
}
