#include "FileSearch/AtFileReferenceController.h"
#include "FileSearch/AtTokenState.h"

#include "Support/Base/Printers.h"

#include <limits>
#include <string>

using namespace Velmora::UI;

namespace
{
	/** A text whose cursor is written as '|'. */
	struct FMarkedText
	{
		explicit FMarkedText(const std::string& Marked)
		{
			FString Whole(Marked.c_str());
			EXPECT_TRUE(Whole.FindChar(TEXT('|'), Cursor)) << Marked;
			Whole.RemoveAt(Cursor);
			Text = Whole;
		}

		FString Text;
		int32 Cursor = 0;
	};

	/** Line 0 holds it all: enough of a mapping for texts without lines. */
	FAtFileReferenceController MakeController()
	{
		return FAtFileReferenceController([](const FString&, const FTextLocation& Location) { return Location.GetOffset(); },
			[](const FString&, int32 Index) { return FTextLocation(0, Index); });
	}

	FAtFileReferenceController::FDropdownDelta Update(FAtFileReferenceController& Controller, const std::string& Marked)
	{
		const FMarkedText Input(Marked);
		return Controller.Update(Input.Text, FTextLocation(0, Input.Cursor));
	}
}

TEST(AtToken, StateByTextAndCursor)
{
	struct FCase
	{
		const char* Marked;
		int32 AtIndex;
		int32 TokenEnd;
		const char* Query;
		bool bActive;
	};
	const FCase Cases[] = {
		{ "see @pla|", 4, 8, "pla", true },
		{ "see @|", 4, 5, "", true },
		{ "see @pl|ayer now", 4, 11, "player", true },
		{ "see @player| now", 4, 11, "player", true },
		{ "see @player |now", 4, 11, "player", false },
		{ "see |@player", -1, -1, "", false },
		{ "see @player now|", 4, 11, "player", false },
		{ "see @player\nnow|", -1, -1, "", false },
		{ "see @player\rnow|", 4, 11, "player", false },
		{ "see\n@pl|", 4, 7, "pl", true },
		{ "@a|@b", 0, 2, "a", true },
		{ "@a@b|", 2, 4, "b", true },
		{ "@@|", 1, 2, "", true },
		{ "me@host|", 2, 7, "host", true },
		{ "@Source/Ga|", 0, 10, "Source/Ga", true },
		{ "@a_b.c-d\\e/f|!", 0, 12, "a_b.c-d\\e/f", true },
		{ "@C:x|", 0, 2, "C", false },
		{ "@\xC3\xA9\xE4\xB8\xAD|", 0, 3, "\xC3\xA9\xE4\xB8\xAD", true },
		{ "@a\xF0\x9F\x98\x80|", 0, 2, "a", false },
		{ "|", -1, -1, "", false },
		{ "no token|", -1, -1, "", false },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Marked);
		const FMarkedText Input(Case.Marked);
		const FAtTokenState State = ComputeAtTokenState(Input.Text, Input.Cursor);
		EXPECT_EQ(State.AtIndex, Case.AtIndex);
		EXPECT_EQ(State.TokenEnd, Case.TokenEnd);
		EXPECT_EQ(Utf8(State.Query), Case.Query);
		EXPECT_EQ(State.bActive, Case.bActive);
	}
}

TEST(AtToken, LongLinesAreLookedThroughAsShortOnes)
{
	for (const int32 Distance : { 1, 2047, 2048, 2049, 4096, 4097, 10000 })
	{
		const FString Blanks = FString::ChrN(Distance, TEXT(' '));
		for (const TCHAR* Before : { TEXT(""), TEXT("@old\n"), TEXT("more of it ") })
		{
			const FString Text = FString(Before) + TEXT("@") + Blanks;
			const int32 At = FString(Before).Len();
			EXPECT_EQ(ComputeAtTokenState(Text, Text.Len()).AtIndex, At) << Distance;
			EXPECT_EQ(ComputeAtTokenState(FString(Before) + Blanks, At + Distance).AtIndex, -1) << Distance;
			EXPECT_EQ(ComputeAtTokenState(Text + TEXT("\n") + Blanks, Text.Len() + 1 + Distance).AtIndex, -1) << Distance;
		}
	}
}

