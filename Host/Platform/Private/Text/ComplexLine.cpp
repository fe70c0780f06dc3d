#include "Text/ComplexLine.h"

#include "Host/HostUtf8.h"

#include <algorithm>
#include <cmath>

// The long way for a line that has more than words in one direction. It is itemised (one direction, one font each),
// shaped as a whole, and cut into stops: the places where a caret may stand, in the order of reading, with the width of
// all that comes before. Wrapping chooses ranges of stops; only when such a range is placed are its items put into
// visual order.

namespace
{
	/** Characters. Shaping takes time with the square of a run of marks, and forever with a megabyte of them. */
	constexpr int32 ShapedAtOnce = 512;

	/** The glyphs of one laid-out line. */
	class FComplexLineRun final : public FPlatformGlyphRun
	{
	public:
		struct FPart
		{
			std::shared_ptr<const FPlatformFont> Font;
			size_t GlyphBegin = 0;
		};
		struct FPlacedGlyph
		{
			uint32 Index = 0;
			float X = 0.0f;
			float Y = 0.0f;
		};

		virtual void Emit(FGlyphSink& Sink, float X, float Y) const override
		{
			for (size_t Part = 0; Part < Parts.size(); ++Part)
			{
				Sink.SetFont(*Parts[Part].Font);
				const size_t End = Part + 1 < Parts.size() ? Parts[Part + 1].GlyphBegin : Placed.size();
				for (size_t Glyph = Parts[Part].GlyphBegin; Glyph < End; ++Glyph)
				{
					Sink.Add(Placed[Glyph].Index, X + Placed[Glyph].X, Y + Placed[Glyph].Y);
				}
			}
		}

		std::vector<FPart> Parts;
		std::vector<FPlacedGlyph> Placed;
	};
}

/** What is needed while a line is being shaped. */
struct FComplexLine::FBuild
{
	FShaperFont& Font;
	TextUnits::FView Text;
	std::string Utf8;
	/** First unit of every character. */
	std::vector<int32> Units;
	std::vector<PangoLogAttr> Attributes;
	PangoGlyphString* Shaped = nullptr;
	int32 Character = 0;
	float X = 0.0f;
};

/** Glyphs that stand for characters together; lines part between clusters, never within one. */
struct FComplexLine::FCluster
{
	/** The first one in the text's order of glyphs, as FStop::Glyph. */
	int32 Glyph = 0;
	int32 FirstCharacter = 0;
	/** Characters before which a caret may stand. */
	int32 CaretCount = 0;
	float Width = 0.0f;
	/** Takes what widens the cluster. */
	FGlyph* LastGlyph = nullptr;
};

// 1. The text as UTF-8, with the first unit of each character. 2. Where lines and graphemes may part. 3. Items, each
// shaped in turn. 4. A last stop that ends the line.
FComplexLine::FComplexLine(FShaperFont& Font, TextUnits::FView Text)
{
	FBuild Build{ Font, Text, {}, {}, {}, pango_glyph_string_new() };
	Build.Utf8.reserve(Text.size() * 3);
	Build.Units.reserve(Text.size() + 1);
	for (int32 Unit = 0; Unit < static_cast<int32>(Text.size());)
	{
		Build.Units.push_back(Unit);
		HostAppendUtf8(Build.Utf8, TextUnits::GetDrawn(TextUnits::Decode(Text, Unit)));
	}
	Build.Units.push_back(static_cast<int32>(Text.size()));

	const int Bytes = static_cast<int>(Build.Utf8.size());
	Build.Attributes.resize(Build.Units.size());
	pango_get_log_attrs(
		Build.Utf8.c_str(), Bytes, -1, Font.GetLanguage(), Build.Attributes.data(), static_cast<int>(Build.Attributes.size()));

	bRightToLeft = TextUnits::StartsRightToLeft(Text);
	PangoAttrList* NoAttributes = pango_attr_list_new();
	GList* List = pango_itemize_with_base_dir(
		Font.GetContext(), bRightToLeft ? PANGO_DIRECTION_RTL : PANGO_DIRECTION_LTR, Build.Utf8.c_str(), 0, Bytes, NoAttributes, nullptr);
	for (const GList* Node = List; Node; Node = Node->next)
	{
		AddItem(Build, *static_cast<const PangoItem*>(Node->data));
	}
	g_list_free_full(List, [](gpointer Item) { pango_item_free(static_cast<PangoItem*>(Item)); });
	pango_attr_list_unref(NoAttributes);
	pango_glyph_string_free(Build.Shaped);

	FStop& End = Stops.emplace_back();
	End.Begin = static_cast<int32>(Text.size());
	End.Glyph = static_cast<int32>(Glyphs.size());
	End.X = Build.X;
	End.Item = static_cast<int32>(Items.size());
	End.bCluster = 1;
	End.bCaret = 1;
	Stops.shrink_to_fit();
	Items.shrink_to_fit();
	Glyphs.shrink_to_fit();
}

