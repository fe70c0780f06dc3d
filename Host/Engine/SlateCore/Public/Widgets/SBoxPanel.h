#pragma once

#include "Layout/Margin.h"
#include "Widgets/SPanel.h"

/** How a box panel sizes a slot along its direction. */
struct FSizeParam
{
	enum ESizeRule : uint8
	{
		SizeRule_Auto,
		SizeRule_Stretch,
	};
	ESizeRule SizeRule = SizeRule_Stretch;
	TAttribute<float> Value = 1.0f;
};

/**
 * Lays its children out in a row or a column. Auto slots take their desired size, the others share what is left by
 * weight within their minimum and maximum. Collapsed children take no room, padding included.
 *
 * A long panel keeps the sizes of its children: it measures those that changed and those bound to something, finds the
 * first child in view by search and leaves out what lies outside.
 */
class SLATECORE_API SBoxPanel : public SPanel
{
public:
	class FSlot;

	/** Declaration of a slot; the vertical and horizontal panels spell Auto and Fill their own way. */
	struct SLATECORE_API FSlotArguments : public TLayoutSlotArguments<FSlot, FSlotArguments>
	{
		// Both spellings stand here, so that one list type serves both panels.
		FSlotArguments& AutoHeight() { return SetAuto(); }
		FSlotArguments& AutoWidth() { return SetAuto(); }
		FSlotArguments& FillHeight(TAttribute<float> Weight) { return SetFill(MoveTemp(Weight)); }
		FSlotArguments& FillWidth(TAttribute<float> Weight) { return SetFill(MoveTemp(Weight)); }
		FSlotArguments& MaxHeight(TAttribute<float> Size) { return SetMax(MoveTemp(Size)); }
		FSlotArguments& MaxWidth(TAttribute<float> Size) { return SetMax(MoveTemp(Size)); }
		FSlotArguments& MinWidth(TAttribute<float> Size) { return SetMin(MoveTemp(Size)); }
		FSizeParam _Size;
		TAttribute<float> _MaxSize = 0.0f;
		TAttribute<float> _MinSize = 0.0f;

	private:
		FSlotArguments& SetAuto();
		FSlotArguments& SetFill(TAttribute<float> Weight);
		FSlotArguments& SetMax(TAttribute<float> Size);
		FSlotArguments& SetMin(TAttribute<float> Size);
	};

	class SLATECORE_API FSlot : public TBasicLayoutWidgetSlot<FSlot>
	{
	public:
		using FSlotArguments = SBoxPanel::FSlotArguments;
		void Construct(const FSlotArguments& Arguments);
		bool IsAuto() const { return SizeRule == FSizeParam::SizeRule_Auto; }
		/** Share of what is left, for slots that are not auto. */
		float GetWeight() const { return Weight.Get(); }
		/** Zero means none. */
		float GetMaxSize() const { return MaxSize.Get(); }
		float GetMinSize() const { return MinSize.Get(); }

	private:
		void SetAuto();
		void SetFill(TAttribute<float> InWeight);
		FSizeParam::ESizeRule SizeRule = FSizeParam::SizeRule_Stretch;
		TSlotAttribute<float> Weight = 1.0f;
		TSlotAttribute<float> MaxSize = 0.0f;
		TSlotAttribute<float> MinSize = 0.0f;
	};
	using FScopedWidgetSlotArguments = TPanelChildren<FSlot>::FScopedWidgetSlotArguments;

	static FSlotArguments Slot() { return FSlotArguments(); }
	FScopedWidgetSlotArguments AddSlot() { return FScopedWidgetSlotArguments(Children, INDEX_NONE); }
	FScopedWidgetSlotArguments InsertSlot(int32 Index) { return FScopedWidgetSlotArguments(Children, Index); }
	int32 NumSlots() const { return Children.Num(); }
	FSlot& GetSlot(int32 Index) { return Children[Index]; }
	const FSlot& GetSlot(int32 Index) const { return Children[Index]; }
	/** Index of the removed slot, or INDEX_NONE. */
	int32 RemoveSlot(const TSharedRef<SWidget>& SlotWidget) { return Children.Remove(SlotWidget); }
	void ClearChildren() { Children.Empty(); }
	virtual FChildren* GetChildren() override { return &Children; }
	virtual ~SBoxPanel() override;

	/** For tests: every child is measured and arranged each time, as if there were few. */
	static void SetMeasureEverything(bool bInMeasureEverything);

protected:
	explicit SBoxPanel(EOrientation InOrientation);

	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;
	virtual void PrepassChildren(float LayoutScale, bool bOwnChange) override;
	virtual void OnChildChanged(SWidget& Child) override;

	TPanelChildren<FSlot> Children;

private:
	struct FKeptSizes;

	/** Takes over what a child wants. */
	void KeepSize(int32 Index) const;
	/** True when what is kept stands for all children as they are. */
	bool HasKeptSizes() const;
	void ArrangeKept(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const;
	void ArrangeAll(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const;
	void ArrangeChild(const FGeometry& AllottedGeometry, int32 Index, double Start, float Along, FArrangedChildren& ArrangedChildren) const;

	const EOrientation Orientation;
	/** Of long panels only. */
	TUniquePtr<FKeptSizes> Kept;
};

class SLATECORE_API SHorizontalBox : public SBoxPanel
{
public:
	SLATE_BEGIN_ARGS(SHorizontalBox) {}
	SLATE_SLOT_ARGUMENT(SBoxPanel::FSlot, Slots)
	SLATE_END_ARGS()

	SHorizontalBox();
	void Construct(const FArguments& InArgs);
};

class SLATECORE_API SVerticalBox : public SBoxPanel
{
public:
	SLATE_BEGIN_ARGS(SVerticalBox) {}
	SLATE_SLOT_ARGUMENT(SBoxPanel::FSlot, Slots)
	SLATE_END_ARGS()

	SVerticalBox();
	void Construct(const FArguments& InArgs);
};
