#include "Support/UiDriver.h"

#include "Slate/Private/Framework/Text/TextEditor.h"

#include <algorithm>
#include <random>

namespace
{
	/** The document with its caret as "|" and, where there is a selection, its anchor as "^". */
	std::string Marked(const FTextEditor& Editor)
	{
		const FTextLocation Caret = Editor.GetCaret();
		const FTextLocation Anchor = Editor.GetAnchor();
		FString Result;
		for (int32 Line = 0; Line < Editor.GetDocument().GetLineCount(); ++Line)
		{
			FString Text = Editor.GetDocument().GetLine(Line);
			const bool bCaret = Caret.GetLineIndex() == Line;
			const bool bAnchor = Anchor.GetLineIndex() == Line && Editor.HasSelection();
			if (bAnchor && (!bCaret || Anchor.GetOffset() > Caret.GetOffset()))
			{
				Text.InsertAt(Anchor.GetOffset(), TEXT('^'));
			}
			if (bCaret)
			{
				Text.InsertAt(Caret.GetOffset(), TEXT('|'));
			}
			if (bAnchor && bCaret && Anchor.GetOffset() < Caret.GetOffset())
			{
				Text.InsertAt(Anchor.GetOffset(), TEXT('^'));
			}
			Result += Line > 0 ? TEXT("\n") : TEXT("");
			Result += Text;
		}
		return Utf8(Result);
	}

	FString ToFString(const std::string& Text)
	{
		return FString(FUTF8ToTCHAR(Text.c_str(), static_cast<int32>(Text.size())));
	}

	/** Sets text, caret and anchor from the form that Marked gives. */
	void Load(FTextEditor& Editor, const std::string& Text)
	{
		FString Plain;
		int32 Line = 0;
		int32 Offset = 0;
		FTextLocation Caret;
		TOptional<FTextLocation> Anchor;
		for (const TCHAR Unit : ToFString(Text))
		{
			if (Unit == TEXT('|'))
			{
				Caret = FTextLocation(Line, Offset);
			}
			else if (Unit == TEXT('^'))
			{
				Anchor = FTextLocation(Line, Offset);
			}
			else
			{
				Plain += Unit;
				Line += Unit == TEXT('\n') ? 1 : 0;
				Offset = Unit == TEXT('\n') ? 0 : Offset + 1;
			}
		}
		Editor.SetText(Plain, false);
		Editor.Select(Anchor.IsSet() ? Anchor.GetValue() : Caret, Caret);
	}

	/** Commands by word; "s:" in front selects. Time passes only by "wait". */
	void RunCommands(FTextEditor& Editor, const std::vector<std::string>& Commands, double& Now)
	{
		// clang-format off
		static const std::vector<std::pair<std::string, ETextMove>> Moves = {
			{ "left", ETextMove::Left }, { "right", ETextMove::Right }, { "wordleft", ETextMove::WordLeft },
			{ "wordright", ETextMove::WordRight },
			{ "home", ETextMove::LineBegin }, { "end", ETextMove::LineEnd }, { "top", ETextMove::DocumentBegin },
			{ "bottom", ETextMove::DocumentEnd },
		};
		// clang-format on
		for (const std::string& Command : Commands)
		{
			const bool bSelect = Command.rfind("s:", 0) == 0;
			const std::string Word = bSelect ? Command.substr(2) : Command;
			bool bFound = true;
			if (Word.rfind("type ", 0) == 0)
			{
				Editor.Insert(ToFString(Word.substr(5)), ETextInsert::Typed, Now);
			}
			else if (Word.rfind("paste ", 0) == 0)
			{
				Editor.Insert(ToFString(Word.substr(6)), ETextInsert::Pasted, Now);
			}
			else if (Word == "back" || Word == "wordback")
			{
				Editor.DeleteBackward(Word == "wordback", Now);
			}
			else if (Word == "delete" || Word == "worddelete")
			{
				Editor.DeleteForward(Word == "worddelete", Now);
			}
			else if (Word == "undo")
			{
				Editor.Undo();
			}
			else if (Word == "redo")
			{
				Editor.Redo();
			}
			else if (Word == "all")
			{
				Editor.SelectAll();
			}
			else if (Word == "cut")
			{
				Editor.DeleteSelection();
			}
			else if (Word == "wait")
			{
				Now += 2.0;
			}
			else
			{
				bFound = false;
				for (const auto& [Name, Move] : Moves)
				{
					if (Name == Word)
					{
						Editor.Move(Move, bSelect);
						bFound = true;
					}
				}
			}
			ASSERT_TRUE(bFound) << Command;
		}
	}

