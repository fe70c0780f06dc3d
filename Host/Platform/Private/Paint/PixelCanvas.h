#pragma once

#include "CoreMinimal.h"
#include "Layout/SlateRect.h"

/** A rectangle of whole pixels. */
struct FPixelRect
{
	int32 Left = 0;
	int32 Top = 0;
	int32 Right = 0;
	int32 Bottom = 0;

	bool IsEmpty() const { return Left >= Right || Top >= Bottom; }
	int32 Width() const { return Right - Left; }
	int32 Height() const { return Bottom - Top; }
	FPixelRect Intersect(const FPixelRect& Other) const;
	bool operator==(const FPixelRect& Other) const = default;
	/** Edges rounded to the nearest pixel. What is at least half a pixel thick stays visible. */
	static FPixelRect Snap(const FSlateRect& Rect);
	/** Every pixel that is touched. */
	static FPixelRect Cover(const FSlateRect& Rect);
};

/** Coverage of 0 to 255 per pixel. */
struct FPixelMask
{
	int32 Width = 0;
	int32 Height = 0;
	TArray<uint8> Data;
};

/** Pixels with premultiplied alpha. */
struct FPixelImage
{
	int32 Width = 0;
	int32 Height = 0;
	TArray<uint32> Data;
};

/**
 * Draws straight into the pixels of an opaque picture: bytes blue, green, red and one unused, which is written as 255.
 * Nothing is allocated and nothing is remembered, every operation is clipped.
 */
class FPixelCanvas
{
public:
	/** @param InStride  Pixels from one row to the next. */
	FPixelCanvas(uint32* InPixels, int32 InWidth, int32 InHeight, int32 InStride);

	FPixelRect GetRect() const { return FPixelRect{ 0, 0, Width, Height }; }
	uint32 GetPixel(int32 X, int32 Y) const { return GetRow(Y)[X]; }

	void FillRect(const FPixelRect& Rect, const FPixelRect& Clip, const FColor& Color);
	/**
	 * Fill and outline in one pass, so that the edge is smoothed once: the outline lies inside the edge and the fill
	 * inside the outline.
	 * @param Radii  Top left, top right, bottom right, bottom left; shrunk together where they do not fit.
	 */
	void FillRounded(const FPixelRect& Rect, const FPixelRect& Clip, const FVector4f& Radii, const FColor& Fill, const FColor& Outline,
		int32 OutlineWidth);
	/** Squares of eight pixels in two reds. */
	void FillChequer(const FPixelRect& Rect, const FPixelRect& Clip);
	/** The image at its own size; its colours are multiplied by Tint if wanted, its alpha by Tint's always. */
	void DrawImage(const FPixelImage& Image, int32 Left, int32 Top, const FPixelRect& Clip, const FColor& Tint, bool bTint);
	/** A mask whose middle row and column are stretched to fill Rect, in one colour. */
	void DrawNineSlice(const FPixelMask& Mask, const FPixelRect& Rect, const FPixelRect& Clip, const FColor& Color);

private:
	uint32* GetRow(int32 Y) { return Pixels + static_cast<int64>(Y) * Stride; }
	const uint32* GetRow(int32 Y) const { return Pixels + static_cast<int64>(Y) * Stride; }

	uint32* Pixels = nullptr;
	int32 Width = 0;
	int32 Height = 0;
	int32 Stride = 0;
};
