#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/**
 * Which children of a long panel have to be looked at when it is measured again: those that were noted as changed, and
 * those whose size can change by itself. Children go by their index; one outside the range is passed over.
 */
class SLATECORE_API FChildWatch
{
public:
	/** So many children, none of them changed or bound. */
	void Reset(int32 Count);
	/** More children than before, the new ones at the end and noted as changed. */
	void Grow(int32 Count);
	void NoteChanged(int32 Index);
	/** Hands the changed ones over, each once, in the order in which they were noted, and forgets them. */
	TArray<int32> TakeChanged();
	void SetBound(int32 Index, bool bBound);
	/** In ascending order. Good until the next call. */
	const TArray<int32>& GetBound() const;
	/**
	 * Measures the bound children outside of the range that is shown: all of them while that is little work, a small share of
	 * them in turn when it is much.
	 * @param bAll  Measures all in any case.
	 * @param Measure  Returns false when children have come or gone, which ends the round.
	 */
	void MeasureInTurn(int32 ShownBegin, int32 ShownEnd, bool bAll, TFunctionRef<bool(int32 Index)> Measure);

private:
	static constexpr uint8 ChangedFlag = 1;
	static constexpr uint8 BoundFlag = 2;

	TArray<uint8> Flags;
	TArray<int32> Changed;
	mutable TArray<int32> Bound;
	mutable bool bBoundStale = false;
	/** Where measuring in turn goes on. */
	int32 TurnIndex = 0;
	/** Not all bound children could be measured in the last frame. */
	bool bTooManyBound = false;
};