	struct FEditCase
	{
		std::string Start;
		std::vector<std::string> Commands;
		std::string Expected;
	};
}

/** The core itself has no widget; the fixture is there for the text shaper, which knows clusters and words. */
class FTextEditorTest : public FWidgetTest
{
protected:
	FShapedTextBreaks Breaks;
	FTextEditor Editor{ Breaks };
	double Now = 1000.0;

	void Check(const std::vector<FEditCase>& Cases)
	{
		for (const FEditCase& Case : Cases)
		{
			SCOPED_TRACE(Case.Start + " " + ::testing::PrintToString(Case.Commands));
			Load(Editor, Case.Start);
			RunCommands(Editor, Case.Commands, Now);
			EXPECT_EQ(Marked(Editor), Case.Expected);
		}
	}
};

TEST_F(FTextEditorTest, MovesAndSelections)
{
	Check({
		{ "ab|c", { "left" }, "a|bc" },
		{ "abc|", { "right" }, "abc|" },
		{ "ab|\ncd", { "right" }, "ab\n|cd" },
		{ "ab\n|cd", { "left" }, "ab|\ncd" },
		{ "|one two", { "wordright" }, "one |two" },
		{ "one two|", { "wordleft" }, "one |two" },
		{ "one\n|two", { "wordleft" }, "one|\ntwo" },
		{ "one|\ntwo", { "wordright" }, "one\n|two" },
		{ "on|e", { "home" }, "|one" },
		{ "o|ne\ntwo", { "end" }, "one|\ntwo" },
		{ "one\nt|wo", { "top" }, "|one\ntwo" },
		{ "on|e\ntwo", { "bottom" }, "one\ntwo|" },
		{ "a|bc", { "s:right" }, "a^b|c" },
		{ "a|bc", { "s:left" }, "|a^bc" },
		{ "a|bc", { "s:right", "s:left" }, "a|bc" },
		{ "a^b|c", { "left" }, "a|bc" },
		{ "a|b^c", { "right" }, "ab|c" },
		{ "one\nt|wo", { "all" }, "^one\ntwo|" },
		{ "one |two", { "s:bottom" }, "one ^two|" },
	});
}

TEST_F(FTextEditorTest, Changes)
{
	Check({
		{ "a|b", { "type x" }, "ax|b" },
		{ "a^b|c", { "type xy" }, "axy|c" },
		{ "ab|\ncd", { "delete" }, "ab|cd" },
		{ "ab\n|cd", { "back" }, "ab|cd" },
		{ "|ab", { "back" }, "|ab" },
		{ "ab|", { "delete" }, "ab|" },
		{ "one two|", { "wordback" }, "one |" },
		{ "|one two", { "worddelete" }, "|two" },
		{ "o^ne\ntw|o", { "back" }, "o|o" },
		{ "o^ne\ntw|o", { "paste A\r\nB\rC" }, "oA\nB\nC|o" },
		{ "a|b", { "type \n" }, "a\n|b" },
		{ "a^b|c", { "paste " }, "a^b|c" },
		{ "a^b|c", { "cut" }, "a|c" },
	});
}

