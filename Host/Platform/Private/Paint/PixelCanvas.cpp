#include "Paint/PixelCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>

// Filling and blending on 32-bit pixels, colours premultiplied. The target is opaque, so what is blended over it needs
// no alpha of its own. Two channels are worked on at once in one 32-bit number, with room for the carry between them.
//
// Round corners are shaded by the distance of a pixel's middle from the edge, which is exact enough to look smooth and
// needs no table; the pixels between the corners are filled in runs.

namespace
{
	constexpr uint32 Opaque = 0xFF000000u;

	/** Value * Factor / 255 of all four bytes, rounded. */
	inline uint32 ScaleBytes(uint32 Value, uint32 Factor)
	{
		uint32 Even = (Value & 0x00FF00FFu) * Factor + 0x00800080u;
		Even = ((Even + ((Even >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu;
		uint32 Odd = ((Value >> 8) & 0x00FF00FFu) * Factor + 0x00800080u;
		Odd = (Odd + ((Odd >> 8) & 0x00FF00FFu)) & 0xFF00FF00u;
		return Even | Odd;
	}

	/** A premultiplied pixel over an opaque one. */
	inline uint32 Over(uint32 Source, uint32 Target)
	{
		return (Source + ScaleBytes(Target, 255u - (Source >> 24))) | Opaque;
	}

	inline uint32 Premultiply(const FColor& Color)
	{
		const uint32 Solid = Opaque | (static_cast<uint32>(Color.R) << 16) | (static_cast<uint32>(Color.G) << 8) | Color.B;
		return Color.A == 255 ? Solid : ScaleBytes(Solid, Color.A);
	}

	inline uint32 ToByte(float Coverage)
	{
		return static_cast<uint32>(std::clamp(Coverage, 0.0f, 1.0f) * 255.0f + 0.5f);
	}

	/** Doubles a short beginning: copying is the quickest loop there is, whatever the compiler makes of ours. */
	void FillSolid(uint32* Row, int32 Count, uint32 Source)
	{
		int32 Done = std::min(Count, 16);
		for (int32 Index = 0; Index < Done; ++Index)
		{
			Row[Index] = Source;
		}
		while (Done < Count)
		{
			const int32 Copied = std::min(Done, Count - Done);
			std::memcpy(Row + Done, Row, static_cast<size_t>(Copied) * sizeof(uint32));
			Done += Copied;
		}
	}

	void FillRow(uint32* Row, int32 Count, uint32 Source)
	{
		const uint32 Alpha = Source >> 24;
		if (Alpha == 255)
		{
			FillSolid(Row, Count, Source);
		}
		else if (Alpha != 0)
		{
			for (int32 Index = 0; Index < Count; ++Index)
			{
				Row[Index] = Over(Source, Row[Index]);
			}
		}
	}

	int32 ToPixel(float Value)
	{
		// Beyond what any window has, so that infinite and broken lengths stay harmless.
		return Value == Value ? static_cast<int32>(std::clamp(Value, -1000000.0f, 1000000.0f)) : 0;
	}
}

FPixelRect FPixelRect::Intersect(const FPixelRect& Other) const
{
	return FPixelRect{ std::max(Left, Other.Left), std::max(Top, Other.Top), std::min(Right, Other.Right), std::min(Bottom, Other.Bottom) };
}

FPixelRect FPixelRect::Snap(const FSlateRect& Rect)
{
	FPixelRect Result{ ToPixel(std::floor(Rect.Left + 0.5f)), ToPixel(std::floor(Rect.Top + 0.5f)), ToPixel(std::floor(Rect.Right + 0.5f)),
		ToPixel(std::floor(Rect.Bottom + 0.5f)) };
	if (Result.Right == Result.Left && Rect.Width() >= 0.5f)
	{
		++Result.Right;
	}
	if (Result.Bottom == Result.Top && Rect.Height() >= 0.5f)
	{
		++Result.Bottom;
	}
	return Result;
}

FPixelRect FPixelRect::Cover(const FSlateRect& Rect)
{
	return FPixelRect{ ToPixel(std::floor(Rect.Left)), ToPixel(std::floor(Rect.Top)), ToPixel(std::ceil(Rect.Right)),
		ToPixel(std::ceil(Rect.Bottom)) };
}

FPixelCanvas::FPixelCanvas(uint32* InPixels, int32 InWidth, int32 InHeight, int32 InStride)
	: Pixels(InPixels)
	, Width(InWidth)
	, Height(InHeight)
	, Stride(InStride)
{
}

void FPixelCanvas::FillRect(const FPixelRect& Rect, const FPixelRect& Clip, const FColor& Color)
{
	const FPixelRect Area = Rect.Intersect(Clip).Intersect(GetRect());
	if (Area.IsEmpty())
	{
		return;
	}
	const uint32 Source = Premultiply(Color);
	for (int32 Y = Area.Top; Y < Area.Bottom; ++Y)
	{
		FillRow(GetRow(Y) + Area.Left, Area.Width(), Source);
	}
}

namespace
{
	/** The corners of a box: radii from the left top clockwise, none below zero, shrunk alike until two that share a side fit. */
	FVector4f FitRadii(const FVector4f& Wanted, float Width, float Height)
	{
		const auto Clean = [](float Radius) { return Radius > 0.0f ? std::min(Radius, 100000.0f) : 0.0f; };
		const FVector4f Radii(Clean(Wanted.X), Clean(Wanted.Y), Clean(Wanted.Z), Clean(Wanted.W));
		float Shrink = 1.0f;
		const auto FitSide = [&Shrink](float Side, float Sum) { Shrink = Sum > Side ? std::min(Shrink, Side / Sum) : Shrink; };
		FitSide(Width, Radii.X + Radii.Y);
		FitSide(Width, Radii.W + Radii.Z);
		FitSide(Height, Radii.X + Radii.W);
		FitSide(Height, Radii.Y + Radii.Z);
		return FVector4f(Radii.X * Shrink, Radii.Y * Shrink, Radii.Z * Shrink, Radii.W * Shrink);
	}

	/** A box with round corners: says how far inside of it a point lies. */
	struct FRoundedShape
	{
		float Width = 0.0f;
		float Height = 0.0f;
		FVector4f Radii;

		/** Distance from the nearest edge, below zero outside. Exact within one pixel of the edge, which is where it matters. */
		float GetDepth(float X, float Y) const
		{
			const bool bRightHalf = X > Width * 0.5f;
			const bool bLowerHalf = Y > Height * 0.5f;
			const float FromSide = bRightHalf ? Width - X : X;
			const float FromEnd = bLowerHalf ? Height - Y : Y;
			const float Radius = bLowerHalf ? (bRightHalf ? Radii.Z : Radii.W) : (bRightHalf ? Radii.Y : Radii.X);
			if (FromSide < Radius && FromEnd < Radius)
			{
				const float DX = Radius - FromSide;
				const float DY = Radius - FromEnd;
				return Radius - std::sqrt(DX * DX + DY * DY);
			}
			return std::min(FromSide, FromEnd);
		}
	};

	/** How the pixels of a box with round corners are mixed: premultiplied colours, and the outline's width within the box. */
	struct FRoundedPaint
	{
		FRoundedShape Shape;
		uint32 FillSource = 0;
		uint32 LineSource = 0;
		int32 Line = 0;

		/** Any pixel, by the depth of its middle; X and Y count from the box's corner. */
		void Shade(int32 X, int32 Y, uint32& Target) const
		{
			const float Depth = Shape.GetDepth(static_cast<float>(X) + 0.5f, static_cast<float>(Y) + 0.5f);
			const uint32 Outer = ToByte(Depth + 0.5f);
			const uint32 Inner = Line > 0 ? std::min(Outer, ToByte(Depth - static_cast<float>(Line) + 0.5f)) : Outer;
			if (Outer > 0)
			{
				// The two shares add up to the outer coverage, so their sum never overflows.
				Target = Over(ScaleBytes(FillSource, Inner) + ScaleBytes(LineSource, Outer - Inner), Target);
			}
		}
	};
}

void FPixelCanvas::FillRounded(
	const FPixelRect& Rect, const FPixelRect& Clip, const FVector4f& InRadii, const FColor& Fill, const FColor& Outline, int32 OutlineWidth)
{
	const FPixelRect Area = Rect.Intersect(Clip).Intersect(GetRect());
	if (Area.IsEmpty())
	{
		return;
	}
	FRoundedPaint Paint;
	Paint.Shape = { static_cast<float>(Rect.Width()), static_cast<float>(Rect.Height()), FVector4f() };
	Paint.Shape.Radii = FitRadii(InRadii, Paint.Shape.Width, Paint.Shape.Height);
	const bool bOutline = OutlineWidth > 0 && Outline.A > 0;
	Paint.Line = bOutline ? OutlineWidth : 0;
	Paint.FillSource = Premultiply(Fill);
	Paint.LineSource = bOutline ? Premultiply(Outline) : 0;

	const FVector4f& Radii = Paint.Shape.Radii;
	const int32 LeftZone = static_cast<int32>(std::ceil(std::max(Radii.X, Radii.W)));
	const int32 RightZone = static_cast<int32>(std::ceil(std::max(Radii.Y, Radii.Z)));
	const float TopZone = std::max(Radii.X, Radii.Y);
	const float BottomZone = std::max(Radii.W, Radii.Z);
	for (int32 Y = Area.Top; Y < Area.Bottom; ++Y)
	{
		uint32* const Row = GetRow(Y);
		int32 Left = Area.Left;
		int32 Right = Area.Right;
		// 1. What may be cut by a corner is shaded pixel by pixel, from both ends.
		if (static_cast<float>(Y - Rect.Top) < TopZone || static_cast<float>(Rect.Bottom - Y - 1) < BottomZone)
		{
			for (const int32 LeftEnd = std::min(Area.Right, Rect.Left + LeftZone); Left < LeftEnd; ++Left)
			{
				Paint.Shade(Left - Rect.Left, Y - Rect.Top, Row[Left]);
			}
			for (const int32 RightBegin = std::max(Left, Rect.Right - RightZone); Right > RightBegin; --Right)
			{
				Paint.Shade(Right - 1 - Rect.Left, Y - Rect.Top, Row[Right - 1]);
			}
		}
		// 2. What is left of a row within the outline is of its colour.
		if (Y - Rect.Top < Paint.Line || Rect.Bottom - Y <= Paint.Line)
		{
			FillRow(Row + Left, Right - Left, Paint.LineSource);
			continue;
		}
		// 3. Any other row is outline, filling, outline.
		const int32 LineLeft = std::clamp(Rect.Left + Paint.Line, Left, std::max(Left, Right));
		const int32 LineRight = std::clamp(Rect.Right - Paint.Line, LineLeft, std::max(LineLeft, Right));
		FillRow(Row + Left, LineLeft - Left, Paint.LineSource);
		FillRow(Row + LineLeft, LineRight - LineLeft, Paint.FillSource);
		FillRow(Row + LineRight, Right - LineRight, Paint.LineSource);
	}
}

void FPixelCanvas::FillChequer(const FPixelRect& Rect, const FPixelRect& Clip)
{
	const FPixelRect Area = Rect.Intersect(Clip).Intersect(GetRect());
	for (int32 Y = Area.Top; Y < Area.Bottom; ++Y)
	{
		uint32* const Row = GetRow(Y);
		for (int32 X = Area.Left; X < Area.Right; ++X)
		{
			const bool bDark = (((X - Rect.Left) / 8 + (Y - Rect.Top) / 8) & 1) != 0;
			Row[X] = bDark ? 0xFF800000u : 0xFFFF0000u;
		}
	}
}

void FPixelCanvas::DrawImage(const FPixelImage& Image, int32 Left, int32 Top, const FPixelRect& Clip, const FColor& Tint, bool bTint)
{
	const FPixelRect Area = FPixelRect{ Left, Top, Left + Image.Width, Top + Image.Height }.Intersect(Clip).Intersect(GetRect());
	for (int32 Y = Area.Top; Y < Area.Bottom; ++Y)
	{
		uint32* const Row = GetRow(Y);
		const uint32* const Source = Image.Data.GetData() + static_cast<int64>(Y - Top) * Image.Width - Left;
		for (int32 X = Area.Left; X < Area.Right; ++X)
		{
			uint32 Pixel = Source[X];
			if (Pixel == 0)
			{
				continue;
			}
			if (bTint)
			{
				const auto Multiply = [](uint32 Value, uint32 Factor) { return (Value * Factor + 127u) / 255u; };
				Pixel = (Pixel & Opaque) | (Multiply((Pixel >> 16) & 255u, Tint.R) << 16) | (Multiply((Pixel >> 8) & 255u, Tint.G) << 8) |
					Multiply(Pixel & 255u, Tint.B);
			}
			Row[X] = Over(Tint.A == 255 ? Pixel : ScaleBytes(Pixel, Tint.A), Row[X]);
		}
	}
}

void FPixelCanvas::DrawNineSlice(const FPixelMask& Mask, const FPixelRect& Rect, const FPixelRect& Clip, const FColor& Color)
{
	const FPixelRect Area = Rect.Intersect(Clip).Intersect(GetRect());
	if (Area.IsEmpty() || Mask.Width <= 0 || Mask.Height <= 0)
	{
		return;
	}
	const uint32 Source = Premultiply(Color);
	const int32 MiddleX = Mask.Width / 2;
	const int32 MiddleY = Mask.Height / 2;
	// The stretched middle in the picture: from the mask's middle to as far from the other edge.
	const int32 StretchLeft = Rect.Left + MiddleX;
	const int32 StretchRight = std::max(StretchLeft, Rect.Right - (Mask.Width - MiddleX - 1));
	const int32 StretchTop = Rect.Top + MiddleY;
	const int32 StretchBottom = std::max(StretchTop, Rect.Bottom - (Mask.Height - MiddleY - 1));
	for (int32 Y = Area.Top; Y < Area.Bottom; ++Y)
	{
		const int32 MaskY = Y < StretchTop ? Y - Rect.Top : (Y < StretchBottom ? MiddleY : MiddleY + 1 + Y - StretchBottom);
		const uint8* const Coverage = Mask.Data.GetData() + static_cast<int64>(std::min(MaskY, Mask.Height - 1)) * Mask.Width;
		uint32* const Row = GetRow(Y);
		int32 X = Area.Left;
		for (; X < std::min(Area.Right, StretchLeft); ++X)
		{
			Row[X] = Over(ScaleBytes(Source, Coverage[X - Rect.Left]), Row[X]);
		}
		const int32 FlatEnd = std::min(Area.Right, StretchRight);
		if (X < FlatEnd)
		{
			FillRow(Row + X, FlatEnd - X, ScaleBytes(Source, Coverage[MiddleX]));
			X = FlatEnd;
		}
		for (; X < Area.Right; ++X)
		{
			Row[X] = Over(ScaleBytes(Source, Coverage[std::min(MiddleX + 1 + X - StretchRight, Mask.Width - 1)]), Row[X]);
		}
	}
}
