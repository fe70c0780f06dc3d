#include "Framework/Text/TextViewLines.h"

#include "Framework/Text/TextBreaks.h"

namespace
{
	/** Laid-out paragraphs are forgotten beyond this number. */
	constexpr int32 MaxShapedSegments = 1024;
	/** How far before its limit a long line may be cut to find a blank. */
	constexpr int32 SegmentCutSearch = 128;
	/** Of a line that was changed; no more are in view. */
	constexpr int32 MaxKeptParagraphs = 16;
}

// Three stages of a line, each dearer than the one before: an estimated height, which costs a multiplication; segments, which
// say where a long line is cut; paragraphs, which know every glyph. A line goes up when it comes into view and down again when
// there are too many.

FTextViewLines::FTextViewLines(const FTextDocument& InDocument)
	: Document(InDocument)
{
	ResetAll();
}

void FTextViewLines::ChangeLines(int32 First, int32 Removed, int32 Added)
{
	// All of one line is most often a key in it.
	if (First == 0 && Removed == Entries.Num() && (Removed > 1 || Added > 1))
	{
		ResetAll();
		return;
	}
	const int32 Common = FMath::Min(Removed, Added);
	if (Added > Removed)
	{
		Entries.InsertDefaulted(First + Common, Added - Removed);
	}
	else if (Removed > Added)
	{
		Entries.RemoveAt(First + Common, Removed - Added);
	}
	for (int32 Line = First; Line < First + Added; ++Line)
	{
		ResetLine(Line);
	}
	ForgetTops(First);
	// Without wrapping the widest row says how far one can scroll; it may have been one of those that went.
	if (WrapWidth <= 0.0f)
	{
		WidestRow = 0.0f;
		ForEachParagraph([this](const ITextParagraph& Paragraph) { WidestRow = FMath::Max(WidestRow, Paragraph.GetSize().X); });
	}
}

void FTextViewLines::SetFont(const FSlateFontInfo& InFont, float InScale)
{
	if (Font == InFont && Scale == InScale)
	{
		return;
	}
	Font = InFont;
	Scale = InScale;
	Metrics = ITextShaper::Get().GetLineMetrics(Font, Scale);
	UnitWidth = 0.0f;
	ResetAll();
}

// Estimates are made anew at once, since they are cheap; measured heights become estimates until their lines are met
// again.
void FTextViewLines::SetWrapWidth(float Width)
{
	Width = FMath::Max(Width, 0.0f);
	if (WrapWidth == Width)
	{
		return;
	}
	WrapWidth = Width;
	WidestRow = 0.0f;
	for (int32 Line = 0; Line < Entries.Num(); ++Line)
	{
		FLineEntry& Entry = Entries[Line];
		if (!Entry.Segments)
		{
			Entry.Height = EstimateHeight(GetShownLength(Line));
			continue;
		}
		Entry.Height = 0.0f;
		for (FSegment& Segment : *Entry.Segments)
		{
			Segment.bMeasured = false;
			Segment.Height = EstimateHeight(Segment.End - Segment.Begin);
			Entry.Height += Segment.Height;
		}
	}
	ForgetTops(0);
}

// The line that held the old text and the one that holds the new one are laid out again; they need not be the same.
void FTextViewLines::SetPreedit(const FTextLocation& Place, FStringView Text)
{
	const FTextLocation OldPlace = PreeditPlace;
	const bool bHad = HasPreedit();
	PreeditPlace = Place;
	PreeditText = Text;
	if (bHad && OldPlace.GetLineIndex() < Entries.Num())
	{
		ResetLine(OldPlace.GetLineIndex());
	}
	if (HasPreedit())
	{
		ResetLine(PreeditPlace.GetLineIndex());
	}
}

float FTextViewLines::GetUnwrappedWidth() const
{
	float Width = 0.0f;
	ForEachParagraph([&Width](const ITextParagraph& Paragraph) { Width = FMath::Max(Width, Paragraph.GetUnwrappedWidth()); });
	return Width;
}

void FTextViewLines::ForEachParagraph(TFunctionRef<void(const ITextParagraph&)> Visit) const
{
	for (const FLineEntry& Entry : Entries)
	{
		for (int32 Index = 0; Entry.Segments && Index < Entry.Segments->Num(); ++Index)
		{
			if (const TSharedPtr<ITextParagraph>& Paragraph = (*Entry.Segments)[Index].Paragraph)
			{
				Visit(*Paragraph);
			}
		}
	}
}

