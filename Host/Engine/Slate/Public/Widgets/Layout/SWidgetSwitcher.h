#pragma once

#include "Widgets/SPanel.h"

/** Shows one of its children at a time and has its size. */
class SLATE_API SWidgetSwitcher : public SPanel
{
public:
	class FSlot;
	struct FSlotArguments : public TLayoutSlotArguments<FSlot, FSlotArguments>
	{
	};
	class SLATE_API FSlot : public TBasicLayoutWidgetSlot<FSlot>
	{
	public:
		using FSlotArguments = SWidgetSwitcher::FSlotArguments;
		void Construct(const FSlotArguments& Arguments) { ConstructLayout(Arguments); }
	};
	using FScopedWidgetSlotArguments = TPanelChildren<FSlot>::FScopedWidgetSlotArguments;

	SLATE_BEGIN_ARGS(SWidgetSwitcher)
		: _WidgetIndex(0)
	{
	}
	SLATE_SLOT_ARGUMENT(SWidgetSwitcher::FSlot, Slots)
	/** An index without a child shows nothing. */
	SLATE_ATTRIBUTE(int32, WidgetIndex)
	SLATE_END_ARGS()

	SWidgetSwitcher();
	void Construct(const FArguments& InArgs);
	static FSlotArguments Slot() { return FSlotArguments(); }
	FScopedWidgetSlotArguments AddSlot() { return FScopedWidgetSlotArguments(Children, INDEX_NONE); }
	int32 RemoveSlot(const TSharedRef<SWidget>& Widget) { return Children.Remove(Widget); }
	virtual FChildren* GetChildren() override { return &Children; }

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;

private:
	const FSlot* GetActiveSlot() const;

	TPanelChildren<FSlot> Children;
	TAttribute<int32> WidgetIndex = 0;
};
