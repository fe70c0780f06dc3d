#include "Host/KeptLengths.h"

#include <algorithm>

// Starts[i + 1] is where child i ends, so that both ends of a child are found by search in one ascending list. Only a child
// whose length is negative, by its padding, breaks the order; panels look at all their children while they have such a one.

void FKeptLengths::SetCount(int32 Count)
{
	if (Lengths.Num() == Count)
	{
		return;
	}
	FirstChanged = FMath::Min(FirstChanged, FMath::Min(Lengths.Num(), Count));
	bMaxAcrossStale = bMaxAcrossStale || Count < Lengths.Num();
	Lengths.SetNumZeroed(Count);
	Acrosses.SetNumZeroed(Count);
}

void FKeptLengths::Keep(int32 Index, double Length, double Across)
{
	if (Lengths[Index] != Length)
	{
		Lengths[Index] = Length;
		FirstChanged = FMath::Min(FirstChanged, Index);
	}
	if (Acrosses[Index] != Across)
	{
		// The widest child that grows narrower leaves open who is the widest now; that is looked up once, in the update.
		bMaxAcrossStale = bMaxAcrossStale || Acrosses[Index] >= MaxAcross;
		MaxAcross = FMath::Max(MaxAcross, Across);
		Acrosses[Index] = Across;
	}
}

bool FKeptLengths::Update()
{
	const int32 Count = Lengths.Num();
	if (bMaxAcrossStale)
	{
		bMaxAcrossStale = false;
		MaxAcross = Count > 0 ? FMath::Max(*std::max_element(Acrosses.GetData(), Acrosses.GetData() + Count), 0.0) : 0.0;
	}
	if (Starts.Num() != Count + 1)
	{
		FirstChanged = FMath::Min(FirstChanged, NumPlaced());
		Starts.SetNumZeroed(Count + 1);
	}
	else if (FirstChanged >= Count)
	{
		return false;
	}
	for (int32 Index = FirstChanged; Index < Count; ++Index)
	{
		Starts[Index + 1] = Starts[Index] + Lengths[Index];
	}
	FirstChanged = Count;
	return true;
}

int32 FKeptLengths::FindEndingFrom(double Where) const
{
	const double* const Ends = Starts.GetData() + 1;
	return NumPlaced() > 0 ? static_cast<int32>(std::lower_bound(Ends, Ends + NumPlaced(), Where) - Ends) : 0;
}

int32 FKeptLengths::FindEndingAfter(double Where) const
{
	const double* const Ends = Starts.GetData() + 1;
	return NumPlaced() > 0 ? static_cast<int32>(std::upper_bound(Ends, Ends + NumPlaced(), Where) - Ends) : 0;
}

int32 FKeptLengths::FindStartingFrom(double Where) const
{
	const double* const First = Starts.GetData();
	return static_cast<int32>(std::lower_bound(First, First + NumPlaced(), Where) - First);
}

void FKeptLengths::SetShown(int32 Begin, int32 End)
{
	ShownBegin = Begin;
	ShownEnd = End;
}
