#pragma once

#include "Styling/SlateTypes.h"
#include "Types/SlateEnums.h"
#include "Widgets/SLeafWidget.h"

/** Where the user has scrolled to; what the number counts is said where the event is. */
DECLARE_DELEGATE_OneParam(FOnUserScrolled, float)

	/** A thumb without a track. It shows and changes which part of a longer content is in view. */
	class SLATE_API SScrollBar : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SScrollBar) {}
	SLATE_STYLE_ARGUMENT(FScrollBarStyle, Style)
	SLATE_ARGUMENT_DEFAULT(EOrientation, Orientation) = Orient_Vertical;
	/** Room of the bar across its direction; zero takes the style's. The thumb is never thicker. */
	SLATE_ARGUMENT_DEFAULT(float, Room) = 0.0f;
	/** Start of the view as a fraction of the content, as in SetState. */
	SLATE_EVENT(FOnUserScrolled, OnUserScrolled)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/**
	 * @param InOffsetFraction     Start of the view, as a fraction of the content.
	 * @param InThumbSizeFraction  Length of the view, as a fraction of the content; 1 and above need no bar.
	 */
	void SetState(float InOffsetFraction, float InThumbSizeFraction);
	bool IsNeeded() const { return ThumbSizeFraction < 1.0f; }
	float GetRoom() const { return Room; }
	/** Where the thumb lies in a bar of that length: its start and its end, units. */
	void GetThumb(float BarLength, float& OutStart, float& OutEnd) const;

	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseLeave(const FPointerEvent& MouseEvent) override { bThumbHovered = false; }
	virtual void OnMouseCaptureLost() override { bDragging = false; }
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual bool SetAccessValue(double Value) override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	float GetAlong(const FVector2D& Vector) const { return static_cast<float>(Orientation == Orient_Vertical ? Vector.Y : Vector.X); }
	/** Scrolls so that the thumb starts at a place of the bar. */
	void DragTo(float ThumbStart, float BarLength);

	const FScrollBarStyle* Style = nullptr;
	FOnUserScrolled UserScrolledHandler;
	EOrientation Orientation = Orient_Vertical;
	float Room = 0.0f;
	float OffsetFraction = 0.0f;
	float ThumbSizeFraction = 1.0f;
	/** Distance from the thumb's start to the pointer that holds it. */
	float GrabOffset = 0.0f;
	bool bDragging = false;
	bool bThumbHovered = false;
};
