#include "Widgets/Input/SCheckBox.h"

#include "Host/HostAccess.h"
#include "Host/HostWidgetPaint.h"
#include "Layout/LayoutUtils.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"

// A box with a label. Mouse and blank both act at the release, so that a press can be taken back: by leaving the box before
// letting go, or by moving the focus.

namespace
{
	constexpr float CheckBoxRadius = 3.0f;
	constexpr float DisabledLabelOpacity = 0.6f;
}

void SCheckBox::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	Style = InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FCheckBoxStyle>("Checkbox");
	CheckedState = InArgs._IsChecked;
	StateChangedHandler = InArgs._OnCheckStateChanged;
	bFocusable = InArgs._IsFocusable;
	ChildSlot.VAlign(VAlign_Center).Padding(InArgs._Padding)[InArgs._Content.Widget];
}

// Without a label the box stands in the middle of its room instead of at its left.
bool SCheckBox::HasContent() const
{
	return &ChildSlot.GetWidgetRef() != &SNullWidget::NullWidget.Get() && !ChildSlot.GetWidgetRef().GetVisibility().IsCollapsed();
}

// A bound state is the owner's: it hears what the user wants and the box shows what the owner says then. What is neither on
// nor off becomes on.
void SCheckBox::ToggleCheckedState()
{
	const ECheckBoxState NewState = IsChecked() ? ECheckBoxState::Unchecked : ECheckBoxState::Checked;
	if (!CheckedState.IsBound())
	{
		CheckedState = NewState;
	}
	StateChangedHandler.ExecuteIfBound(NewState);
}

FReply SCheckBox::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (InKeyEvent.GetKey() != EKeys::SpaceBar || InKeyEvent.GetModifierKeys().AnyModifiersDown() || !HasKeyboardFocus())
	{
		return FReply::Unhandled();
	}
	bKeyPressed = bKeyPressed || !InKeyEvent.IsRepeat();
	return FReply::Handled();
}

FReply SCheckBox::OnKeyUp(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (!bKeyPressed || InKeyEvent.GetKey() != EKeys::SpaceBar)
	{
		return FReply::Unhandled();
	}
	bKeyPressed = false;
	ToggleCheckedState();
	return FReply::Handled();
}

void SCheckBox::OnFocusLost(const FFocusEvent& InFocusEvent)
{
	bKeyPressed = false;
}

FReply SCheckBox::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton)
	{
		return FReply::Unhandled();
	}
	bPressed = true;
	return FReply::Handled().CaptureMouse(AsShared());
}

FReply SCheckBox::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return OnMouseButtonDown(MyGeometry, MouseEvent);
}

FReply SCheckBox::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !bPressed)
	{
		return FReply::Unhandled();
	}
	bPressed = false;
	if (IsEnabled() && MyGeometry.IsUnderLocation(MouseEvent.GetScreenSpacePosition()))
	{
		ToggleCheckedState();
	}
	return FReply::Handled().ReleaseMouseCapture();
}

void SCheckBox::DescribeAccess(FHostAccess& Out) const
{
	const ECheckBoxState State = GetCheckedState();
	Out.Role = EHostRole::CheckBox;
	Out.bNamedByContents = true;
	Out.Action = "toggle";
	Out.States |= EHostAccessState::Checkable;
	Out.States |= State == ECheckBoxState::Checked ? EHostAccessState::Checked : EHostAccessState::None;
	Out.States |= State == ECheckBoxState::Undetermined ? EHostAccessState::Mixed : EHostAccessState::None;
}

FReply SCheckBox::DoAccessAction()
{
	ToggleCheckedState();
	return FReply::Handled();
}

FVector2D SCheckBox::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	if (!HasContent())
	{
		return Style->BoxSize;
	}
	const FVector2D Content = SCompoundWidget::ComputeDesiredSize(LayoutScaleMultiplier);
	return FVector2D(Style->BoxSize.X + Content.X, FMath::Max(Style->BoxSize.Y, Content.Y));
}

void SCheckBox::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	if (!HasContent())
	{
		return;
	}
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FVector2D Room(FMath::Max(Size.X - Style->BoxSize.X, 0.0), Size.Y);
	SCompoundWidget::OnArrangeChildren(AllottedGeometry.MakeChild(FVector2D(Style->BoxSize.X, 0.0), Room), ArrangedChildren);
}

// 1. The box, by state and attention. 2. The mark on it. 3. The ring of the keyboard. 4. The label, paler when disabled.
int32 SCheckBox::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	const bool bLit = IsHovered() || bPressed || bKeyPressed;
	const ECheckBoxState State = GetCheckedState();
	const bool bFilled = State != ECheckBoxState::Unchecked;
	const FSlateBrush* Box = nullptr;
	if (bFilled)
	{
		Box = !bEnabled ? &Style->CheckedDisabledImage : (bLit ? &Style->CheckedHoveredImage : &Style->CheckedImage);
	}
	else
	{
		Box = !bEnabled ? &Style->UncheckedDisabledImage : (bLit ? &Style->UncheckedHoveredImage : &Style->UncheckedImage);
	}
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FVector2D BoxCorner(HasContent() ? 0.0 : FMath::Max((Size.X - Style->BoxSize.X) * 0.5, 0.0), (Size.Y - Style->BoxSize.Y) * 0.5);
	const FLinearColor& Tint = InWidgetStyle.GetColorAndOpacityTint();
	const FSlateRect BoxRect = AllottedGeometry.ToDevice(BoxCorner, Style->BoxSize);
	OutDrawElements.AddBrush(BoxRect, *Box, FLinearColor::White, Tint);
	const FLinearColor MarkColor = (bEnabled ? Style->MarkColor : Style->DisabledMarkColor).GetColor(InWidgetStyle);
	if (State == ECheckBoxState::Checked)
	{
		const FSlateRect Mark = AllottedGeometry.ToDevice(BoxCorner + (Style->BoxSize - Style->MarkSize) * 0.5, Style->MarkSize);
		OutDrawElements.AddBrush(Mark, Style->MarkImage, MarkColor, Tint);
	}
	else if (State == ECheckBoxState::Undetermined)
	{
		const FVector2D Bar(8.0, 2.0);
		OutDrawElements.AddBox(AllottedGeometry.ToDevice(BoxCorner + (Style->BoxSize - Bar) * 0.5, Bar), (MarkColor * Tint).ToFColorSRGB());
	}
	if (bEnabled && ShouldShowFocusRing())
	{
		FHostWidgetPaint::AddFocusRing(OutDrawElements, BoxRect, CheckBoxRadius, AllottedGeometry.GetAccumulatedScale(), InWidgetStyle);
	}
	FWidgetStyle ContentStyle = InWidgetStyle;
	if (!bEnabled)
	{
		ContentStyle.BlendOpacity(DisabledLabelOpacity);
	}
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, ContentStyle, bParentEnabled);
}
