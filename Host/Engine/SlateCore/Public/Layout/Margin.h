#pragma once

#include "CoreMinimal.h"
#include "Types/SlateEnums.h"

/** Room on the four sides of something, in layout units. Negative values let content reach outside. */
struct FMargin
{
	float Left = 0.0f;
	float Top = 0.0f;
	float Right = 0.0f;
	float Bottom = 0.0f;

	FMargin() = default;
	FMargin(float Uniform)
		: Left(Uniform)
		, Top(Uniform)
		, Right(Uniform)
		, Bottom(Uniform)
	{
	}
	FMargin(float Horizontal, float Vertical)
		: Left(Horizontal)
		, Top(Vertical)
		, Right(Horizontal)
		, Bottom(Vertical)
	{
	}
	FMargin(float InLeft, float InTop, float InRight, float InBottom)
		: Left(InLeft)
		, Top(InTop)
		, Right(InRight)
		, Bottom(InBottom)
	{
	}
	FVector2D GetDesiredSize() const { return FVector2D(Left + Right, Top + Bottom); }
	bool operator==(const FMargin& Other) const
	{
		return Left == Other.Left && Top == Other.Top && Right == Other.Right && Bottom == Other.Bottom;
	}
	bool operator!=(const FMargin& Other) const { return !(*this == Other); }
};

/** A length that may be left open. */
struct FOptionalSize
{
	FOptionalSize() = default;
	FOptionalSize(float InSize)
		: Size(InSize)
	{
	}
	bool IsSet() const { return Size != Unspecified; }
	float Get() const { return Size; }
	bool operator==(const FOptionalSize& Other) const { return Size == Other.Size; }

private:
	static constexpr float Unspecified = -1.0f;
	float Size = Unspecified;
};
