#include "Fuzz/FuzzText.h"
#include "Support/Base/PinnedFonts.h"
#include "Support/ParagraphQueries.h"
#include "Text/PangoTextShaper.h"

// A text, wrapped at a width: every question about pixels and offsets has an answer within the text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	static const TUniquePtr<FPangoTextShaper> Shaper = []()
	{
		UsePinnedFonts();
		return MakeUnique<FPangoTextShaper>();
	}();
	FFuzzInput Input(Data, Size);
	const uint8 Bits = Input.TakeByte();
	const float Width = Input.TakeByte();
	const FString Text = MakeFuzzText(Input.TakeRest());
	FSlateFontInfo Font(FName(), (Bits & 1) != 0 ? 10.0f : 0.0f, FName(TEXT("Regular")));
	Font.LetterSpacing = (Bits & 2) != 0 ? -1500 : 0;
	const TSharedRef<ITextParagraph> Paragraph = Shaper->MakeParagraph(Text, Font, (Bits & 4) != 0 ? 1.5f : 1.0f);
	Paragraph->Wrap(Width);
	for (const std::string& Complaint : { AskEveryPixel(*Paragraph, Text.Len()), AskEveryOffset(*Paragraph, Text.Len()) })
	{
		if (!Complaint.empty())
		{
			std::fprintf(stderr, "%s\n", Complaint.c_str());
		}
		FUZZ_CHECK(Complaint.empty());
	}
	return 0;
}