TEST_F(FTextEditorTest, OneStepOfUndoIsOneThingDone)
{
	Check({
		{ "|", { "type a", "type b", "type c", "undo" }, "|" },
		{ "|", { "type a", "type b", "undo", "redo" }, "ab|" },
		{ "|", { "type a", "wait", "type b", "undo" }, "a|" },
		{ "|", { "type ab", "left", "type c", "undo" }, "a|b" },
		{ "|", { "type ab", "type \n", "type cd", "undo" }, "ab\n|" },
		{ "|", { "type ab", "type \n", "type cd", "undo", "undo" }, "ab|" },
		{ "|", { "type ab", "paste X", "type cd", "undo" }, "abX|" },
		{ "|", { "type ab", "paste X", "type cd", "undo", "undo" }, "ab|" },
		{ "abcd|", { "back", "back", "undo" }, "abcd|" },
		{ "|abcd", { "delete", "delete", "undo" }, "|abcd" },
		{ "|abcd", { "delete", "delete", "undo", "redo" }, "|cd" },
		{ "ab\n|cd", { "back", "back", "undo" }, "ab|cd" },
		{ "a^b|c", { "type x", "type y", "undo" }, "a^b|c" },
		{ "ab|c^d", { "paste X\nY", "undo" }, "ab|c^d" },
		{ "|ab", { "type x", "back", "undo" }, "x|ab" },
		{ "|", { "type a", "undo", "type b", "redo" }, "b|" },
		{ "|", { "undo", "redo" }, "|" },
	});
}

TEST_F(FTextEditorTest, ClustersAreNeverCut)
{
	const std::string Flag = "\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA"; // Two regional letters.
	const std::string Family = "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7"; // Three joined persons.
	const std::string Accented = "e\xCC\x81"; // Letter and combining accent.
	for (const std::string& Cluster : { Flag, Family, Accented })
	{
		Check({
			{ "a" + Cluster + "|b", { "left" }, "a|" + Cluster + "b" },
			{ "a|" + Cluster + "b", { "right" }, "a" + Cluster + "|b" },
			{ "a" + Cluster + "|b", { "back" }, "a|b" },
			{ "a|" + Cluster + "b", { "delete" }, "a|b" },
			{ "a|" + Cluster + "b", { "s:right", "type x" }, "ax|b" },
		});
	}
}

TEST_F(FTextEditorTest, FarIntoALongLineTheSameHolds)
{
	FString Long = FString::ChrN(100000, TEXT('x'));
	Long += TEXT(" \u00E9nd");
	Editor.SetText(Long, false);
	Editor.Move(ETextMove::DocumentEnd, false);
	Editor.Move(ETextMove::WordLeft, false);
	EXPECT_EQ(Editor.GetCaret().GetOffset(), 100001);
	Editor.Move(ETextMove::Right, false);
	EXPECT_EQ(Editor.GetCaret().GetOffset(), 100002);
}

TEST_F(FTextEditorTest, StrangeUnitsAreKept)
{
	FString Strange(TEXT("a"));
	Strange.AppendChar(TCHAR(0xD800));
	Strange.AppendChar(TCHAR(0));
	Strange += TEXT("b\rc\r\nd\n");
	Editor.SetText(Strange, false);
	EXPECT_EQ(Editor.GetDocument().GetLineCount(), 3);
	EXPECT_TRUE(Editor.GetDocument().GetText().Equals(Strange));
	EXPECT_FALSE(Editor.SetText(Strange, false));
	// An edit elsewhere and its undo leave them alone.
	Editor.Move(ETextMove::DocumentEnd, false);
	Editor.Insert(TEXT("x"), ETextInsert::Typed, Now);
	Editor.SelectAll();
	Editor.DeleteSelection();
	EXPECT_TRUE(Editor.GetDocument().IsEmpty());
	Editor.Undo();
	Editor.Undo();
	EXPECT_TRUE(Editor.GetDocument().GetText().Equals(Strange));
}

TEST_F(FTextEditorTest, OneLineTakesBreaksAsBlanks)
{
	Editor.SetAllowMultiLine(false);
	Load(Editor, "a|b");
	RunCommands(Editor, { "paste x\r\ny\nz" }, Now);
	EXPECT_EQ(Marked(Editor), "ax y z|b");
}

