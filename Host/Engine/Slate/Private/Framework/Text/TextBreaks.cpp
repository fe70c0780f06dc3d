#include "Framework/Text/TextBreaks.h"

#include "Fonts/SlateFontInfo.h"
#include "Host/TextShaper.h"

namespace
{
	/** Units looked at on each side of an offset. No cluster and hardly any word is longer. */
	constexpr int32 BreakWindow = 512;

	/** The surroundings of an offset, shaped only for their breaks. */
	struct FBreakWindow
	{
		FBreakWindow(FStringView Line, int32 Offset)
		{
			Begin = FMath::Max(Offset - BreakWindow, 0);
			int32 End = FMath::Min(Offset + BreakWindow, Line.Len());
			Begin -= TextUnits::IsInsidePair(Line, Begin) ? 1 : 0;
			End += TextUnits::IsInsidePair(Line, End) ? 1 : 0;
			Paragraph = ITextShaper::Get().MakeParagraph(TextUnits::MakeShapeable(Line.Mid(Begin, End - Begin)), FSlateFontInfo(), 1.0f);
		}
		int32 Begin = 0;
		TSharedPtr<ITextParagraph> Paragraph;
	};

	bool IsPlainUnit(TCHAR Unit)
	{
		return Unit >= 0x20 && Unit < 0x7F;
	}
}

FString TextUnits::MakeShapeable(FStringView Text)
{
	FString Result(Text);
	Result.ReplaceCharInline(TEXT('\r'), TEXT(' '), ESearchCase::CaseSensitive);
	return Result;
}

int32 FShapedTextBreaks::GetNextGrapheme(FStringView Line, int32 Offset) const
{
	if (Offset >= Line.Len())
	{
		return Line.Len();
	}
	// A plain character is a cluster of its own unless something that joins it follows.
	if (IsPlainUnit(Line[Offset]) && (Offset + 1 == Line.Len() || IsPlainUnit(Line[Offset + 1])))
	{
		return Offset + 1;
	}
	const FBreakWindow Window(Line, Offset);
	return Window.Begin + Window.Paragraph->GetNextGrapheme(Offset - Window.Begin);
}

int32 FShapedTextBreaks::GetPreviousGrapheme(FStringView Line, int32 Offset) const
{
	if (Offset <= 0)
	{
		return 0;
	}
	if (IsPlainUnit(Line[Offset - 1]) && (Offset < 2 || IsPlainUnit(Line[Offset - 2])))
	{
		return Offset - 1;
	}
	const FBreakWindow Window(Line, Offset);
	return Window.Begin + Window.Paragraph->GetPreviousGrapheme(Offset - Window.Begin);
}

int32 FShapedTextBreaks::GetNextWord(FStringView Line, int32 Offset) const
{
	const FBreakWindow Window(Line, Offset);
	return Window.Begin + Window.Paragraph->GetNextWord(Offset - Window.Begin);
}

int32 FShapedTextBreaks::GetPreviousWord(FStringView Line, int32 Offset) const
{
	const FBreakWindow Window(Line, Offset);
	return Window.Begin + Window.Paragraph->GetPreviousWord(Offset - Window.Begin);
}

void FShapedTextBreaks::GetWordAt(FStringView Line, int32 Offset, int32& OutBegin, int32& OutEnd) const
{
	const FBreakWindow Window(Line, Offset);
	Window.Paragraph->GetWordAt(Offset - Window.Begin, OutBegin, OutEnd);
	OutBegin += Window.Begin;
	OutEnd += Window.Begin;
}
