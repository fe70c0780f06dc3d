#include "FileSearch/AtFileReferenceController.h"

namespace Velmora::UI
{

	FAtFileReferenceController::FAtFileReferenceController(FLocationToIndex InLocationToIndex, FIndexToLocation InIndexToLocation)
		: LocationToIndex(MoveTemp(InLocationToIndex))
		, IndexToLocation(MoveTemp(InIndexToLocation))
	{
	}

	FAtFileReferenceController::FDropdownDelta FAtFileReferenceController::Update(const FString& Text, const FTextLocation& Cursor)
	{
		FDropdownDelta Delta;
		if (bSuppressed)
		{
			return Delta;
		}
		// 1. What stands at the cursor decides alone whether the dropdown is open.
		FAtTokenState State = ComputeState(Text, Cursor);
		bTokenActive = State.bActive;
		Delta.bShouldOpen = State.bActive;
		Delta.bShouldClose = !State.bActive;
		// 2. Closed: the next token begins with a query of its own, even if it reads like this one.
		if (!State.bActive)
		{
			LastQuery.Empty();
			return Delta;
		}
		Delta.AtIndex = State.AtIndex;
		// 3. Open: a move of the cursor within the token asks for nothing anew, which keeps the row that was chosen.
		if (!State.Query.Equals(LastQuery, ESearchCase::CaseSensitive))
		{
			LastQuery = State.Query;
			Delta.bQueryChanged = true;
			Delta.Query = MoveTemp(State.Query);
		}
		return Delta;
	}

	FAtFileReferenceController::FReplacement FAtFileReferenceController::BuildReplacement(
		const FString& Text, const FTextLocation& Cursor, const FString& InsertText) const
	{
		FReplacement Result;
		if (bSuppressed)
		{
			return Result;
		}
		const FAtTokenState State = ComputeState(Text, Cursor);
		if (State.AtIndex == -1)
		{
			return Result;
		}
		// The blank parts the name from what is typed next, and is not doubled.
		const bool bBlankFollows = State.TokenEnd < Text.Len() && Text[State.TokenEnd] == TEXT(' ');
		int32 LinearCursor = 0;
		ApplyAtTokenReplacement(
			Text, State.AtIndex, State.TokenEnd, bBlankFollows ? InsertText : InsertText + TEXT(" "), Result.NewText, LinearCursor);
		// Without a mapping there are no lines to tell; the number is handed on as it is.
		Result.NewCursor = IndexToLocation ? IndexToLocation(Result.NewText, LinearCursor) : FTextLocation(LinearCursor, 0);
		Result.bApplied = true;
		return Result;
	}

	FAtFileReferenceController::FScopedSuppression FAtFileReferenceController::SuppressUpdates()
	{
		return FScopedSuppression(*this);
	}

	void FAtFileReferenceController::SetLastQuery(const FString& Query)
	{
		LastQuery = Query;
	}

	void FAtFileReferenceController::Reset()
	{
		bTokenActive = false;
		LastQuery.Empty();
	}

	FAtTokenState FAtFileReferenceController::ComputeState(const FString& Text, const FTextLocation& Cursor) const
	{
		return ComputeAtTokenState(Text, LocationToIndex ? LocationToIndex(Text, Cursor) : Text.Len());
	}

} // namespace Velmora::UI
