#pragma once

#include "CoreMinimal.h"

/** An axis-aligned rectangle by its edges. Empty when an edge is not strictly before its opposite. */
class FSlateRect
{
public:
	float Left = 0.0f;
	float Top = 0.0f;
	float Right = 0.0f;
	float Bottom = 0.0f;

	FSlateRect() = default;
	FSlateRect(float InLeft, float InTop, float InRight, float InBottom)
		: Left(InLeft)
		, Top(InTop)
		, Right(InRight)
		, Bottom(InBottom)
	{
	}

	float Width() const { return Right - Left; }
	float Height() const { return Bottom - Top; }
	bool IsEmpty() const { return !(Left < Right && Top < Bottom); }
	bool ContainsPoint(const FVector2D& Point) const { return Point.X >= Left && Point.X < Right && Point.Y >= Top && Point.Y < Bottom; }
	/** The common part; empty (and possibly inverted) when there is none. */
	FSlateRect IntersectionWith(const FSlateRect& Other) const
	{
		return FSlateRect(
			FMath::Max(Left, Other.Left), FMath::Max(Top, Other.Top), FMath::Min(Right, Other.Right), FMath::Min(Bottom, Other.Bottom));
	}
	/** The smallest rectangle around both; an empty one adds nothing. */
	FSlateRect Expand(const FSlateRect& Other) const
	{
		if (IsEmpty())
		{
			return Other;
		}
		if (Other.IsEmpty())
		{
			return *this;
		}
		return FSlateRect(
			FMath::Min(Left, Other.Left), FMath::Min(Top, Other.Top), FMath::Max(Right, Other.Right), FMath::Max(Bottom, Other.Bottom));
	}
	/** Grown by the same amount on every side. */
	FSlateRect ExtendBy(float Amount) const { return FSlateRect(Left - Amount, Top - Amount, Right + Amount, Bottom + Amount); }
	bool operator==(const FSlateRect& Other) const
	{
		return Left == Other.Left && Top == Other.Top && Right == Other.Right && Bottom == Other.Bottom;
	}
	bool operator!=(const FSlateRect& Other) const { return !(*this == Other); }
	static bool DoRectanglesIntersect(const FSlateRect& A, const FSlateRect& B)
	{
		return A.Left < B.Right && B.Left < A.Right && A.Top < B.Bottom && B.Top < A.Bottom;
	}
};