void FComplexLine::AddItem(FBuild& Build, const PangoItem& PangoItem)
{
	const char* const Start = Build.Utf8.c_str() + PangoItem.offset;
	const char* const End = Start + PangoItem.length;
	for (const char* Begin = Start; Begin < End;)
	{
		// Up to the grapheme behind the limit; a grapheme that goes on and on is cut.
		const char* Cursor = Begin;
		for (int32 Count = 0; Cursor < End; ++Count, Cursor = g_utf8_next_char(Cursor))
		{
			const bool bGrapheme = Build.Attributes[static_cast<size_t>(Build.Character + Count)].is_cursor_position;
			if (Count >= ShapedAtOnce && (bGrapheme || Count >= 2 * ShapedAtOnce))
			{
				break;
			}
		}
		ShapePart(Build, PangoItem.analysis, Begin, static_cast<int32>(Cursor - Begin));
		Begin = Cursor;
	}
}

// Glyphs of the part, then its clusters.
void FComplexLine::ShapePart(FBuild& Build, const PangoAnalysis& Analysis, const char* Start, int32 Length)
{
	++Build.Font.GetSystem().GetCounters().WordsShaped;
	PangoGlyphString& Shaped = *Build.Shaped;
	pango_shape_with_flags(
		Start, Length, Build.Utf8.c_str(), static_cast<int>(Build.Utf8.size()), &Analysis, &Shaped, PANGO_SHAPE_ROUND_POSITIONS);

	FItem& Item = Items.emplace_back();
	Item.Font = Build.Font.GetSystem().FindOrAdd(Analysis.font);
	Item.Level = Analysis.level;
	Item.GlyphBegin = static_cast<int32>(Glyphs.size());
	Item.GlyphEnd = Item.GlyphBegin + Shaped.num_glyphs;
	Item.FirstStop = static_cast<int32>(Stops.size());
	for (int32 Glyph = 0; Glyph < Shaped.num_glyphs; ++Glyph)
	{
		const PangoGlyphInfo& Info = Shaped.glyphs[Glyph];
		FGlyph& Added = Glyphs.emplace_back();
		Added.Index = Info.glyph;
		Added.Width = static_cast<int16>(std::clamp(PANGO_PIXELS(Info.geometry.width), 0, 32767));
		Added.X = static_cast<int16>(std::clamp(PANGO_PIXELS(Info.geometry.x_offset), -32768, 32767));
		Added.Y = static_cast<int16>(std::clamp(PANGO_PIXELS(Info.geometry.y_offset), -32768, 32767));
	}

	// Glyphs come in visual order; clusters are taken in reading order.
	const bool bBackwards = (Item.Level & 1) != 0;
	const int32 Step = bBackwards ? -1 : 1;
	const int32 GlyphStop = bBackwards ? -1 : Shaped.num_glyphs;
	const char* Cursor = Start;
	for (int32 Glyph = bBackwards ? Shaped.num_glyphs - 1 : 0; Glyph != GlyphStop;)
	{
		// 1. The glyphs that share the cluster's first byte.
		FCluster Cluster;
		Cluster.Glyph = Item.GlyphBegin + (bBackwards ? Glyph + 1 : Glyph);
		const int32 FirstByte = Shaped.log_clusters[Glyph];
		for (; Glyph != GlyphStop && Shaped.log_clusters[Glyph] == FirstByte; Glyph += Step)
		{
			Cluster.LastGlyph = &Glyphs[static_cast<size_t>(Item.GlyphBegin + Glyph)];
			Cluster.Width += Cluster.LastGlyph->Width;
		}

		// 2. Its characters, up to where the next cluster begins.
		const char* const ClusterEnd = Start + (Glyph != GlyphStop ? Shaped.log_clusters[Glyph] : Length);
		Cluster.FirstCharacter = Build.Character;
		for (; Cursor < ClusterEnd; Cursor = g_utf8_next_char(Cursor), ++Build.Character)
		{
			Cluster.CaretCount += Build.Attributes[static_cast<size_t>(Build.Character)].is_cursor_position ? 1 : 0;
		}
		if (Build.Character == Cluster.FirstCharacter)
		{
			continue;
		}

		// 3. Its width, and the places within it where a caret may stand.
		StretchCluster(Build, Cluster);
		AddStops(Build, Cluster, static_cast<int32>(Stops.size()) == Item.FirstStop);
		Build.X += Cluster.Width;
	}
	Item.EndStop = static_cast<int32>(Stops.size());
}