int32 FTextViewLines::CountShapedLines() const
{
	int32 Count = 0;
	for (const FLineEntry& Entry : Entries)
	{
		Count += Entry.Segments && Entry.Segments->ContainsByPredicate([](const FSegment& Segment) { return Segment.Paragraph.IsValid(); })
			? 1
			: 0;
	}
	return Count;
}

int32 FTextViewLines::ToShown(const FTextLocation& Location) const
{
	const bool bBehind =
		HasPreedit() && Location.GetLineIndex() == PreeditPlace.GetLineIndex() && Location.GetOffset() > PreeditPlace.GetOffset();
	return Location.GetOffset() + (bBehind ? PreeditText.Len() : 0);
}

FTextLocation FTextViewLines::FromShown(int32 Line, int32 Shown) const
{
	if (HasPreedit() && Line == PreeditPlace.GetLineIndex() && Shown > PreeditPlace.GetOffset())
	{
		return FTextLocation(Line, FMath::Max(Shown - PreeditText.Len(), PreeditPlace.GetOffset()));
	}
	return FTextLocation(Line, Shown);
}

int32 FTextViewLines::GetShownLength(int32 Line) const
{
	return Document.GetLineLength(Line) + (HasPreedit() && Line == PreeditPlace.GetLineIndex() ? PreeditText.Len() : 0);
}

FString FTextViewLines::MakeShownText(int32 Line, int32 Begin, int32 End) const
{
	if (HasPreedit() && Line == PreeditPlace.GetLineIndex())
	{
		FString Whole = Document.GetLine(Line);
		Whole.InsertAt(FMath::Min(PreeditPlace.GetOffset(), Whole.Len()), PreeditText);
		return TextUnits::MakeShapeable(FStringView(Whole).Mid(Begin, End - Begin));
	}
	return TextUnits::MakeShapeable(FStringView(Document.GetLine(Line)).Mid(Begin, End - Begin));
}

// By the width of an average letter, measured once in a sentence.
float FTextViewLines::EstimateHeight(int32 Units) const
{
	if (WrapWidth <= 0.0f || Units == 0)
	{
		return Metrics.LineHeight;
	}
	if (UnitWidth == 0.0f)
	{
		const FStringView Sample(TEXT("the quick brown fox jumps over it "));
		UnitWidth = FMath::Max(ITextShaper::Get().MakeParagraph(Sample, Font, Scale)->GetUnwrappedWidth() / Sample.Len(), 1.0f);
	}
	return FMath::Max(FMath::CeilToFloat(static_cast<float>(Units) * UnitWidth / WrapWidth), 1.0f) * Metrics.LineHeight;
}

// Cut at a blank near the limit, else between two letters: a limit must hold for a line without blanks, too.
TArray<FTextViewLines::FSegment>& FTextViewLines::GetSegments(int32 Line)
{
	FLineEntry& Entry = Entries[Line];
	if (Entry.Segments)
	{
		return *Entry.Segments;
	}
	Entry.Segments = MakeUnique<TArray<FSegment>>();
	const int32 Length = GetShownLength(Line);
	if (Length <= MaxSegment)
	{
		// The height stays what it was, measured or estimated, until the paragraph is made.
		Entry.Segments->Add({ 0, Length, Entry.Height, false, nullptr, FString() });
		return *Entry.Segments;
	}
	FString Copy;
	if (HasPreedit() && Line == PreeditPlace.GetLineIndex())
	{
		Copy = MakeShownText(Line, 0, Length);
	}
	const FStringView Shown = Copy.IsEmpty() ? FStringView(Document.GetLine(Line)) : FStringView(Copy);
	float Height = 0.0f;
	for (int32 Begin = 0; Begin < Length;)
	{
		int32 End = FMath::Min(Begin + MaxSegment, Length);
		if (End < Length)
		{
			int32 Blank = End;
			while (Blank > End - SegmentCutSearch && Shown[Blank - 1] != TEXT(' '))
			{
				--Blank;
			}
			End = Blank > End - SegmentCutSearch ? Blank : End - (TextUnits::IsInsidePair(Shown, End) ? 1 : 0);
		}
		Entry.Segments->Add({ Begin, End, EstimateHeight(End - Begin), false, nullptr, FString() });
		Height += Entry.Segments->Last().Height;
		Begin = End;
	}
	Entry.Height = Height;
	ForgetTops(Line + 1);
	return *Entry.Segments;
}

TSharedRef<ITextParagraph> FTextViewLines::FindOrMakeParagraph(const FString& Text) const
{
	const FKeptParagraph* const Same =
		Kept.FindByPredicate([&Text](const FKeptParagraph& Each) { return Each.Text.Equals(Text, ESearchCase::CaseSensitive); });
	return Same ? Same->Paragraph.ToSharedRef() : ITextShaper::Get().MakeParagraph(Text, Font, Scale);
}

