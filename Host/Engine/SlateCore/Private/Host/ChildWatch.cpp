#include "Host/ChildWatch.h"

void FChildWatch::Reset(int32 Count)
{
	Flags.Reset();
	Flags.SetNumZeroed(Count);
	Changed.Reset();
	Bound.Reset();
	bBoundStale = false;
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