TEST(AtToken, ALongTokenEndsWhereAShortOneDoes)
{
	// Every character that ends a short token ends a long one, also where many are looked at together; and no other does.
	for (int32 Unit = 0; Unit < 0x250; ++Unit)
	{
		const TCHAR Char = static_cast<TCHAR>(Unit);
		const bool bEnds = ComputeAtTokenState(FString(TEXT("@a")).AppendChar(Char), 2).TokenEnd == 2;
		for (const int32 Place : { 0, 1000, 2047, 2048, 4200 })
		{
			FString Text = TEXT("@") + FString::ChrN(Place, TEXT('z'));
			Text.AppendChar(Char);
			Text += FString::ChrN(5000 - Place, TEXT('Z'));
			EXPECT_EQ(ComputeAtTokenState(Text, 1).TokenEnd, bEnds ? 1 + Place : Text.Len()) << Unit << " at " << Place;
		}
	}
}

TEST(AtToken, ACursorOutsideTheTextIsClamped)
{
	for (const int32 Cursor : { std::numeric_limits<int32>::min(), -1, 0, 1, std::numeric_limits<int32>::max() })
	{
		EXPECT_EQ(ComputeAtTokenState(FString(), Cursor).AtIndex, -1) << Cursor;
		EXPECT_EQ(ComputeAtTokenState(TEXT("@ab"), Cursor).bActive, Cursor > 0) << Cursor;
	}
}

TEST(AtToken, ReplacementByRange)
{
	const std::tuple<int32, int32, const char*, int32> Cases[] = {
		{ 1, 3, "aXYde", 3 },
		{ 0, 0, "XYabcde", 2 },
		{ 5, 5, "abcdeXY", 7 },
		{ 0, 5, "XY", 2 },
		{ 3, 2, "abcde", 3 },
		{ 3, 6, "abcde", 3 },
		{ 9, 9, "abcde", 5 },
		{ -1, 3, "abcde", 0 },
		{ 2, -1, "abcde", 2 },
		{ -7, -1, "abcde", 0 },
	};
	for (const auto& [Start, End, ExpectedText, ExpectedCursor] : Cases)
	{
		SCOPED_TRACE(testing::Message() << Start << " to " << End);
		FString Text = TEXT("abcde");
		int32 Cursor = -5;
		ApplyAtTokenReplacement(Text, Start, End, TEXT("XY"), Text, Cursor);
		EXPECT_EQ(Utf8(Text), ExpectedText);
		EXPECT_EQ(Cursor, ExpectedCursor);
	}
}

TEST(AtController, ReportsAQueryOnce)
{
	FAtFileReferenceController Controller = MakeController();
	struct FStep
	{
		const char* Marked;
		bool bOpen;
		bool bChanged;
		const char* Query;
		int32 AtIndex;
	};
	const FStep Steps[] = {
		{ "see @|", true, false, "", 4 },
		{ "see @p|", true, true, "p", 4 },
		{ "see @p|", true, false, "", 4 },
		{ "see @P|", true, true, "P", 4 },
		{ "see @|", true, true, "", 4 },
		{ "see @p|", true, true, "p", 4 },
		{ "see @p |", false, false, "", -1 },
		{ "see @p |", false, false, "", -1 },
		{ "see @p|", true, true, "p", 4 },
	};
	for (const FStep& Step : Steps)
	{
		SCOPED_TRACE(Step.Marked);
		const FAtFileReferenceController::FDropdownDelta Delta = Update(Controller, Step.Marked);
		EXPECT_EQ(Delta.bShouldOpen, Step.bOpen);
		EXPECT_EQ(Delta.bShouldClose, !Step.bOpen);
		EXPECT_EQ(Delta.bQueryChanged, Step.bChanged);
		EXPECT_EQ(Utf8(Delta.Query), Step.Query);
		EXPECT_EQ(Delta.AtIndex, Step.AtIndex);
	}
	Controller.Reset();
	EXPECT_TRUE(Update(Controller, "see @p|").bQueryChanged);
	Controller.Reset();
	Controller.SetLastQuery(TEXT("p"));
	EXPECT_FALSE(Update(Controller, "see @p|").bQueryChanged);
}

