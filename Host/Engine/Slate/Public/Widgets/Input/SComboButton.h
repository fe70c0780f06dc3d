#pragma once

#include "Host/HostMarginArguments.h"
#include "Styling/SlateTypes.h"
#include "Widgets/Input/SMenuAnchor.h"

class SBox;

/**
 * A button that opens a popup below itself. Its text ends in an ellipsis where it is too long for the button; other
 * content is cut off.
 */
class SLATE_API SComboButton : public SMenuAnchor
{
public:
	SLATE_BEGIN_ARGS(SComboButton) {}
	/** The widget keeps the pointer. Without one: "ComboButton". */
	SLATE_STYLE_ARGUMENT(FComboButtonStyle, ComboButtonStyle)
	/** Takes the place of the style's own button. */
	SLATE_STYLE_ARGUMENT(FButtonStyle, ButtonStyle)
	SLATE_NAMED_SLOT(FArguments, ButtonContent)
	SLATE_NAMED_SLOT(FArguments, MenuContent)
	SLATE_EVENT(FOnGetContent, OnGetMenuContent)
	SLATE_EVENT(FOnIsOpenChanged, OnMenuOpenChanged)
	SLATE_EVENT(FSimpleDelegate, OnComboBoxOpened)
	SLATE_ATTRIBUTE(FMargin, ContentPadding)
	HOST_MARGIN_NUMBERS(ContentPadding)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_ATTRIBUTE(EMenuPlacement, MenuPlacement)
	SLATE_ARGUMENT_DEFAULT(bool, HasDownArrow) = true;
	SLATE_ARGUMENT_DEFAULT(bool, IsFocusable) = true;
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	/** Puts other content into the button. */
	void SetButtonContent(const TSharedRef<SWidget>& InContent);

	virtual bool SupportsKeyboardFocus() const override { return bFocusable; }
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;

protected:
	/** The parts that a typed combo box passes on. */
	void ConstructButton(const FComboButtonStyle* InStyle, const FButtonStyle* InButtonStyle, const TSharedRef<SWidget>& InContent,
		const TAttribute<FMargin>& InPadding, bool bHasDownArrow);
	virtual TSharedPtr<SWidget> MakeMenuContent() override;
	virtual void OnOpenChanged(bool bIsOpen) override;
	virtual bool OpensByPress() const override { return true; }
	/** Whether the popup takes the keyboard when the user opens it. */
	virtual bool FocusesMenu() const { return true; }
	/** The popup's surface around its content. */
	TSharedRef<SWidget> MakeMenuSurface(const TSharedRef<SWidget>& InContent) const;
	const FComboButtonStyle& GetStyle() const { return *Style; }

	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	FMargin GetContentPadding() const;

	const FComboButtonStyle* Style = nullptr;
	const FButtonStyle* Button = nullptr;
	TAttribute<FMargin> ContentPadding;
	TSharedPtr<SBox> ContentHolder;
	FSimpleDelegate OpenedHandler;
	bool bArrow = true;
	bool bFocusable = true;
};
