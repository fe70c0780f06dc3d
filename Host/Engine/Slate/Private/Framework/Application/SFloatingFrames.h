#pragma once

#include "Widgets/SCompoundWidget.h"
#include "Widgets/SWindow.h"

/** Shadow and opaque ground of a popup, around its content. */
class SPopupFrame : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SPopupFrame) {}
	SLATE_DEFAULT_SLOT(FArguments, Content)
	/** Units; zero for none. */
	SLATE_ARGUMENT_DEFAULT(float, MinWidth) = 0.0f;
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

	float MinWidth = 0.0f;
};

/** A window's frame: the rest darkened when modal, title bar with close mark, body. Fills the program's window. */
class SWindowFrame : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SWindowFrame) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<SWindow>& InWindow, bool bInModal);
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual bool SupportsKeyboardFocus() const override { return true; }
	/** It shows no ring, so a Tab that went to it would seem to be lost. */
	virtual bool IsTabStop() const override { return false; }
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	TSharedPtr<SWindow> Window;
	TSharedPtr<SWidget> Panel;
	bool bModal = false;
};
