#include "FileSearch/FuzzyScore.h"

#include "FileSearch/LoweredPath.h"
#include "Math/UnrealMathUtility.h"

namespace Velmora::UI
{

	namespace
	{

		constexpr int32 SubstringScore = 100;
		constexpr int32 PathStartBonus = 50;
		constexpr int32 BehindSlashBonus = 25;
		constexpr int32 FileNameBonus = 75;
		constexpr int32 ScatteredCharScore = 10;

		template <typename PathType>
		int32 ScoreRun(const PathType& Lowered, FStringView Path, int32 Position)
		{
			int32 Score = SubstringScore;
			// 1. Where the run begins: at the start of the path, or of one of its names.
			if (Position == 0)
			{
				Score += PathStartBonus;
			}
			else if (Path.GetData()[Position - 1] == TEXT('/'))
			{
				Score += BehindSlashBonus;
			}
			// 2. Whether it lies in the file name. A path without a folder has no such bonus: all of it is name.
			if (!Lowered.HasSlash(Position, Path.Len()) && Lowered.HasSlash(0, Position))
			{
				Score += FileNameBonus;
			}
			return Score;
		}

		template <typename PathType>
		int32 ScoreLowered(const PathType& Lowered, FStringView Path, FStringView Query)
		{
			// Where the walk fails, the query does not stand in the path as a run either; it sorts out most paths. Where its matches
			// are adjacent, it has found the first run.
			FGreedyMatch Match;
			if (!Lowered.Walk(Query, Match))
			{
				return 0;
			}
			const int32 SkippedCount = Match.Last + 1 - Match.First - Query.Len();
			if (SkippedCount == 0)
			{
				return ScoreRun(Lowered, Path, Match.First);
			}
			// No run begins at the first match or before it, and none ends before the last one.
			const int32 Position = Lowered.FindRun(Query, FMath::Max(Match.First + 1, Match.Last + 1 - Query.Len()));
			if (Position != INDEX_NONE)
			{
				return ScoreRun(Lowered, Path, Position);
			}
			// Scattered: each character counts, each that was skipped between them counts against it.
			return FMath::Max(0, Query.Len() * ScatteredCharScore + Match.BehindSlashCount * BehindSlashBonus - SkippedCount);
		}

	} // namespace

	int32 ScoreFuzzyMatch(FStringView Path, FStringView Query)
	{
		if (Query.IsEmpty() || Query.Len() > Path.Len())
		{
			return 0;
		}
		// Nearly all paths are short and ASCII, and for those many characters are compared at once.
		FAsciiPath Ascii;
		return Ascii.Assign(Path) ? ScoreLowered(Ascii, Path, Query) : ScoreLowered(FWidePath(Path), Path, Query);
	}

} // namespace Velmora::UI