FTextViewLines::FSegment& FTextViewLines::Shape(const FTextViewBlock& Block)
{
	FSegment& Segment = GetSegments(Block.Line)[Block.Segment];
	if (!Segment.Paragraph)
	{
		FString Text = MakeShownText(Block.Line, Segment.Begin, Segment.End);
		Segment.Paragraph = FindOrMakeParagraph(Text);
		Segment.Text = Entries[Block.Line].Segments->Num() > 1 ? MoveTemp(Text) : FString();
		Segment.bMeasured = false;
		++ShapedSegments;
	}
	if (!Segment.bMeasured)
	{
		Segment.Paragraph->Wrap(WrapWidth);
		Segment.bMeasured = true;
		const FVector2f Size = Segment.Paragraph->GetSize();
		WidestRow = FMath::Max(WidestRow, Size.X);
		if (Size.Y != Segment.Height)
		{
			Entries[Block.Line].Height += Size.Y - Segment.Height;
			Segment.Height = Size.Y;
			ForgetTops(Block.Line + 1);
		}
	}
	return Segment;
}

void FTextViewLines::ResetLine(int32 Line)
{
	FLineEntry& Entry = Entries[Line];
	const bool bKeepHeight = Entry.Segments && Entry.Segments->Num() == 1 && GetShownLength(Line) <= MaxSegment;
	if (Entry.Segments)
	{
		// A line that is changed twice before it is shown again has nothing to keep the second time.
		Kept.Reset();
		for (FSegment& Segment : *Entry.Segments)
		{
			ShapedSegments -= Segment.Paragraph ? 1 : 0;
			if (Segment.Paragraph && !Segment.Text.IsEmpty() && Kept.Num() < MaxKeptParagraphs)
			{
				Kept.Add({ MoveTemp(Segment.Text), Segment.Paragraph });
			}
		}
		Entry.Segments.Reset();
	}
	// An edited line is most likely as high as before.
	Entry.Height = bKeepHeight ? Entry.Height : EstimateHeight(GetShownLength(Line));
	ForgetTops(Line + 1);
}

void FTextViewLines::ResetAll()
{
	Kept.Empty();
	Entries.Empty();
	Entries.AddDefaulted(Document.GetLineCount());
	for (int32 Line = 0; Line < Entries.Num(); ++Line)
	{
		Entries[Line].Height = EstimateHeight(GetShownLength(Line));
	}
	ForgetTops(0);
	ShapedSegments = 0;
	WidestRow = 0.0f;
}

// Sums are forgotten from the first changed line on and made again as far as they are asked for.
double FTextViewLines::GetTop(int32 Line)
{
	Tops.SetNum(Entries.Num() + 1);
	if (ValidTops == 0)
	{
		Tops[0] = 0.0;
		ValidTops = 1;
	}
	ValidTops = FMath::Min(ValidTops, Tops.Num());
	for (; ValidTops <= Line; ++ValidTops)
	{
		Tops[ValidTops] = Tops[ValidTops - 1] + Entries[ValidTops - 1].Height;
	}
	return Tops[Line];
}

bool FTextViewLines::StepBlock(FTextViewBlock& Block, int32 Direction)
{
	const int32 Segment = Block.Segment + Direction;
	if (Segment >= 0 && Segment < GetSegments(Block.Line).Num())
	{
		Block.Segment = Segment;
		return true;
	}
	const int32 Line = Block.Line + Direction;
	if (Line < 0 || Line >= Entries.Num())
	{
		return false;
	}
	Block.Line = Line;
	Block.Segment = Direction > 0 ? 0 : GetSegments(Line).Num() - 1;
	return true;
}

// Scrolling through a long text would keep all of it laid out otherwise.
void FTextViewLines::ForgetFarParagraphs(int32 FirstLine, int32 LastLine)
{
	if (ShapedSegments <= MaxShapedSegments)
	{
		return;
	}
	ShapedSegments = 0;
	for (int32 Line = 0; Line < Entries.Num(); ++Line)
	{
		FLineEntry& Entry = Entries[Line];
		if (!Entry.Segments)
		{
			continue;
		}
		const bool bNear = Line >= FirstLine && Line <= LastLine;
		if (!bNear && Entry.Segments->Num() == 1)
		{
			Entry.Segments.Reset();
			continue;
		}
		for (FSegment& Segment : *Entry.Segments)
		{
			if (!bNear)
			{
				Segment.Paragraph.Reset();
			}
			ShapedSegments += Segment.Paragraph ? 1 : 0;
		}
	}
}
