#include "FileSearch/BestFiles.h"

#include "Containers/StringView.h"
#include "Math/UnrealMathUtility.h"

#include <algorithm>

namespace Velmora::UI
{

	namespace
	{

		/** Letter case decides only between texts that differ in nothing else. */
		int32 CompareNames(FStringView A, FStringView B)
		{
			const int32 Order = A.Compare(B, ESearchCase::IgnoreCase);
			return Order != 0 ? Order : A.Compare(B, ESearchCase::CaseSensitive);
		}

		FStringView GetFileName(FStringView Path)
		{
			int32 Slash = INDEX_NONE;
			return Path.FindLastChar(TEXT('/'), Slash) ? Path.RightChop(Slash + 1) : Path;
		}

	} // namespace

	FBestFiles::FBestFiles(const TArray<FProjectFileCacheEntry>& InRecords, int32 InLimit)
		: Records(InRecords)
		, Limit(FMath::Clamp(InLimit, 0, InRecords.Num()))
	{
	}

	void FBestFiles::Offer(const FRankedFile& File)
	{
		// Most files end here: once there is a worst one, a file that does not beat it costs one comparison.
		if (Limit == 0 || (bHasWorst && !IsBetter(File, Worst)))
		{
			return;
		}
		Kept.Add(File);
		// Twice the limit may gather before the worse half is dropped, so that each file that is kept costs a constant on average.
		if (Kept.Num() - Limit >= Limit)
		{
			DropWorse();
		}
	}

	TArray<FRankedFile> FBestFiles::Take()
	{
		if (Kept.Num() > Limit)
		{
			DropWorse();
		}
		Kept.Sort([this](const FRankedFile& A, const FRankedFile& B) { return IsBetter(A, B); });
		return MoveTemp(Kept);
	}

	bool FBestFiles::IsBetter(const FRankedFile& A, const FRankedFile& B) const
	{
		// 1. The better match, 2. of equals the shorter path, which the query covers more of, 3. the order of names.
		if (A.Score != B.Score)
		{
			return A.Score > B.Score;
		}
		return A.DisplayLength != B.DisplayLength ? A.DisplayLength < B.DisplayLength : HasLesserName(A, B);
	}

	bool FBestFiles::HasLesserName(const FRankedFile& A, const FRankedFile& B) const
	{
		const FStringView PathA = Records[A.Index].Path;
		const FStringView PathB = Records[B.Index].Path;
		if (const int32 Order = CompareNames(GetFileName(PathA.Left(A.DisplayLength)), GetFileName(PathB.Left(B.DisplayLength))))
		{
			return Order < 0;
		}
		// Only the extension, which is not shown, or nothing at all may differ here.
		const int32 Order = CompareNames(PathA, PathB);
		return Order != 0 ? Order < 0 : A.Index < B.Index;
	}

	void FBestFiles::DropWorse()
	{
		FRankedFile* const First = Kept.GetData();
		// No sort: which ones are kept matters now, their order only at the end.
		std::nth_element(
			First, First + (Limit - 1), First + Kept.Num(), [this](const FRankedFile& A, const FRankedFile& B) { return IsBetter(A, B); });
		Kept.SetNum(Limit, EAllowShrinking::No);
		// It stands last, since the selection parts the list there.
		Worst = Kept.Last();
		bHasWorst = true;
	}

} // namespace Velmora::UI
