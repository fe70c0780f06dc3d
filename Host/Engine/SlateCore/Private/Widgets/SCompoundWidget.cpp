#include "Widgets/SCompoundWidget.h"

#include "Layout/LayoutUtils.h"
#include "Widgets/SPanel.h"

SCompoundWidget::FCompoundWidgetOneChildSlot& SCompoundWidget::FCompoundWidgetOneChildSlot::Padding(TAttribute<FMargin> InPadding)
{
	PaddingAttribute = MoveTemp(InPadding);
	NoteBinding(PaddingAttribute.IsBound());
	InvalidateLayout();
	return *this;
}

SCompoundWidget::FCompoundWidgetOneChildSlot& SCompoundWidget::FCompoundWidgetOneChildSlot::HAlign(EHorizontalAlignment InAlignment)
{
	HAlignment = InAlignment;
	InvalidateLayout();
	return *this;
}

SCompoundWidget::FCompoundWidgetOneChildSlot& SCompoundWidget::FCompoundWidgetOneChildSlot::VAlign(EVerticalAlignment InAlignment)
{
	VAlignment = InAlignment;
	InvalidateLayout();
	return *this;
}

SCompoundWidget::SCompoundWidget()
	: Children(this)
	, ChildSlot(Children.Slot)
{
}

FWidgetStyle SCompoundWidget::GetChildStyle(const FWidgetStyle& InWidgetStyle) const
{
	FWidgetStyle Style = InWidgetStyle;
	Style.BlendColorAndOpacityTint(ColorAndOpacity.Get());
	if (ForegroundColor.IsSet())
	{
		Style.SetForegroundColor(ForegroundColor.Get().GetColor(InWidgetStyle));
	}
	return Style;
}

int32 SCompoundWidget::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	FArrangedChildren Arranged(EVisibility::Visible, OutDrawElements.GetClip());
	ArrangeChildren(AllottedGeometry, Arranged);
	return PaintArrangedChildren(
		Args, Arranged, MyCullingRect, OutDrawElements, LayerId, GetChildStyle(InWidgetStyle), ShouldBeEnabled(bParentEnabled));
}

FVector2D SCompoundWidget::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const SWidget& Child = ChildSlot.GetWidgetRef();
	if (Child.GetVisibility().IsCollapsed())
	{
		return FVector2D(0, 0);
	}
	return Child.GetDesiredSize() + ChildSlot.GetPadding().GetDesiredSize();
}

void SCompoundWidget::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const TSharedRef<SWidget>& Child = ChildSlot.GetWidget();
	const EVisibility ChildVisibility = Child->GetVisibility();
	if (!ArrangedChildren.Accepts(ChildVisibility))
	{
		return;
	}
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FVector2D& Desired = Child->GetDesiredSize();
	const FMargin Padding = ChildSlot.GetPadding();
	const FAlignedAxis X =
		AlignChild(ChildSlot.GetHorizontalAlignment(), static_cast<float>(Size.X), static_cast<float>(Desired.X), Padding);
	const FAlignedAxis Y = AlignChild(ChildSlot.GetVerticalAlignment(), static_cast<float>(Size.Y), static_cast<float>(Desired.Y), Padding);
	ArrangedChildren.AddWidget(
		FArrangedWidget(Child, AllottedGeometry.MakeChild(FVector2D(X.Offset, Y.Offset), FVector2D(X.Size, Y.Size))));
}

int32 SPanel::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	FArrangedChildren Arranged(EVisibility::Visible, OutDrawElements.GetClip());
	ArrangeChildren(AllottedGeometry, Arranged);
	return PaintArrangedChildren(Args, Arranged, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, ShouldBeEnabled(bParentEnabled));
}