TEST(AtController, ReplacesTheTokenAndLeavesOneBlank)
{
	const std::tuple<const char*, const char*, int32> Cases[] = {
		{ "@ab|cd", "File.h ", 7 },
		{ "@ab| next", "File.h next", 6 },
		{ "see @ab|, then", "see File.h , then", 11 },
		{ "@ab|\nnext", "File.h \nnext", 7 },
		{ "@|", "File.h ", 7 },
		{ "@ab next|", "File.h next", 6 },
		{ "@a @b|", "@a File.h ", 10 },
	};
	const FAtFileReferenceController Controller = MakeController();
	for (const auto& [Marked, Text, Cursor] : Cases)
	{
		SCOPED_TRACE(Marked);
		const FMarkedText Input(Marked);
		const FAtFileReferenceController::FReplacement Result =
			Controller.BuildReplacement(Input.Text, FTextLocation(0, Input.Cursor), TEXT("File.h"));
		EXPECT_TRUE(Result.bApplied);
		EXPECT_EQ(Utf8(Result.NewText), Text);
		EXPECT_EQ(Result.NewCursor, FTextLocation(0, Cursor));
	}
	const FAtFileReferenceController::FReplacement None =
		Controller.BuildReplacement(TEXT("no token"), FTextLocation(0, 8), TEXT("File.h"));
	EXPECT_FALSE(None.bApplied);
	EXPECT_EQ(Utf8(None.NewText), "");
	EXPECT_EQ(None.NewCursor, FTextLocation(0, 0));
}

TEST(AtController, WithoutAMappingTheCursorIsTheEndAndComesBackAsALine)
{
	FAtFileReferenceController Controller(nullptr, nullptr);
	EXPECT_TRUE(Controller.Update(TEXT("see @pla"), FTextLocation()).bShouldOpen);
	EXPECT_EQ(Controller.BuildReplacement(TEXT("see @pla"), FTextLocation(), TEXT("P.h")).NewCursor, FTextLocation(8, 0));
}

TEST(AtController, SuppressionIsAFlagAndKeepsTheState)
{
	FAtFileReferenceController Controller = MakeController();
	EXPECT_TRUE(Update(Controller, "@a|").bQueryChanged);
	{
		const FAtFileReferenceController::FScopedSuppression Unseen = Controller.SuppressUpdates();
		Update(Controller, "none|");
		Update(Controller, "@ab|");
	}
	EXPECT_FALSE(Update(Controller, "@a|").bQueryChanged) << "what came meanwhile was not seen";
	{
		const FAtFileReferenceController::FScopedSuppression Outer = Controller.SuppressUpdates();
		const FAtFileReferenceController::FDropdownDelta Delta = Update(Controller, "@ab|");
		EXPECT_FALSE(Delta.bShouldOpen || Delta.bShouldClose || Delta.bQueryChanged);
		EXPECT_EQ(Delta.AtIndex, -1);
		EXPECT_FALSE(Controller.BuildReplacement(TEXT("@ab"), FTextLocation(0, 3), TEXT("X")).bApplied);
		Controller.Reset();
		EXPECT_FALSE(Update(Controller, "@ab|").bShouldOpen) << "a reset does not end the suppression";
		{
			const FAtFileReferenceController::FScopedSuppression Inner = Controller.SuppressUpdates();
		}
		EXPECT_TRUE(Update(Controller, "@ab|").bShouldOpen) << "the inner one ended both";
	}
	EXPECT_TRUE(Update(Controller, "@abc|").bQueryChanged);
}
