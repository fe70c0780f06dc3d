#pragma once

#include "Widgets/SPanel.h"

/** Lays its children over each other; later ones lie on top. Wants the largest size that a child wants. */
class SLATECORE_API SOverlay : public SPanel
{
public:
	class FOverlaySlot;
	struct FSlotArguments : public TLayoutSlotArguments<FOverlaySlot, FSlotArguments>
	{
	};
	class SLATECORE_API FOverlaySlot : public TBasicLayoutWidgetSlot<FOverlaySlot>
	{
	public:
		using FSlotArguments = SOverlay::FSlotArguments;
		void Construct(const FSlotArguments& Arguments) { ConstructLayout(Arguments); }
	};
	using FScopedWidgetSlotArguments = TPanelChildren<FOverlaySlot>::FScopedWidgetSlotArguments;

	SLATE_BEGIN_ARGS(SOverlay) {}
	SLATE_SLOT_ARGUMENT(SOverlay::FOverlaySlot, Slots)
	SLATE_END_ARGS()

	SOverlay();
	void Construct(const FArguments& InArgs);
	static FSlotArguments Slot() { return FSlotArguments(); }
	FScopedWidgetSlotArguments AddSlot() { return FScopedWidgetSlotArguments(Children, INDEX_NONE); }
	void RemoveSlot(const TSharedRef<SWidget>& Widget) { Children.Remove(Widget); }
	void ClearChildren() { Children.Empty(); }
	virtual FChildren* GetChildren() override { return &Children; }

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;

	TPanelChildren<FOverlaySlot> Children;
};
