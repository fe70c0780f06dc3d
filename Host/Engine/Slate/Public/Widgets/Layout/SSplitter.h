#pragma once

#include "Styling/SlateTypes.h"
#include "Types/SlateEnums.h"
#include "Widgets/SPanel.h"

/**
 * Lays its children out in a row or a column, with a handle between every two of them that the mouse drags. Slots take
 * the size of their content or share what is left by value, never less than their minimum; where even the minimums do
 * not fit, all of them shrink alike. A collapsed child leaves neither room nor handle, and its value stays for its return.
 *
 * A handle resizes the nearest slot on either side of it that shares; without one it does nothing. Children are clipped
 * to their slots.
 */
class SLATE_API SSplitter : public SPanel
{
public:
	enum ESizeRule
	{
		/** The desired size of the child. Such slots are not resized by handles. */
		SizeToContent,
		/** A share of what is left. */
		FractionOfParent,
	};

	/** The new value of a slot that a handle resizes. */

	class FSlot;
	struct SLATE_API FSlotArguments : public TSlotArgumentsBase<FSlot, FSlotArguments>
	{
		/** Share among the slots that share; the sum may be any number. */
		FSlotArguments& Value(TAttribute<float> InValue);
		/** Units along the splitter. */
		FSlotArguments& MinSize(TAttribute<float> InMinSize);
		FSlotArguments& SizeRule(TAttribute<ESizeRule> InSizeRule);
		FSlotArguments& Resizable(TAttribute<bool> bInResizable);

		TAttribute<float> _Value = 1.0f;
		TAttribute<float> _MinSize = 0.0f;
		TAttribute<ESizeRule> _SizeRule = FractionOfParent;
		TAttribute<bool> _Resizable = true;
	};

	class SLATE_API FSlot : public FSlotBase
	{
	public:
		using FSlotArguments = SSplitter::FSlotArguments;
		void Construct(const FSlotArguments& Arguments);
		float GetValue() const { return FMath::Max(Value.Get(), 0.0f); }
		float GetMinSize() const { return FMath::Max(MinSize.Get(), 0.0f); }
		ESizeRule GetSizeRule() const { return SizeRule.Get(); }
		bool CanBeResized() const { return Resizable.Get() && GetSizeRule() == FractionOfParent; }
		/** A new value by a handle. */
		void Resize(float NewValue);

	private:
		TAttribute<float> Value = 1.0f;
		TAttribute<float> MinSize = 0.0f;
		TAttribute<ESizeRule> SizeRule = FractionOfParent;
		TAttribute<bool> Resizable = true;
	};
	using FScopedWidgetSlotArguments = TPanelChildren<FSlot>::FScopedWidgetSlotArguments;

	SLATE_BEGIN_ARGS(SSplitter) {}
	SLATE_SLOT_ARGUMENT(SSplitter::FSlot, Slots)
	/** Horizontal: the children stand side by side. */
	SLATE_ARGUMENT_DEFAULT(EOrientation, Orientation) = Orient_Horizontal;
	/** Units between two children. */
	SLATE_ARGUMENT_DEFAULT(float, PhysicalSplitterHandleSize) = 4.0f;
	/** The user has let a handle go. */
	SLATE_EVENT(FSimpleDelegate, OnSplitterFinishedResizing)
	SLATE_END_ARGS()

	SSplitter();
	void Construct(const FArguments& InArgs);

	static FSlotArguments Slot() { return FSlotArguments(); }
	FScopedWidgetSlotArguments AddSlot(int32 AtIndex = INDEX_NONE) { return FScopedWidgetSlotArguments(Children, AtIndex); }
	FSlot& SlotAt(int32 SlotIndex) { return Children[SlotIndex]; }
	void RemoveAt(int32 IndexOfChildToRemove) { Children.RemoveAt(IndexOfChildToRemove); }
	EOrientation GetOrientation() const { return Orientation; }

	virtual FChildren* GetChildren() override { return &Children; }
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseCaptureLost() override;
	virtual FCursorReply OnCursorQuery(const FGeometry& MyGeometry, const FPointerEvent& CursorEvent) const override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;

private:
	/** A child that takes room, and where. Units. */
	struct FPart
	{
		int32 Index = 0;
		float Start = 0.0f;
		float Size = 0.0f;
		float MinSize = 0.0f;
		float Value = 0.0f;
		bool bShares = false;
		bool bOpen = false;
	};
	using FParts = TArray<FPart>;

	double GetAlong(const FVector2D& Vector) const { return Orientation == Orient_Horizontal ? Vector.X : Vector.Y; }
	FVector2D MakeVector(double Along, double Across) const
	{
		return Orientation == Orient_Horizontal ? FVector2D(Along, Across) : FVector2D(Across, Along);
	}
	FParts LayOut(const FGeometry& Geometry) const;
	/** Shares what is left by value; a slot that meets its minimum is closed at it. */
	static void Share(FParts& Parts, float Room);
	/** Number of the handle behind the part of that number, INDEX_NONE beside all handles and over those without effect. */
	int32 FindHandle(const FGeometry& Geometry, const FVector2D& Position) const;
	/** The parts that a handle resizes. False when there is none on one side. */
	bool FindResized(const FParts& Parts, int32 Handle, int32& OutBefore, int32& OutAfter) const;
	void DragTo(const FGeometry& Geometry, double Along);
	void EndDrag();

	TPanelChildren<FSlot> Children;
	FSimpleDelegate FinishedResizingHandler;
	EOrientation Orientation = Orient_Horizontal;
	float HandleSize = 4.0f;
	int32 HoveredHandle = INDEX_NONE;
	int32 DraggedHandle = INDEX_NONE;
	/** From the handle's start to the pointer that holds it. */
	double GrabOffset = 0.0;
};
