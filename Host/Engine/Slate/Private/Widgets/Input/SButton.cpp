#include "Widgets/Input/SButton.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"
#include "Widgets/Text/STextBlock.h"

// A button acts when it is let go: a press can be taken back by leaving it first. Handlers run in the order pressed,
// released, clicked, and each of them may take the button down, so what is needed later is taken before.

namespace
{
	bool IsPressKey(const FKey& Key)
	{
		return Key == EKeys::Enter || Key == EKeys::SpaceBar;
	}
}

// 1. Text where no content is given. 2. A single widget stands in the middle, and a panel, which arranges by itself, fills
// the button. 3. The rest is a border's work.
void SButton::Construct(const FArguments& InArgs)
{
	Style = InArgs._ButtonStyle ? InArgs._ButtonStyle : &FAppStyle::Get().GetWidgetStyle<FButtonStyle>("Button");
	ButtonColorAndOpacity = InArgs._ButtonColorAndOpacity;
	ClickHandler = InArgs._OnClicked;
	PressedHandler = InArgs._OnPressed;
	ReleasedHandler = InArgs._OnReleased;
	HoveredHandler = InArgs._OnHovered;
	UnhoveredHandler = InArgs._OnUnhovered;
	bFocusable = InArgs._IsFocusable;

	TSharedRef<SWidget> Content = InArgs._Content.Widget;
	if (&Content.Get() == &SNullWidget::NullWidget.Get() && InArgs._Text.IsSet())
	{
		Content = SNew(STextBlock).Text(InArgs._Text).TextStyle(InArgs._TextStyle);
	}
	const bool bLeaf = Content->GetChildren()->Num() == 0;
	const FMargin Padding = Style->MinSize.X > 0.0 ? FMargin(16.0f, 2.0f) : FMargin(4.0f, 2.0f);
	SBorder::FArguments BorderArguments;
	BorderArguments.HAlign(InArgs._HAlign.Get(bLeaf ? HAlign_Center : HAlign_Fill))
		.VAlign(InArgs._VAlign.Get(VAlign_Center))
		.Padding(InArgs._ContentPadding.IsSet() ? InArgs._ContentPadding : TAttribute<FMargin>(Padding))[Content];
	if (InArgs._ForegroundColor.IsSet())
	{
		BorderArguments.ForegroundColor(InArgs._ForegroundColor);
	}
	SBorder::Construct(BorderArguments);
}

bool SButton::SupportsKeyboardFocus() const
{
	return bFocusable;
}

void SButton::Press()
{
	PressedHandler.ExecuteIfBound();
}

void SButton::Release()
{
	if (IsPressed())
	{
		bMousePressed = false;
		bKeyPressed = false;
		ReleasedHandler.ExecuteIfBound();
	}
}

FReply SButton::ExecuteOnClick()
{
	return ClickHandler.IsBound() ? ClickHandler.Execute() : FReply::Handled();
}

FReply SButton::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	// Keys that bubble up from something inside belong to that.
	if (!IsPressKey(InKeyEvent.GetKey()) || InKeyEvent.GetModifierKeys().AnyModifiersDown() || !HasKeyboardFocus())
	{
		return FReply::Unhandled();
	}
	if (!bKeyPressed && !InKeyEvent.IsRepeat())
	{
		bKeyPressed = true;
		Press();
	}
	return FReply::Handled();
}

// It may have been disabled between press and release.
FReply SButton::OnKeyUp(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (!bKeyPressed || !IsPressKey(InKeyEvent.GetKey()))
	{
		return FReply::Unhandled();
	}
	Release();
	return IsEnabled() ? ExecuteOnClick() : FReply::Handled();
}

void SButton::OnFocusLost(const FFocusEvent& InFocusEvent)
{
	if (bKeyPressed)
	{
		Release();
	}
}

FReply SButton::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton)
	{
		return FReply::Unhandled();
	}
	bMousePressed = true;
	Press();
	return FReply::Handled().CaptureMouse(AsShared());
}

FReply SButton::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	// The second press of two quick ones is a press like any other.
	return OnMouseButtonDown(MyGeometry, MouseEvent);
}

// A handler may hand the mouse on, to a drag for instance; only when it did not is the capture ended here.
FReply SButton::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !bMousePressed)
	{
		return FReply::Unhandled();
	}
	Release();
	FReply Reply = FReply::Handled();
	if (IsEnabled() && MyGeometry.IsUnderLocation(MouseEvent.GetScreenSpacePosition()))
	{
		Reply = ExecuteOnClick();
	}
	if (!Reply.GetMouseCaptor())
	{
		Reply.ReleaseMouseCapture();
	}
	return Reply;
}

void SButton::OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	SBorder::OnMouseEnter(MyGeometry, MouseEvent);
	HoveredHandler.ExecuteIfBound();
}

void SButton::OnMouseLeave(const FPointerEvent& MouseEvent)
{
	SBorder::OnMouseLeave(MouseEvent);
	UnhoveredHandler.ExecuteIfBound();
}

void SButton::OnMouseCaptureLost()
{
	if (bMousePressed)
	{
		Release();
	}
}

void SButton::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Button;
	Out.bNamedByContents = true;
	Out.Action = "press";
	Out.States |= IsPressed() ? EHostAccessState::Pressed : EHostAccessState::None;
}

FReply SButton::DoAccessAction()
{
	PressedHandler.ExecuteIfBound();
	ReleasedHandler.ExecuteIfBound();
	return ExecuteOnClick();
}

int32 SButton::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	const FSlateBrush* Brush = &Style->Normal;
	const FSlateColor* Foreground = &Style->NormalForeground;
	if (!bEnabled)
	{
		Brush = &Style->Disabled;
		Foreground = &Style->DisabledForeground;
	}
	else if (LooksPressed())
	{
		Brush = &Style->Pressed;
		Foreground = &Style->PressedForeground;
	}
	else if (IsHovered())
	{
		Brush = &Style->Hovered;
		Foreground = &Style->HoveredForeground;
	}
	const FSlateRect Bounds = AllottedGeometry.GetLayoutBoundingRect();
	OutDrawElements.AddBrush(Bounds, *Brush, ButtonColorAndOpacity.Get().GetColor(InWidgetStyle), InWidgetStyle.GetColorAndOpacityTint());
	if (bEnabled && ShouldShowFocusRing())
	{
		FHostWidgetPaint::AddFocusRing(OutDrawElements, Bounds, Style->Radius, AllottedGeometry.GetAccumulatedScale(), InWidgetStyle);
	}

	FWidgetStyle ContentStyle = InWidgetStyle;
	ContentStyle.SetForegroundColor(Foreground->GetColor(InWidgetStyle));
	if (!bEnabled)
	{
		ContentStyle.BlendOpacity(Style->DisabledContentOpacity);
	}
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, ContentStyle, bParentEnabled);
}

FVector2D SButton::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return FVector2D::Max(SCompoundWidget::ComputeDesiredSize(LayoutScaleMultiplier), Style->MinSize);
}