void FComplexLine::StretchCluster(const FBuild& Build, FCluster& Cluster)
{
	if (!Cluster.LastGlyph)
	{
		return;
	}
	FGlyph& Last = *Cluster.LastGlyph;
	const TCHAR Unit = Build.Text[static_cast<size_t>(Build.Units[static_cast<size_t>(Cluster.FirstCharacter)])];
	if (Unit == TEXT('\t'))
	{
		const float Tab = Build.Font.GetTabWidth();
		Cluster.Width = (std::floor(Build.X / Tab) + 1.0f) * Tab - Build.X;
		Last.Width = static_cast<int16>(std::clamp(std::lround(Cluster.Width), 0L, 32767L));
	}
	else if (Build.Font.GetLetterSpace() != 0.0f && Cluster.CaretCount > 0)
	{
		const float Extra = Build.Font.GetLetterSpace() * static_cast<float>(Cluster.CaretCount);
		Last.Width = static_cast<int16>(std::lround(static_cast<float>(Last.Width) + Extra));
		Cluster.Width += Extra;
	}
}

void FComplexLine::AddStops(const FBuild& Build, const FCluster& Cluster, bool bFirstOfItem)
{
	// A ligature is one picture of several letters; the caret stands at even shares of its width.
	int32 Caret = 0;
	const int32 StopCount = std::max(Cluster.CaretCount, 1);
	for (int32 Character = Cluster.FirstCharacter; Character < Build.Character; ++Character)
	{
		const PangoLogAttr& Attribute = Build.Attributes[static_cast<size_t>(Character)];
		const bool bClusterStart = Character == Cluster.FirstCharacter;
		// A cluster that goes on with the grapheme before it needs no stop unless its item is new.
		if (!Attribute.is_cursor_position && !(bClusterStart && bFirstOfItem))
		{
			continue;
		}
		FStop& Stop = Stops.emplace_back();
		Stop.Begin = Build.Units[static_cast<size_t>(Character)];
		Stop.Glyph = Cluster.Glyph;
		Stop.X = Build.X + std::round(Cluster.Width * static_cast<float>(Caret) / static_cast<float>(StopCount));
		Stop.Item = static_cast<int32>(Items.size()) - 1;
		Stop.bBreakBefore = Attribute.is_line_break && Attribute.is_cursor_position && bClusterStart;
		const uint32 Drawn = TextUnits::GetDrawn(Build.Text[static_cast<size_t>(Stop.Begin)]);
		Stop.bBlank = Drawn == 0x20 || Drawn == 0x3000 || (Drawn >= 0x2000 && Drawn <= 0x200B && Drawn != 0x2007);
		Stop.bCluster = bClusterStart;
		Stop.bCaret = Attribute.is_cursor_position;
		++Caret;
	}
}

