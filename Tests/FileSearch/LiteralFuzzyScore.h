#pragma once

#include "CoreMinimal.h"
#include "Misc/Char.h"

#include <string>

/** The rules of scoring walked as they are written, for comparison: both texts are lowered, and every step is taken one by one. */
inline int32 ScoreLiterally(const FString& Path, const FString& Query)
{
	if (Query.IsEmpty() || Path.IsEmpty())
	{
		return 0;
	}
	const FString LowerPath = Path.ToLower();
	const FString LowerQuery = Query.ToLower();
	const std::u16string PathUnits(*LowerPath, static_cast<size_t>(LowerPath.Len()));
	const std::u16string QueryUnits(*LowerQuery, static_cast<size_t>(LowerQuery.Len()));
	const size_t Found = PathUnits.find(QueryUnits);
	int32 Score = 0;
	if (Found != std::u16string::npos)
	{
		const int32 Position = static_cast<int32>(Found);
		Score = 100;
		if (Position == 0)
		{
			Score += 50;
		}
		if (Position > 0 && Path[Position - 1] == TEXT('/'))
		{
			Score += 25;
		}
		int32 LastSlash = -1;
		if (Path.FindLastChar(TEXT('/'), LastSlash) && Position > LastSlash)
		{
			Score += 75;
		}
		return Score;
	}
	int32 MatchCount = 0;
	int32 BoundaryCount = 0;
	int32 LastMatch = -1;
	int32 QueryIndex = 0;
	for (int32 PathIndex = 0; PathIndex < LowerPath.Len() && QueryIndex < LowerQuery.Len(); ++PathIndex)
	{
		if (LowerPath[PathIndex] == LowerQuery[QueryIndex])
		{
			++MatchCount;
			if (PathIndex > 0 && Path[PathIndex - 1] == TEXT('/'))
			{
				++BoundaryCount;
			}
			if (LastMatch != -1 && PathIndex - LastMatch > 1)
			{
				Score -= PathIndex - LastMatch - 1;
			}
			LastMatch = PathIndex;
			++QueryIndex;
		}
	}
	if (QueryIndex < LowerQuery.Len())
	{
		return 0;
	}
	Score += MatchCount * 10 + BoundaryCount * 25;
	return Score < 0 ? 0 : Score;
}
