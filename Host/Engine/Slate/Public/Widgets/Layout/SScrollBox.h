#pragma once

#include "Host/KeptLengths.h"
#include "Types/SlateEnums.h"
#include "Widgets/Layout/SScrollBar.h"
#include "Widgets/SPanel.h"

/** When a wheel event ends at a scroll box. */
enum class EConsumeMouseWheel : uint8
{
	WhenScrollingPossible,
	Always,
	Never,
};

/** Where ScrollDescendantIntoView puts the widget. */
enum class EDescendantScrollDestination : uint8
{
	/** As little movement as it takes. */
	IntoView,
	TopOrLeft,
	Center,
	BottomOrRight,
};

/**
 * Shows a part of a column or row of children. Children get the whole width of the view (in a row: height) and the length
 * that they want. Only children in view are arranged and painted, and they are found by search over kept offsets.
 *
 * Children whose size can change by itself (HasSizeBindings) are all measured in each frame while there are few of them.
 * Beyond that those in view are, and of the others so many in turn that a frame's work stays bounded.
 *
 * What the user looks at stays where it is when something above it changes its length. ScrollToEnd holds on to the end
 * while content grows, until the user scrolls or another place is asked for.
 */
class SLATE_API SScrollBox : public SPanel
{
public:
	class FSlot;
	struct FSlotArguments : public TLayoutSlotArguments<FSlot, FSlotArguments>
	{
	};
	class SLATE_API FSlot : public TBasicLayoutWidgetSlot<FSlot>
	{
	public:
		using FSlotArguments = SScrollBox::FSlotArguments;
		void Construct(const FSlotArguments& Arguments) { ConstructLayout(Arguments); }
	};
	using FScopedWidgetSlotArguments = TPanelChildren<FSlot>::FScopedWidgetSlotArguments;

	SLATE_BEGIN_ARGS(SScrollBox) {}
	SLATE_SLOT_ARGUMENT(SScrollBox::FSlot, Slots)
	SLATE_ARGUMENT_DEFAULT(EOrientation, Orientation) = Orient_Vertical;
	SLATE_STYLE_ARGUMENT(FScrollBarStyle, ScrollBarStyle)
	/** Room of the bar: X of a vertical one, Y of a horizontal one. Zero takes the style's. */
	SLATE_ARGUMENT_DEFAULT(FVector2D, ScrollBarThickness) = FVector2D(0, 0);
	/** Anything but visible takes the bar and its room away. */
	SLATE_ATTRIBUTE(EVisibility, ScrollBarVisibility)
	/** Keeps the bar's room while everything fits. */
	SLATE_ARGUMENT_DEFAULT(bool, ScrollBarAlwaysVisible) = false;
	SLATE_ARGUMENT_DEFAULT(EConsumeMouseWheel, ConsumeMouseWheel) = EConsumeMouseWheel::WhenScrollingPossible;
	/** Taken and without effect: this host never animates scrolling. */
	SLATE_ARGUMENT_DEFAULT(bool, AnimateWheelScrolling) = false;
	/** The new offset in units, after the user has scrolled. */
	SLATE_EVENT(FOnUserScrolled, OnUserScrolled)
	SLATE_END_ARGS()

	SScrollBox();
	void Construct(const FArguments& InArgs);

	static FSlotArguments Slot() { return FSlotArguments(); }
	FScopedWidgetSlotArguments AddSlot() { return FScopedWidgetSlotArguments(Slots, INDEX_NONE); }
	FScopedWidgetSlotArguments InsertSlot(int32 Index) { return FScopedWidgetSlotArguments(Slots, Index); }
	void RemoveSlot(const TSharedRef<SWidget>& WidgetToRemove) { Slots.Remove(WidgetToRemove); }
	void ClearChildren() { Slots.Empty(); }
	int32 NumSlots() const { return Slots.Num(); }
	FSlot& GetSlot(int32 SlotIndex) { return Slots[SlotIndex]; }
	const FSlot& GetSlot(int32 SlotIndex) const { return Slots[SlotIndex]; }

	/** Units from the start of the content; what the last layout showed. */
	float GetScrollOffset() const { return static_cast<float>(Offset); }
	/** The largest offset of the last layout. */
	float GetScrollOffsetOfEnd() const;
	/** Limited to what the next layout allows. */
	void SetScrollOffset(float NewScrollOffset);
	void ScrollToStart() { SetScrollOffset(0.0f); }
	void ScrollToEnd();
	/** Takes effect in the next layout. A widget that is not below this box moves nothing. */
	void ScrollDescendantIntoView(const TSharedPtr<SWidget>& WidgetToScrollIntoView, bool bAnimateScroll = true,
		EDescendantScrollDestination Destination = EDescendantScrollDestination::IntoView, float Padding = 0.0f);
	EOrientation GetOrientation() const { return Orientation; }