int32 FComplexLine::FindStop(int32 Index) const
{
	const auto Above =
		std::upper_bound(Stops.begin(), Stops.end(), Index, [](int32 Value, const FStop& Stop) { return Value < Stop.Begin; });
	return std::max(0, static_cast<int32>(Above - Stops.begin()) - 1);
}

int32 FComplexLine::TrimBlanks(int32 First, int32 End) const
{
	while (End > First && GetStop(End - 1).bBlank)
	{
		--End;
	}
	return End;
}

// 1. All that is left fits. 2. The last stop that fits, blanks not counted. 3. Back to where the line may part; else to
// the last whole cluster; else, when not even one fits, over the first one.
int32 FComplexLine::FindLineEnd(int32 First, float Width) const
{
	const int32 Count = GetStopCount();
	const float Limit = GetStop(First).X + Width;
	if (GetStop(TrimBlanks(First, Count)).X <= Limit)
	{
		return Count;
	}
	// The first stop whose right end is beyond the limit. Blanks hang.
	const auto Beyond =
		std::upper_bound(Stops.begin() + First + 1, Stops.end(), Limit, [](float Value, const FStop& Stop) { return Value < Stop.X; });
	int32 Fitting = static_cast<int32>(Beyond - Stops.begin()) - 1;
	while (Fitting < Count && GetStop(Fitting).bBlank)
	{
		++Fitting;
	}
	if (Fitting >= Count)
	{
		return Count;
	}
	for (int32 Stop = Fitting; Stop > First; --Stop)
	{
		if (GetStop(Stop).bBreakBefore)
		{
			return Stop;
		}
	}
	for (int32 Stop = Fitting; Stop > First; --Stop)
	{
		if (GetStop(Stop).bCluster && GetStop(Stop).bCaret)
		{
			return Stop;
		}
	}
	int32 Stop = First + 1;
	while (Stop < Count && !(GetStop(Stop).bCluster && GetStop(Stop).bCaret))
	{
		++Stop;
	}
	return Stop;
}

// 1. Segments of one item, in the order of reading. 2. That order turned into the visual one, level by level. 3. Their
// places.
void FComplexLine::LayOut(int32 First, int32 End, std::vector<FSegment>& OutSegments) const
{
	OutSegments.clear();
	const int32 InkEnd = TrimBlanks(First, End);
	for (int32 Stop = First; Stop < InkEnd;)
	{
		const int32 ItemIndex = GetStop(Stop).Item;
		const int32 SegmentEnd = std::min(InkEnd, Items[static_cast<size_t>(ItemIndex)].EndStop);
		FSegment& Segment = OutSegments.emplace_back();
		Segment.FirstStop = Stop;
		Segment.EndStop = SegmentEnd;
		Segment.Item = ItemIndex;
		Segment.Level = Items[static_cast<size_t>(ItemIndex)].Level;
		Segment.Width = GetStop(SegmentEnd).X - GetStop(Stop).X;
		Stop = SegmentEnd;
	}

	// From the highest level down to the lowest odd one, turn every run of segments at that level or above.
	int32 Highest = 0;
	int32 LowestOdd = 255;
	for (const FSegment& Segment : OutSegments)
	{
		Highest = std::max(Highest, Segment.Level);
		LowestOdd = Segment.IsRightToLeft() ? std::min(LowestOdd, Segment.Level) : LowestOdd;
	}
	for (int32 Level = Highest; Level >= LowestOdd; --Level)
	{
		for (auto Run = OutSegments.begin(); Run != OutSegments.end();)
		{
			Run = std::find_if(Run, OutSegments.end(), [Level](const FSegment& Segment) { return Segment.Level >= Level; });
			const auto RunEnd = std::find_if(Run, OutSegments.end(), [Level](const FSegment& Segment) { return Segment.Level < Level; });
			std::reverse(Run, RunEnd);
			Run = RunEnd;
		}
	}
	float X = 0.0f;
	for (FSegment& Segment : OutSegments)
	{
		Segment.X = X;
		X += Segment.Width;
	}

	if (InkEnd < End)
	{
		// Blanks at the end hang behind the text; in a line that runs to the left they would lie before its left edge.
		FSegment& Blanks = OutSegments.emplace_back();
		Blanks.FirstStop = InkEnd;
		Blanks.EndStop = End;
		Blanks.Item = GetStop(InkEnd).Item;
		Blanks.Level = bRightToLeft ? 1 : 0;
		Blanks.X = bRightToLeft ? 0.0f : X;
		Blanks.Width = bRightToLeft ? 0.0f : GetStop(End).X - GetStop(InkEnd).X;
	}
}

