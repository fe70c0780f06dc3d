#pragma once

#include "Widgets/SPanel.h"

/**
 * Two parts side by side, the second one below the first where there is less room than it takes. Of a row the first part has a share of
 * the width. Of columns, which fill their height, it has a width of its own; folded it has no more than its share of the height.
 */
class SLATE_API SFoldingRow : public SPanel
{
public:
	class FSlot;
	struct FSlotArguments : public TLayoutSlotArguments<FSlot, FSlotArguments>
	{
	};
	class SLATE_API FSlot : public TBasicLayoutWidgetSlot<FSlot>
	{
	public:
		using FSlotArguments = SFoldingRow::FSlotArguments;
		void Construct(const FSlotArguments& Arguments);
	};

	SLATE_BEGIN_ARGS(SFoldingRow) {}
	/** Two of them. Their vertical alignment counts while they stand side by side. */
	SLATE_SLOT_ARGUMENT(SFoldingRow::FSlot, Slots)
	/** Folds below this width, units. */
	SLATE_ARGUMENT_DEFAULT(float, FoldWidth) = 400.0f;
	SLATE_ARGUMENT_DEFAULT(float, FirstShare) = 0.36f;
	/** Units; above zero it makes columns. */
	SLATE_ARGUMENT_DEFAULT(float, FirstWidth) = 0.0f;
	/** Between the parts, units. */
	SLATE_ARGUMENT_DEFAULT(float, Gap) = 8.0f;
	SLATE_END_ARGS()

	SFoldingRow();
	void Construct(const FArguments& InArgs);
	static FSlotArguments Slot() { return FSlotArguments(); }
	virtual FChildren* GetChildren() override { return &Children; }

	bool IsFolded() const { return bFolded; }
	/** The first part is no column of its own but names what is in the second. */
	bool IsNaming() const { return FirstWidth <= 0.0f; }

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;

private:
	FVector2D GetWanted(int32 Index) const;
	/** The height that the parts want one below the other. A first part without any takes no gap either. */
	float GetFoldedGap() const;
	void AddChild(const FGeometry& Geometry, int32 Index, const FSlateRect& Place, bool bFills, FArrangedChildren& ArrangedChildren) const;

	TPanelChildren<FSlot> Children;
	float FoldWidth = 0.0f;
	float FirstShare = 0.0f;
	float FirstWidth = 0.0f;
	float Gap = 0.0f;
	/** As arranged last; what it wants depends on it. */
	mutable bool bFolded = false;
};
