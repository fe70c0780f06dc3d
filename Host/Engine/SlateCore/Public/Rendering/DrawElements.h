#pragma once

#include "CoreMinimal.h"
#include "Host/TextShaper.h"
#include "Layout/SlateRect.h"

struct FSlateBrush;
class FGeometry;

/** What one element draws. */
enum class ESlateDrawType : uint8
{
	Box, // A filled rectangle, edges snapped to pixels.
	RoundedBox, // Filled and outlined, each corner with its radius. The outline lies inside the edge.
	Image, // A picture file, stretched to the rectangle, tinted when TintImage is set.
	Glyphs, // A run; Rect.Left is the pen, Rect.Top the baseline.
	Shadow, // A soft shadow around a rounded rectangle.
	Chequer, // Red squares: a name that the host does not know.
};

/** One thing to paint. All lengths are device pixels, colours are sRGB bytes with straight alpha. */
struct SLATECORE_API FSlateDrawElement
{
	ESlateDrawType Type = ESlateDrawType::Box;
	bool bTintImage = false;
	FColor Color = FColor(255, 255, 255, 255);
	FColor OutlineColor = FColor(0, 0, 0, 0);
	float OutlineWidth = 0.0f;
	/** Blur extent and vertical offset of a shadow. */
	float ShadowBlur = 0.0f;
	float ShadowOffset = 0.0f;
	/** Top left, top right, bottom right, bottom left. */
	FVector4f Radii = FVector4f(0.0f, 0.0f, 0.0f, 0.0f);
	FSlateRect Rect;
	FSlateRect Clip;
	/** Full path of the picture file. */
	FName Image;
	TSharedPtr<const FGlyphRun> Glyphs;

	bool operator==(const FSlateDrawElement& Other) const;
	bool operator!=(const FSlateDrawElement& Other) const { return !(*this == Other); }
	/** The pixels that painting can touch. Glyphs answer their whole clip. */
	FSlateRect GetBounds() const;
};

/** The flat list of one frame, in painting order. */
class SLATECORE_API FSlateWindowElementList
{
public:
	FSlateWindowElementList(const FVector2D& InWindowSize, float InScale);

	/** Size of the window in device pixels. */
	const FVector2D& GetWindowSize() const { return WindowSize; }
	float GetScale() const { return Scale; }
	const TArray<FSlateDrawElement>& GetElements() const { return Elements; }

	/** For who shows the list in other colours; places and order stay. */
	void ChangeElements(TFunctionRef<void(FSlateDrawElement& Element)> Change);
	/** Empties the list and keeps its memory. */
	void Reset(const FVector2D& InWindowSize, float InScale);
	void PushClip(const FSlateRect& DeviceRect);
	void PopClip();
	const FSlateRect& GetClip() const { return Clips.Last(); }

	/** Elements wholly outside the clip, or without visible colour, are dropped. */
	void AddBox(const FSlateRect& Rect, const FColor& Color);
	void AddRoundedBox(const FSlateRect& Rect, const FVector4f& Radii, const FColor& Fill, const FColor& Outline, float OutlineWidth);
	void AddImage(const FSlateRect& Rect, FName FullPath, const FColor& Tint, bool bTint);
	/** Left is the pen, Baseline the base line; both are rounded to whole pixels. */
	void AddGlyphs(float Left, float Baseline, TSharedPtr<const FGlyphRun> Glyphs, const FColor& Color);
	void AddShadow(const FSlateRect& Rect, float Radius, float Blur, float Offset, const FColor& Color);
	void AddChequer(const FSlateRect& Rect);
	/**
	 * Draws a brush over a rectangle.
	 * @param Color          The colour that the widget gives its brush: multiplied with the brush's tint, or put in its place for a surface
	 * brush.
	 * @param InheritedTint  Product of the tints and opacities of all ancestors.
	 */
	void AddBrush(const FSlateRect& Rect, const FSlateBrush& Brush, const FLinearColor& Color,
		const FLinearColor& InheritedTint = FLinearColor::White);

	/** Unknown names drawn in this list. A test fails when it is not zero. */
	int32 GetChequerCount() const { return ChequerCount; }

private:
	bool IsVisible(const FSlateRect& Rect) const;

	FVector2D WindowSize;
	float Scale = 1.0f;
	int32 ChequerCount = 0;
	TArray<FSlateDrawElement> Elements;
	TArray<FSlateRect> Clips;
};
