#pragma once

#include "Text/ShaperFont.h"

#include <memory>
#include <vector>

/**
 * One line of the text (between line breaks) that cannot be taken word by word: mixed directions, emoji sequences,
 * scripts that join or stack. It is itemised and shaped as a whole once; wrapping picks ranges of its stops.
 * Indices count UTF-16 units from the line's begin.
 */
class FComplexLine
{
public:
	/** A place where the caret may stand; covers the units up to the next stop. */
	struct FStop
	{
		int32 Begin = 0;
		/** Of the cluster: its first glyph, or behind its last one where the text runs to the left. */
		int32 Glyph = 0;
		/** Advances of all stops before, in reading order. */
		float X = 0.0f;
		int32 Item : 27 = 0;
		uint32 bBreakBefore : 1 = 0;
		uint32 bBlank : 1 = 0;
		/** Not within a ligature. Lines part only here. */
		uint32 bCluster : 1 = 0;
		/** False where an item begins within a grapheme. */
		uint32 bCaret : 1 = 0;
	};

	/** A stretch of stops in one direction, placed on a line. */
	struct FSegment
	{
		int32 FirstStop = 0;
		int32 EndStop = 0;
		int32 Item = 0;
		int32 Level = 0;
		float X = 0.0f;
		float Width = 0.0f;
		bool IsRightToLeft() const { return (Level & 1) != 0; }
	};

	FComplexLine(FShaperFont& Font, TextUnits::FView Text);

	/** Not counting the last entry, which ends the line. */
	int32 GetStopCount() const { return static_cast<int32>(Stops.size()) - 1; }
	const FStop& GetStop(int32 Stop) const { return Stops[static_cast<size_t>(Stop)]; }
	/** The last stop at or before an index. */
	int32 FindStop(int32 Index) const;
	/** End of the stops from First to End that are not blank. */
	int32 TrimBlanks(int32 First, int32 End) const;
	/** Where a line that begins at First ends. Always further than First. */
	int32 FindLineEnd(int32 First, float Width) const;

	float GetCaretX(int32 First, int32 End, int32 Index) const;
	int32 GetIndexAt(int32 First, int32 End, float X) const;
	void GetSpans(int32 First, int32 End, int32 Begin, int32 EndIndex, TArray<FParagraphSpan>& OutSpans) const;
	TSharedPtr<const FGlyphRun> MakeRun(int32 First, int32 End) const;
	int32 GetNextStop(int32 Index) const;
	int32 GetPreviousStop(int32 Index) const;

private:
	struct FGlyph
	{
		uint32 Index = 0;
		int16 Width = 0;
		int16 X = 0;
		int16 Y = 0;
	};
	struct FItem
	{
		std::shared_ptr<const FPlatformFont> Font;
		int32 Level = 0;
		int32 GlyphBegin = 0;
		int32 GlyphEnd = 0;
		int32 FirstStop = 0;
		int32 EndStop = 0;
	};
	struct FBuild;
	struct FCluster;
	void AddItem(FBuild& Build, const PangoItem& Item);
	void ShapePart(FBuild& Build, const PangoAnalysis& Analysis, const char* Start, int32 Length);
	/** Brings a tab to the next stop, and room between letters after every caret. */
	static void StretchCluster(const FBuild& Build, FCluster& Cluster);
	void AddStops(const FBuild& Build, const FCluster& Cluster, bool bFirstOfItem);
	/** In visual order. */
	void LayOut(int32 First, int32 End, std::vector<FSegment>& OutSegments) const;

	std::vector<FStop> Stops;
	std::vector<FItem> Items;
	std::vector<FGlyph> Glyphs;
	bool bRightToLeft = false;
};
