#pragma once

#include "Host/TextShaper.h"
#include "Support/Base/PinnedFonts.h"
#include "Support/Base/Printers.h"
#include "Text/PangoTextShaper.h"

#include <string>
#include <vector>

/** Shapes texts with pinned fonts. The monospaced font makes widths countable. */
class FTextTest : public testing::Test
{
protected:
	static FPangoTextShaper& Shaper()
	{
		static const std::unique_ptr<FPangoTextShaper> Instance = []
		{
			UsePinnedFonts();
			return std::make_unique<FPangoTextShaper>();
		}();
		return *Instance;
	}
	static FSlateFontInfo Body() { return FSlateFontInfo(FName(), 10.0f, FName(TEXT("Regular"))); }
	static FSlateFontInfo Mono() { return FSlateFontInfo(FName(TEXT("Mono")), 12.0f, FName(TEXT("Mono"))); }
	static TSharedRef<FTextParagraph> Make(FStringView Text, const FSlateFontInfo& Font = Mono(), float Scale = 1.0f)
	{
		return StaticCastSharedRef<FTextParagraph>(Shaper().MakeParagraph(Text, Font, Scale));
	}
	/** Width of one letter of the monospaced font. */
	static float Letter() { return Make(TEXT("x"))->GetSize().X; }

	/** The lines' texts, each in brackets; what hangs or ends a line included. */
	static std::string Lines(const ITextParagraph& Paragraph, FStringView Text)
	{
		std::string Result;
		for (int32 Line = 0; Line < Paragraph.GetLineCount(); ++Line)
		{
			const FParagraphLine& Entry = Paragraph.GetLine(Line);
			Result += "[" + Utf8(Text.Mid(Entry.BeginIndex, Entry.EndIndex - Entry.BeginIndex)) + "]";
		}
		return Result;
	}
	/** All caret stops from the text's begin to its end, as "0 1 3". */
	static std::string Steps(const ITextParagraph& Paragraph, int32 Length)
	{
		std::string Result = "0";
		for (int32 Index = 0, Count = 0; Index < Length && Count < 1000; ++Count)
		{
			Index = Paragraph.GetNextGrapheme(Index);
			Result += " " + std::to_string(Index);
		}
		return Result;
	}
	static std::string StepsBack(const ITextParagraph& Paragraph, int32 Length)
	{
		std::string Result = std::to_string(Length);
		for (int32 Index = Length, Count = 0; Index > 0 && Count < 1000; ++Count)
		{
			Index = Paragraph.GetPreviousGrapheme(Index);
			Result = std::to_string(Index) + " " + Result;
		}
		return Result;
	}
};