TEST_F(FTextEditorTest, BreaksAreFoundInLongTexts)
{
	// Around the ends of what is looked at together, and in the rest.
	for (const size_t Place : { 0u, 1u, 1022u, 1023u, 1024u, 1025u, 2047u, 2048u, 2998u })
	{
		for (const char* Break : { "\r", "\n", "\r\n", "\r\r" })
		{
			SCOPED_TRACE(Place);
			const std::string Text = std::string(3000, 'a').insert(Place, Break).append("\n");
			for (const bool bLines : { true, false })
			{
				std::string Expected = Text;
				for (size_t At = 0; (At = Expected.find('\r', At)) != std::string::npos;)
				{
					Expected.replace(At, Expected[At + 1] == '\n' ? 2 : 1, "\n");
				}
				std::replace(Expected.begin(), Expected.end(), '\n', bLines ? '\n' : ' ');
				FString Made = UTF8_TO_TCHAR(Text.c_str());
				FTextEditor::NormalizeBreaks(Made, bLines);
				EXPECT_EQ(Utf8(Made), Expected) << Break;
			}
		}
	}
}

TEST_F(FTextEditorTest, UndoAndRedoGoThroughEveryState)
{
	std::mt19937 Random(7);
	const auto Below = [&Random](int32 Count) { return static_cast<int32>(Random() % static_cast<uint32>(Count)); };
	const TCHAR* const Pieces[] = { TEXT("x"), TEXT("two words"), TEXT("\n"), TEXT("over\nthree\nlines"), TEXT("ended\r\n\n") };
	for (int32 Round = 0; Round < 200; ++Round)
	{
		FTextEditor Edited(Breaks);
		Edited.SetText(TEXT("first line\r\nsecond\n\nlast"), false);
		std::vector<std::string> States = { Utf8(Edited.GetDocument().GetText()) };
		const auto AnyPlace = [&]
		{
			const int32 Line = Below(Edited.GetDocument().GetLineCount());
			// Often at an end of a line: whole lines change hands there.
			const int32 Length = Edited.GetDocument().GetLineLength(Line);
			return FTextLocation(Line, Below(3) == 0 ? 0 : Below(2) == 0 ? Length : Below(Length + 1));
		};
		for (int32 Edit = 0; Edit < 8; ++Edit)
		{
			Edited.Select(AnyPlace(), AnyPlace());
			const bool bChanged =
				Below(4) == 0 ? Edited.DeleteSelection() : Edited.Insert(Pieces[Below(5)], ETextInsert::Pasted, static_cast<double>(Edit));
			if (bChanged)
			{
				States.push_back(Utf8(Edited.GetDocument().GetText()));
			}
			EXPECT_EQ(Edited.GetDocument().GetLength(), Edited.GetDocument().GetText().Len());
		}
		for (int32 Again = 0; Again < 2; ++Again)
		{
			for (size_t State = States.size() - 1; State > 0; --State)
			{
				ASSERT_TRUE(Edited.Undo());
				ASSERT_EQ(Utf8(Edited.GetDocument().GetText()), States[State - 1]);
			}
			ASSERT_FALSE(Edited.CanUndo());
			for (size_t State = 1; State < States.size(); ++State)
			{
				ASSERT_TRUE(Edited.Redo());
				ASSERT_EQ(Utf8(Edited.GetDocument().GetText()), States[State]);
			}
		}
	}
}

TEST_F(FTextEditorTest, ATextSetWholeIsAStepOrABeginning)
{
	Load(Editor, "old|");
	RunCommands(Editor, { "type x" }, Now);
	EXPECT_FALSE(Editor.SetText(TEXT("oldx"), true));
	EXPECT_TRUE(Editor.SetText(TEXT("oldX"), true)); // Letter case counts.
	Editor.Undo();
	EXPECT_EQ(Marked(Editor), "oldx|");
	Editor.SetText(TEXT("new"), false);
	EXPECT_FALSE(Editor.CanUndo());
	EXPECT_FALSE(Editor.CanRedo());
	EXPECT_EQ(Marked(Editor), "new|");
}
