#pragma once

#include "Styling/SlateTypes.h"
#include "Widgets/Layout/SBorder.h"

/**
 * A button. It is clicked when the left mouse button is released over it, or when Enter or Space is released while it has
 * the focus; the press must have begun on it.
 */
class SLATE_API SButton : public SBorder
{
public:
	SLATE_BEGIN_ARGS(SButton)
		: _ButtonColorAndOpacity(FSlateColor(FLinearColor::White))
	{
	}
	/** The widget keeps the pointer. Without one: the style "Button". */
	SLATE_STYLE_ARGUMENT(FButtonStyle, ButtonStyle)
	SLATE_STYLE_ARGUMENT(FTextBlockStyle, TextStyle)
	/** Unset: left alone a label or icon is centred, anything else fills the button. */
	SLATE_ARGUMENT(TOptional<EHorizontalAlignment>, HAlign)
	SLATE_ARGUMENT(TOptional<EVerticalAlignment>, VAlign)
	/** Unset: 4 and 2, or 16 at the sides for a style with a minimum size. */
	SLATE_ATTRIBUTE(FMargin, ContentPadding)
	HOST_MARGIN_NUMBERS(ContentPadding)
	/** A label, in place of content. */
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_ATTRIBUTE(FSlateColor, ButtonColorAndOpacity)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_ARGUMENT_DEFAULT(bool, IsFocusable) = true;
	SLATE_EVENT(FOnClicked, OnClicked)
	SLATE_EVENT(FSimpleDelegate, OnPressed)
	SLATE_EVENT(FSimpleDelegate, OnReleased)
	SLATE_EVENT(FSimpleDelegate, OnHovered)
	SLATE_EVENT(FSimpleDelegate, OnUnhovered)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	bool IsPressed() const { return bMousePressed || bKeyPressed; }

	virtual bool SupportsKeyboardFocus() const override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnKeyUp(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual void OnFocusLost(const FFocusEvent& InFocusEvent) override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseLeave(const FPointerEvent& MouseEvent) override;
	virtual void OnMouseCaptureLost() override;
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	/** Runs the click handler; handled without one. */
	virtual FReply ExecuteOnClick();
	const FButtonStyle& GetButtonStyle() const { return *Style; }
	/** Pressed as far as the eye goes: a mouse press that has been dragged off the button looks released. */
	bool LooksPressed() const { return bKeyPressed || (bMousePressed && IsHovered()); }

private:
	void Press();
	void Release();

	const FButtonStyle* Style = nullptr;
	TAttribute<FSlateColor> ButtonColorAndOpacity;
	FOnClicked ClickHandler;
	FSimpleDelegate PressedHandler;
	FSimpleDelegate ReleasedHandler;
	FSimpleDelegate HoveredHandler;
	FSimpleDelegate UnhoveredHandler;
	bool bFocusable = true;
	bool bMousePressed = false;
	bool bKeyPressed = false;
};
