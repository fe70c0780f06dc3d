#pragma once

#include "Framework/SlateDelegates.h"
#include "Host/HostMarginArguments.h"
#include "Styling/SlateTypes.h"
#include "Widgets/SCompoundWidget.h"

/** A box with a mark and, beside it, content. A click anywhere on it or the space bar changes its state. */
class SLATE_API SCheckBox : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SCheckBox)
		: _IsChecked(ECheckBoxState::Unchecked)
		, _Padding(FMargin(8.0f, 0.0f, 0.0f, 0.0f))
	{
	}
	SLATE_STYLE_ARGUMENT(FCheckBoxStyle, Style)
	/** When bound, only its owner changes the state. */
	SLATE_ATTRIBUTE(ECheckBoxState, IsChecked)
	/** Around the content; without content there is none. */
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	SLATE_ARGUMENT_DEFAULT(bool, IsFocusable) = true;
	SLATE_EVENT(FOnCheckStateChanged, OnCheckStateChanged)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	bool IsChecked() const { return GetCheckedState() == ECheckBoxState::Checked; }
	ECheckBoxState GetCheckedState() const { return CheckedState.Get(); }
	/** As a click: unchecked and undetermined become checked. */
	void ToggleCheckedState();
	bool IsPressed() const { return bPressed; }

	virtual bool SupportsKeyboardFocus() const override { return bFocusable; }
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnKeyUp(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual void OnFocusLost(const FFocusEvent& InFocusEvent) override;
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseCaptureLost() override { bPressed = false; }

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual void OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const override;

private:
	bool HasContent() const;

	const FCheckBoxStyle* Style = nullptr;
	TAttribute<ECheckBoxState> CheckedState;
	FOnCheckStateChanged StateChangedHandler;
	bool bFocusable = true;
	bool bPressed = false;
	bool bKeyPressed = false;
};