namespace
{
	/** x of a stop within a segment that holds it, or that ends before it. */
	float GetStopX(const FComplexLine& Line, const FComplexLine::FSegment& Segment, int32 Stop)
	{
		const float Distance = std::min(Line.GetStop(Stop).X - Line.GetStop(Segment.FirstStop).X, Segment.Width);
		return Segment.IsRightToLeft() ? Segment.X + Segment.Width - Distance : Segment.X + Distance;
	}
}

float FComplexLine::GetCaretX(int32 First, int32 End, int32 Index) const
{
	std::vector<FSegment> Segments;
	LayOut(First, End, Segments);
	int32 Stop = std::clamp(FindStop(Index), First, End);
	while (Stop > First && !GetStop(Stop).bCaret)
	{
		--Stop;
	}
	float LineEnd = 0.0f;
	for (const FSegment& Segment : Segments)
	{
		if (Stop >= Segment.FirstStop && Stop < Segment.EndStop)
		{
			return GetStopX(*this, Segment, Stop);
		}
		LineEnd = std::max(LineEnd, Segment.X + Segment.Width);
	}
	return bRightToLeft ? 0.0f : LineEnd;
}

// Every stop of the line is tried: in mixed directions places do not grow with indices, so there is nothing to search
// by.
int32 FComplexLine::GetIndexAt(int32 First, int32 End, float X) const
{
	std::vector<FSegment> Segments;
	LayOut(First, End, Segments);
	// Far outside, distances to all stops are alike in a float.
	X = std::clamp(X, -1.0f, GetStop(End).X - GetStop(First).X + 1.0f);
	int32 Best = First;
	float BestDistance = -1.0f;
	const auto Consider = [&](int32 Stop, float StopX)
	{
		const float Distance = std::abs(StopX - X);
		if (BestDistance < 0.0f || Distance < BestDistance)
		{
			BestDistance = Distance;
			Best = Stop;
		}
	};
	for (const FSegment& Segment : Segments)
	{
		for (int32 Stop = Segment.FirstStop; Stop < Segment.EndStop; ++Stop)
		{
			if (GetStop(Stop).bCaret)
			{
				Consider(Stop, GetStopX(*this, Segment, Stop));
			}
		}
	}
	Consider(End, GetCaretX(First, End, GetStop(End).Begin));
	return GetStop(Best).Begin;
}

