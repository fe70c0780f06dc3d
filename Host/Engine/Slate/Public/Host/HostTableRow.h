#pragma once

#include "Widgets/Layout/SBorder.h"
#include "Widgets/Views/ITableRow.h"
#include "Widgets/Views/STableViewBase.h"

/** A row's look and its reaction to the mouse, whatever its item's type. */
class SLATE_API SHostTableRow : public SBorder, public ITableRow
{
public:
	virtual TSharedRef<SWidget> AsWidget() override { return AsShared(); }
	virtual void SetIndexInList(int32 InIndex) override { IndexInList = InIndex; }
	bool IsSelected() const;

	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;

protected:
	void ConstructRow(const FTableRowStyle* InStyle, const TAttribute<FMargin>& InPadding, bool bInShowSelection,
		const TSharedRef<SWidget>& InContent, const TSharedRef<STableViewBase>& InOwner);
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	TWeakPtr<STableViewBase> Owner;
	const FTableRowStyle* Style = nullptr;
	int32 IndexInList = INDEX_NONE;
	bool bShowSelection = true;
	bool bPressed = false;
};
