#include "Framework/Text/TextEditor.h"
#include "Fuzz/FuzzText.h"

namespace
{
	/** Characters and blanks, without a shaper. */
	class FPlainBreaks final : public ITextBreaks
	{
	public:
		int32 GetNextGrapheme(FStringView Line, int32 Offset) const override
		{
			return FMath::Min(Offset + (TextUnits::IsInsidePair(Line, Offset + 1) ? 2 : 1), Line.Len());
		}
		int32 GetPreviousGrapheme(FStringView Line, int32 Offset) const override
		{
			return FMath::Max(Offset - (TextUnits::IsInsidePair(Line, Offset - 1) ? 2 : 1), 0);
		}
		int32 GetNextWord(FStringView Line, int32 Offset) const override
		{
			int32 Index = FMath::Min(Offset + 1, Line.Len());
			while (Index < Line.Len() && Line[Index - 1] != TEXT(' '))
			{
				++Index;
			}
			return Index;
		}
		int32 GetPreviousWord(FStringView Line, int32 Offset) const override
		{
			int32 Index = FMath::Max(Offset - 1, 0);
			while (Index > 0 && Line[Index - 1] != TEXT(' '))
			{
				--Index;
			}
			return Index;
		}
		void GetWordAt(FStringView Line, int32 Offset, int32& OutBegin, int32& OutEnd) const override
		{
			OutBegin = GetPreviousWord(Line, Offset);
			OutEnd = GetNextWord(Line, Offset);
		}
	};

	void CheckPlaces(const FTextEditor& Editor)
	{
		const FTextDocument& Document = Editor.GetDocument();
		FUZZ_CHECK(Document.Clamp(Editor.GetCaret()) == Editor.GetCaret());
		FUZZ_CHECK(Document.Clamp(Editor.GetAnchor()) == Editor.GetAnchor());
		FUZZ_CHECK(Document.GetLength() == Document.GetText().Len());
		FUZZ_CHECK(Document.Equals(Document.GetText()));
	}

	/** @return Whether the history began anew. */
	bool DoOne(FTextEditor& Editor, FFuzzInput& Input, double& Now)
	{
		const uint8 Kind = Input.TakeByte();
		const bool bFlag = (Kind & 0x80) != 0;
		const auto TakeText = [&Input]() { return MakeFuzzText(Input.TakeBytes(Input.TakeByte() % 32)); };
		const auto TakePlace = [&Input]()
		{
			const int32 Line = static_cast<int8>(Input.TakeByte());
			return FTextLocation(Line, static_cast<int8>(Input.TakeByte()));
		};
		switch (Kind % 12)
		{
		case 0:
			Editor.Insert(TakeText(), ETextInsert::Typed, Now);
			break;
		case 1:
			Editor.Insert(TakeText(), ETextInsert::Pasted, Now);
			break;
		case 2:
			Editor.DeleteBackward(bFlag, Now);
			break;
		case 3:
			Editor.DeleteForward(bFlag, Now);
			break;
		case 4:
			Editor.Move(static_cast<ETextMove>(Input.TakeByte() % 8), bFlag);
			break;
		case 5:
			Editor.MoveTo(TakePlace(), bFlag);
			break;
		case 6:
			Editor.Undo();
			break;
		case 7:
			Editor.Redo();
			break;
		case 8:
			return Editor.SetText(TakeText(), bFlag) && !bFlag;
		case 9:
			Editor.SetAllowMultiLine(bFlag);
			break;
		case 10:
		{
			FTextLocation Begin;
			FTextLocation End;
			Editor.GetWordAt(TakePlace(), Begin, End);
			Editor.Select(Begin, End);
			break;
		}
		case 11:
			Now += Input.TakeByte() * 0.1;
			break;
		}
		return false;
	}
}

// Any run of edits: caret and selection stay in the text, undoing everything brings the first text back, and doing it
// again the last one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	FFuzzInput Input(Data, Size);
	FPlainBreaks Breaks;
	FTextEditor Editor(Breaks);
	FString First;
	double Now = 0.0;
	while (!Input.IsEmpty())
	{
		if (DoOne(Editor, Input, Now))
		{
			First = Editor.GetDocument().GetText();
		}
		CheckPlaces(Editor);
	}
	while (Editor.CanRedo())
	{
		Editor.Redo();
	}
	const FString Last = Editor.GetDocument().GetText();
	while (Editor.CanUndo())
	{
		Editor.Undo();
		CheckPlaces(Editor);
	}
	FUZZ_CHECK(Editor.GetDocument().GetText().Equals(First));
	while (Editor.CanRedo())
	{
		Editor.Redo();
		CheckPlaces(Editor);
	}
	FUZZ_CHECK(Editor.GetDocument().GetText().Equals(Last));
	return 0;
}