void FComplexLine::GetSpans(int32 First, int32 End, int32 Begin, int32 EndIndex, TArray<FParagraphSpan>& OutSpans) const
{
	std::vector<FSegment> Segments;
	LayOut(First, End, Segments);
	const int32 FirstSelected = std::clamp(FindStop(Begin), First, End);
	const int32 EndSelected = std::clamp(FindStop(EndIndex), First, End);
	bool bOpen = false;
	for (const FSegment& Segment : Segments)
	{
		const int32 From = std::max(FirstSelected, Segment.FirstStop);
		const int32 To = std::min(EndSelected, Segment.EndStop);
		if (From >= To)
		{
			bOpen = false;
			continue;
		}
		const float A = GetStopX(*this, Segment, From);
		const float B = GetStopX(*this, Segment, To);
		const FParagraphSpan Span{ std::min(A, B), std::max(A, B) };
		if (Span.Right <= Span.Left)
		{
			continue;
		}
		if (bOpen && OutSpans.Last().Right == Span.Left)
		{
			OutSpans.Last().Right = Span.Right;
		}
		else
		{
			OutSpans.Add(Span);
		}
		bOpen = true;
	}
}

TSharedPtr<const FGlyphRun> FComplexLine::MakeRun(int32 First, int32 End) const
{
	std::vector<FSegment> Segments;
	LayOut(First, End, Segments);
	const TSharedRef<FComplexLineRun> Run = MakeShared<FComplexLineRun>();
	for (const FSegment& Segment : Segments)
	{
		const FItem& Item = Items[static_cast<size_t>(Segment.Item)];
		if (Segment.FirstStop >= TrimBlanks(First, End))
		{
			continue;
		}
		const bool bToItemEnd = Segment.EndStop >= Item.EndStop;
		int32 GlyphBegin = GetStop(Segment.FirstStop).Glyph;
		int32 GlyphEnd = bToItemEnd ? Item.GlyphEnd : GetStop(Segment.EndStop).Glyph;
		if (Segment.IsRightToLeft())
		{
			GlyphEnd = GlyphBegin;
			GlyphBegin = bToItemEnd ? Item.GlyphBegin : GetStop(Segment.EndStop).Glyph;
		}
		if (Run->Parts.empty() || Run->Parts.back().Font != Item.Font)
		{
			Run->Parts.push_back(FComplexLineRun::FPart{ Item.Font, Run->Placed.size() });
		}
		Run->InkAbove = std::max(Run->InkAbove, Item.Font->GetAscent());
		Run->InkBelow = std::max(Run->InkBelow, Item.Font->GetDescent());
		float X = Segment.X;
		for (int32 Glyph = GlyphBegin; Glyph < GlyphEnd; ++Glyph)
		{
			const FGlyph& Source = Glyphs[static_cast<size_t>(Glyph)];
			if (Source.Index != PANGO_GLYPH_EMPTY)
			{
				Run->Placed.push_back(FComplexLineRun::FPlacedGlyph{ Source.Index, X + Source.X, static_cast<float>(Source.Y) });
			}
			X += Source.Width;
		}
		Run->InkRight = std::max(Run->InkRight, X);
	}
	// Stacked marks and slanted letters reach beyond their font's box.
	const float Margin = Run->InkAbove + Run->InkBelow;
	Run->InkAbove += Margin;
	Run->InkBelow += Margin;
	Run->InkLeft = -Margin;
	Run->InkRight += Margin;
	if (Run->Placed.empty())
	{
		return nullptr;
	}
	return Run;
}

int32 FComplexLine::GetNextStop(int32 Index) const
{
	int32 Stop = FindStop(Index) + 1;
	while (Stop < GetStopCount() && !GetStop(Stop).bCaret)
	{
		++Stop;
	}
	return GetStop(std::min(Stop, GetStopCount())).Begin;
}

int32 FComplexLine::GetPreviousStop(int32 Index) const
{
	int32 Stop = FindStop(Index);
	if (GetStop(Stop).Begin >= Index || !GetStop(Stop).bCaret)
	{
		--Stop;
	}
	while (Stop > 0 && !GetStop(Stop).bCaret)
	{
		--Stop;
	}
	return GetStop(std::max(Stop, 0)).Begin;
}
