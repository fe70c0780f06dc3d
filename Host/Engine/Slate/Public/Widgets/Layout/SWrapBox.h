#pragma once

#include "Types/SlateEnums.h"
#include "Widgets/SPanel.h"

/**
 * Lays its children out one after the other and begins a new line where there is no more room. A child wider than a line
 * gets the line's width.
 *
 * With UseAllottedSize it wants the length of all children in one line and as many lines as it had at the size allotted
 * last; once it meets a size that changes the lines it asks for a new layout of the same frame.
 */
class SLATE_API SWrapBox : public SPanel
{
public:
	class FSlot;
	struct FSlotArguments : public TLayoutSlotArguments<FSlot, FSlotArguments>
	{
	};
	class SLATE_API FSlot : public TBasicLayoutWidgetSlot<FSlot>
	{
	public:
		using FSlotArguments = SWrapBox::FSlotArguments;
		void Construct(const FSlotArguments& Arguments);
	};
	using FScopedWidgetSlotArguments = TPanelChildren<FSlot>::FScopedWidgetSlotArguments;

	SLATE_BEGIN_ARGS(SWrapBox)
		: _PreferredSize(100.0f)
		, _HAlign(HAlign_Left)
	{
	}
	SLATE_SLOT_ARGUMENT(SWrapBox::FSlot, Slots)
	/** Length of a line unless UseAllottedSize is set. */
	SLATE_ATTRIBUTE(float, PreferredSize)
	/** Room between neighbours of a line (X) and between lines (Y). */
	SLATE_ARGUMENT_DEFAULT(FVector2D, InnerSlotPadding) = FVector2D(0, 0);
	SLATE_ARGUMENT_DEFAULT(bool, UseAllottedSize) = false;
	SLATE_ARGUMENT_DEFAULT(EOrientation, Orientation) = Orient_Horizontal;
	/** Where each line stands. */
	SLATE_ATTRIBUTE(EHorizontalAlignment, HAlign)
	SLATE_END_ARGS()

	SWrapBox();
	void Construct(const FArguments& InArgs);
	static FSlotArguments Slot() { return FSlotArguments(); }
	FScopedWidgetSlotArguments AddSlot() { return FScopedWidgetSlotArguments(Children, INDEX_NONE); }
	FScopedWidgetSlotArguments InsertSlot(int32 Index) { return FScopedWidgetSlotArguments(Children, Index); }
	int32 RemoveSlot(const TSharedRef<SWidget>& Widget) { return Children.Remove(Widget); }
	void ClearChildren() { Children.Empty(); }
	int32 NumSlots() const { return Children.Num(); }
	virtual FChildren* GetChildren() override { return &Children; }

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;
	virtual void PrepassChildren(float LayoutScale, bool bOwnChange) override;
	virtual void OnChildChanged(SWidget& Child) override;

private:
	/** A child that is not collapsed, and its place along its line. Sizes are those that it wants, padding included. */
	struct FPlaced
	{
		int32 Index = 0;
		int32 Line = 0;
		float Along = 0.0f;
		float WantedAlong = 0.0f;
		float WantedAcross = 0.0f;
	};
	struct FLine
	{
		float Across = 0.0f;
		float Thickness = 0.0f;
		float Length = 0.0f;
		int32 FirstPlaced = 0;
	};
	/** Asks every child what it wants. */
	void CollectWanted() const;
	/** Breaks the children into Lines and Placed. Gives the desired size. */
	FVector2D BreakLines(float LineLength) const;
	/** The first child of the first line that reaches into the clip, and where the clip ends; lines outside are left out. */
	int32 FindFirstInView(const FGeometry& AllottedGeometry, const FSlateRect* Clip, double& OutViewEnd) const;
	float GetLineLength(float Allotted) const;

	TPanelChildren<FSlot> Children;
	TAttribute<float> PreferredSize = 100.0f;
	TAttribute<EHorizontalAlignment> HAlign = HAlign_Left;
	FVector2D InnerSlotPadding = FVector2D(0, 0);
	EOrientation Orientation = Orient_Horizontal;
	bool bUseAllottedSize = false;
	mutable float LastAllotted = 0.0f;
	mutable FVector2D Measured = FVector2D(0, 0);
	/** What Lines and Placed were broken for, and the size that came of it. */
	mutable FVector2D Broken = FVector2D(0, 0);
	mutable float BrokenLength = -1.0f;
	/** What the children want stands in Placed, and none has changed since. */
	mutable bool bWantedKept = false;
	/** Only the length of a line has changed since the children were measured. */
	mutable bool bOnlyBreaksAnew = false;
	int32 KeptCount = 0;
	float KeptScale = 0.0f;
	mutable TArray<FPlaced> Placed;
	mutable TArray<FLine> Lines;
};
