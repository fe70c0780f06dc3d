#pragma once

#include "CoreMinimal.h"
#include "Layout/SlateRect.h"

/**
 * Where a widget stands: its size in layout units, its upper left corner in device pixels of the window,
 * and how many device pixels one unit has.
 */
class SLATECORE_API FGeometry
{
public:
	FGeometry() = default;

	static FGeometry MakeRoot(const FVector2D& LocalSize, const FVector2D& AbsolutePosition, float Scale)
	{
		FGeometry Geometry;
		Geometry.Size = LocalSize;
		Geometry.AbsolutePosition = AbsolutePosition;
		Geometry.Scale = Scale;
		return Geometry;
	}
	/** A part of this geometry; offset and size in this geometry's units. */
	FGeometry MakeChild(const FVector2D& LocalOffset, const FVector2D& LocalSize) const
	{
		return MakeRoot(LocalSize, AbsolutePosition + LocalOffset * static_cast<double>(Scale), Scale);
	}

	const FVector2D& GetLocalSize() const { return Size; }
	const FVector2D& GetAbsolutePosition() const { return AbsolutePosition; }
	float GetAccumulatedScale() const { return Scale; }
	FSlateRect GetLayoutBoundingRect() const
	{
		return FSlateRect(static_cast<float>(AbsolutePosition.X), static_cast<float>(AbsolutePosition.Y),
			static_cast<float>(AbsolutePosition.X + Size.X * Scale), static_cast<float>(AbsolutePosition.Y + Size.Y * Scale));
	}
	/** The device rectangle of a part given in this geometry's units. */
	FSlateRect ToDevice(const FVector2D& LocalOffset, const FVector2D& LocalSize) const
	{
		return MakeChild(LocalOffset, LocalSize).GetLayoutBoundingRect();
	}
	FVector2D AbsoluteToLocal(const FVector2D& Absolute) const { return (Absolute - AbsolutePosition) / static_cast<double>(Scale); }
	bool IsUnderLocation(const FVector2D& Absolute) const { return GetLayoutBoundingRect().ContainsPoint(Absolute); }
	bool operator==(const FGeometry& Other) const
	{
		return Size == Other.Size && AbsolutePosition == Other.AbsolutePosition && Scale == Other.Scale;
	}
	bool operator!=(const FGeometry& Other) const { return !(*this == Other); }

private:
	FVector2D Size = FVector2D(0, 0);
	FVector2D AbsolutePosition = FVector2D(0, 0);
	float Scale = 1.0f;
};
