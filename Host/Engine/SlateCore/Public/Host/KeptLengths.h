#pragma once

#include "Host/ChildWatch.h"

/**
 * What a long panel keeps of its children, so that a frame costs what is in view and not what there is: how long each one
 * is along the panel, where it starts, and which are to be measured again. Children go by their index.
 *
 * Lengths come in one by one (Keep) while children are measured. Starts follow all at once (Update), from the first length
 * that has changed on; until then the starts of the last update stand, which are what the user saw last.
 */
class SLATECORE_API FKeptLengths
{
public:
	/** So many children. More than before are new ones at the end; the others keep what was kept of them. */
	void SetCount(int32 Count);
	/** Takes over what a child wants, padding included; zeros for a collapsed one. */
	void Keep(int32 Index, double Length, double Across);
	/** @return False when the starts were in line with the lengths already. */
	bool Update();

	int32 Num() const { return Lengths.Num(); }
	double GetLength(int32 Index) const { return Lengths[Index]; }

	// Good since the last update.

	/** Children that have a start. */
	int32 NumPlaced() const { return FMath::Max(Starts.Num() - 1, 0); }
	double GetStart(int32 Index) const { return Starts[Index]; }
	double GetEnd(int32 Index) const { return Starts[Index + 1]; }
	double GetTotal() const { return Starts.Num() > 0 ? Starts.Last() : 0.0; }
	/** The largest extent across the panel, never negative. */
	double GetMaxAcross() const { return MaxAcross; }
	/** The first child that ends at Where or after it; NumPlaced when there is none. */
	int32 FindEndingFrom(double Where) const;
	/** The first child that ends after Where; NumPlaced when there is none. */
	int32 FindEndingAfter(double Where) const;
	/** The first child that starts at Where or after it; NumPlaced when there is none. */
	int32 FindStartingFrom(double Where) const;

	/** The children arranged last, which are measured in every frame. */
	void SetShown(int32 Begin, int32 End);
	int32 GetShownBegin() const { return ShownBegin; }
	int32 GetShownEnd() const { return ShownEnd; }
	/** Measures the bound children that are not shown, some of them where they are many (FChildWatch::MeasureInTurn). */
	void MeasureInTurn(bool bAll, TFunctionRef<bool(int32 Index)> Measure) { Watch.MeasureInTurn(ShownBegin, ShownEnd, bAll, Measure); }

	FChildWatch Watch;

private:
	TArray<double> Lengths;
	TArray<double> Acrosses;
	/** Start of each child, and the end of the last. */
	TArray<double> Starts;
	double MaxAcross = 0.0;
	/** The first child whose length has changed since the starts were made. */
	int32 FirstChanged = 0;
	int32 ShownBegin = 0;
	int32 ShownEnd = 0;
	/** The largest extent across was taken away. */
	bool bMaxAcrossStale = false;
};
