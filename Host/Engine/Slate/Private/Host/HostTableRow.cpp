#include "Host/HostTableRow.h"

#include "Host/HostAccess.h"
#include "Rendering/DrawElements.h"

void SHostTableRow::ConstructRow(const FTableRowStyle* InStyle, const TAttribute<FMargin>& InPadding, bool bInShowSelection,
	const TSharedRef<SWidget>& InContent, const TSharedRef<STableViewBase>& InOwner)
{
	Owner = InOwner;
	Style = InStyle ? InStyle : &InOwner->GetRowStyle();
	bShowSelection = bInShowSelection;
	ChildSlot.Padding(InPadding)[InContent];
}

bool SHostTableRow::IsSelected() const
{
	const TSharedPtr<STableViewBase> List = Owner.Pin();
	return List && List->IsRowSelected(IndexInList);
}

FReply SHostTableRow::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const TSharedPtr<STableViewBase> List = Owner.Pin();
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !List)
	{
		return FReply::Unhandled();
	}
	bPressed = true;
	List->NotifyRowPressed(IndexInList);
	return FReply::Handled();
}

FReply SHostTableRow::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const TSharedPtr<STableViewBase> List = Owner.Pin();
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !bPressed || !List)
	{
		return FReply::Unhandled();
	}
	bPressed = false;
	List->NotifyRowClicked(IndexInList);
	return FReply::Handled();
}

FReply SHostTableRow::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const TSharedPtr<STableViewBase> List = Owner.Pin();
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !List)
	{
		return FReply::Unhandled();
	}
	List->NotifyRowDoubleClicked(IndexInList);
	return FReply::Handled();
}

void SHostTableRow::DescribeAccess(FHostAccess& Out) const
{
	const TSharedPtr<STableViewBase> List = Owner.Pin();
	const bool bSelected = IsSelected();
	Out.Role = EHostRole::ListItem;
	Out.bNamedByContents = true;
	Out.Action = "click";
	Out.States |= EHostAccessState::Selectable;
	Out.States |= bSelected ? EHostAccessState::Selected : EHostAccessState::None;
	// The list has the keyboard; what it works on is this row.
	Out.States |= bSelected && List && List->HasKeyboardFocus() ? EHostAccessState::Focused : EHostAccessState::None;
}

FReply SHostTableRow::DoAccessAction()
{
	if (const TSharedPtr<STableViewBase> List = Owner.Pin())
	{
		// The first handler may make the rows anew.
		const int32 Index = IndexInList;
		List->NotifyRowPressed(Index);
		List->NotifyRowClicked(Index);
	}
	return FReply::Handled();
}

int32 SHostTableRow::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	const bool bSelected = bShowSelection && IsSelected();
	const bool bHovered = IsHovered() && bEnabled;
	const FSlateBrush* Brush = &Style->InactiveBrush;
	if (bSelected)
	{
		Brush = bHovered ? &Style->ActiveHoveredBrush : &Style->ActiveBrush;
	}
	else
	{
		Brush = bHovered ? &Style->HoveredBrush : nullptr;
	}
	if (Brush)
	{
		OutDrawElements.AddBrush(
			AllottedGeometry.GetLayoutBoundingRect(), *Brush, FLinearColor::White, InWidgetStyle.GetColorAndOpacityTint());
	}
	FWidgetStyle RowStyle = InWidgetStyle;
	const FSlateColor& Text = !bEnabled ? Style->DisabledTextColor : bSelected || bHovered ? Style->SelectedTextColor : Style->TextColor;
	RowStyle.SetForegroundColor(Text.GetColor(InWidgetStyle));
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, RowStyle, bParentEnabled);
}
