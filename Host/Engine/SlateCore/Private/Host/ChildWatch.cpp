#include "Host/ChildWatch.h"

#include "Widgets/SWidget.h"

#include <algorithm>

// Two flags for each child and lists made from them. Bound children out of view are the difficult ones: their size may
// change at any time, and nobody says so. While they are few all are asked in each frame; when they are many, a share in
// turn, so that a change is noticed some frames late instead of every frame being slow.

namespace
{
	/**
	 * Widgets out of view whose size can change by itself: so many are measured in each frame, and when there are more of
	 * them, a smaller share in turn. Those lie about in memory, so that one of them costs as much as several of few.
	 */
	constexpr uint64 MeasuredTogether = 200;
	constexpr uint64 MeasuredInTurn = 32;
}

void FChildWatch::Reset(int32 Count)
{
	bTooManyBound = bTooManyBound && Count >= Flags.Num();
	Flags.Reset();
	Flags.SetNumZeroed(Count);
	Changed.Reset();
	Bound.Reset();
	bBoundStale = false;
}

void FChildWatch::Grow(int32 Count)
{
	const int32 Known = Flags.Num();
	Flags.SetNumZeroed(Count);
	for (int32 Index = Known; Index < Count; ++Index)
	{
		NoteChanged(Index);
	}
}

void FChildWatch::NoteChanged(int32 Index)
{
	if (Flags.IsValidIndex(Index) && (Flags[Index] & ChangedFlag) == 0)
	{
		Flags[Index] |= ChangedFlag;
		Changed.Add(Index);
	}
}

TArray<int32> FChildWatch::TakeChanged()
{
	for (const int32 Index : Changed)
	{
		Flags[Index] &= static_cast<uint8>(~ChangedFlag);
	}
	TArray<int32> Taken = MoveTemp(Changed);
	Changed.Reset();
	return Taken;
}

void FChildWatch::SetBound(int32 Index, bool bBound)
{
	if (!Flags.IsValidIndex(Index) || ((Flags[Index] & BoundFlag) != 0) == bBound)
	{
		return;
	}
	Flags[Index] ^= BoundFlag;
	bBoundStale = true;
}

const TArray<int32>& FChildWatch::GetBound() const
{
	if (bBoundStale)
	{
		bBoundStale = false;
		Bound.Reset();
		for (int32 Index = 0; Index < Flags.Num(); ++Index)
		{
			if ((Flags[Index] & BoundFlag) != 0)
			{
				Bound.Add(Index);
			}
		}
	}
	return Bound;
}

void FChildWatch::MeasureInTurn(int32 ShownBegin, int32 ShownEnd, bool bAll, TFunctionRef<bool(int32 Index)> Measure)
{
	const uint64& Measured = SWidget::GetCounters().Measured;
	const uint64 MeasuredLimit = bAll ? ~uint64(0) : Measured + (bTooManyBound ? MeasuredInTurn : MeasuredTogether);
	const TArray<int32>& Children = GetBound();
	const int32 Count = Children.Num();
	const int32 First =
		static_cast<int32>(std::lower_bound(Children.GetData(), Children.GetData() + Count, TurnIndex) - Children.GetData());
	TurnIndex = 0;
	for (int32 Step = 0; Step < Count; ++Step)
	{
		const int32 Index = Children[(First + Step) % Count];
		if (Index >= ShownBegin && Index < ShownEnd)
		{
			continue;
		}
		if (Measured >= MeasuredLimit)
		{
			TurnIndex = Index;
			bTooManyBound = true;
			return;
		}
		if (!Measure(Index))
		{
			return;
		}
	}
	bTooManyBound = false;
}