	/** For tests: every child, here and in long panels, is measured in every frame, as if there were few. */
	static void SetMeasureEverything(bool bInMeasureEverything);

	/** The slots' widgets, then the scroll bar. */
	virtual FChildren* GetChildren() override { return &AllChildren; }
	virtual FReply OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;
	virtual void PrepassChildren(float LayoutScale, bool bOwnChange) override;
	virtual void OnChildChanged(SWidget& Child) override;

private:
	/** What keeps its place when lengths change. */
	enum class EHold : uint8
	{
		FirstInView, // The first child in view.
		Anchor, // For one frame the child that was held when the user scrolled, so that late measuring moves nothing in view.
		Offset, // For one frame the offset, as it was asked for.
		End, // The end, until something else is asked for.
	};
	/** Slots and bar as one list. */
	class FAllChildren : public FChildren
	{
	public:
		explicit FAllChildren(const SScrollBox& InBox)
			: Box(InBox)
		{
		}
		virtual int32 Num() const override;
		virtual TSharedRef<SWidget> GetChildAt(int32 Index) const override;
		virtual SWidget& GetChildRefAt(int32 Index) const override;

	private:
		const SScrollBox& Box;
	};

	double GetAlong(const FVector2D& Vector) const { return Orientation == Orient_Vertical ? Vector.Y : Vector.X; }
	double GetAcross(const FVector2D& Vector) const { return Orientation == Orient_Vertical ? Vector.X : Vector.Y; }
	double GetContentLength() const { return Kept.GetTotal(); }
	double GetEnd() const { return FMath::Max(GetContentLength() - ViewLength, 0.0); }
	/** False when children came or went meanwhile: the next measuring is asked for then. */
	bool MeasureChild(int32 Index, float LayoutScale);
	/** Numbers the children and measures those that were not yet. */
	bool TakeChildren(float LayoutScale);
	/** Numbers those that came at the end, to be measured as changed ones are. False when others came or went. */
	bool TakeAppended();
	/** Takes over what a child wants. */
	void TakeLength(int32 Index);
	/** Brings the starts in line with the lengths and moves the offset along with what is held. */
	void UpdateStarts() const;
	/** Fits bar and offset to a size. */
	void UpdateView(const FVector2D& Size) const;
	/** Index of the first child that reaches below the offset; Num when there is none. */
	int32 FindFirstInView() const;
	/** Picks the child that keeps its place when lengths change. */
	void UpdateAnchor() const;
	void PickAnchor(int32 Index) const;
	int32 FindAnchor() const;
	/** True while a hold for one frame is in its frame. */
	bool IsHoldFresh() const;
	/** Scrolls by a distance. False when there is no way to go. */
	bool ScrollByUser(double Distance);
	void OnBarScrolled(float OffsetFraction);
	/** Moves the offset to a descendant that waits to come into view, now that its place is known. */
	void SettlePendingView(const FGeometry& AllottedGeometry) const;
	/** Width of a column's children, height of a row's. */
	float GetChildAcross(const FGeometry& AllottedGeometry) const;
	FGeometry PlaceChild(const FGeometry& AllottedGeometry, int32 Index) const;

	TPanelChildren<FSlot> Slots;
	FSlotBase BarSlot;
	FAllChildren AllChildren;
	TSharedPtr<SScrollBar> Bar;
	TAttribute<EVisibility> BarVisibility;
	FOnUserScrolled UserScrolledHandler;
	EOrientation Orientation = Orient_Vertical;
	EConsumeMouseWheel ConsumeMouseWheel = EConsumeMouseWheel::WhenScrollingPossible;
	bool bBarAlwaysVisible = false;

	mutable FKeptLengths Kept;
	/** The widgets of the slots that were taken, to walk them without touching the slots. Empty when a slot got another widget. */
	TArray<SWidget*> Kids;
	mutable TWeakPtr<SWidget> AnchorWidget;
	mutable TWeakPtr<SWidget> PendingView;
	mutable double Offset = 0.0;
	mutable double ViewLength = 0.0;
	/** From the view's start to the anchor's. */
	mutable double AnchorDistance = 0.0;
	mutable int32 AnchorIndex = INDEX_NONE;
	mutable uint64 HoldFrame = 0;
	mutable EHold Hold = EHold::FirstInView;
	mutable bool bBarShown = false;
	mutable bool bBarMeasured = false;
	mutable uint8 PendingTries = 0;
	EDescendantScrollDestination PendingDestination = EDescendantScrollDestination::IntoView;
	float PendingPadding = 0.0f;
};
