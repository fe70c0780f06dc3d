#pragma once

#include "MenuItem.h"
#include "Widgets/SCompoundWidget.h"

class SMenu;

/** An entry of a menu, or what opens a sub-menu. Greyed, and dead to the mouse, while its action cannot be executed. */
class SMenuRow : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMenuRow) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<FMenuItem>& InItem, const TWeakPtr<SMenu>& InMenu, int32 InIndex);

	const FMenuItem& GetItem() const { return *Item; }

	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;

	virtual void OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseLeave(const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override
	{
		return OnMouseButtonDown(MyGeometry, MouseEvent);
	}

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	bool CanBePicked() const { return Item->IsEnabled(); }
	bool IsHighlighted() const;
	FSlateColor GetForeground() const;
	FSlateColor GetIconColor() const;
	FSlateColor GetKeyTextColor() const;
	const FSlateBrush* GetMark() const;

	TSharedRef<FMenuItem> Item = MakeShared<FMenuItem>();
	TWeakPtr<SMenu> Menu;
	int32 Index = INDEX_NONE;
};
