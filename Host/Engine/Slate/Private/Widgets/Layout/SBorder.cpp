#include "Widgets/Layout/SBorder.h"

#include "Rendering/DrawElements.h"

void SBorder::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	if (InArgs._BorderImage.IsSet())
	{
		BorderImage = InArgs._BorderImage;
	}
	BorderBackgroundColor = InArgs._BorderBackgroundColor;
	SetColorAndOpacity(InArgs._ColorAndOpacity);
	if (InArgs._ForegroundColor.IsSet())
	{
		SetForegroundColor(InArgs._ForegroundColor);
	}
	MouseButtonDownHandler = InArgs._OnMouseButtonDown;
	MouseButtonUpHandler = InArgs._OnMouseButtonUp;
	MouseDoubleClickHandler = InArgs._OnMouseDoubleClick;
	ChildSlot.HAlign(InArgs._HAlign).VAlign(InArgs._VAlign).Padding(InArgs._Padding)[InArgs._Content.Widget];
}

FReply SBorder::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return MouseButtonDownHandler.IsBound() ? MouseButtonDownHandler.Execute(MyGeometry, MouseEvent) : FReply::Unhandled();
}

FReply SBorder::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return MouseButtonUpHandler.IsBound() ? MouseButtonUpHandler.Execute(MyGeometry, MouseEvent) : FReply::Unhandled();
}

FReply SBorder::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return MouseDoubleClickHandler.IsBound() ? MouseDoubleClickHandler.Execute(MyGeometry, MouseEvent) : FReply::Unhandled();
}

int32 SBorder::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	if (const FSlateBrush* Brush = BorderImage.Get())
	{
		OutDrawElements.AddBrush(AllottedGeometry.GetLayoutBoundingRect(), *Brush, BorderBackgroundColor.Get().GetColor(InWidgetStyle),
			InWidgetStyle.GetColorAndOpacityTint());
	}
	return SCompoundWidget::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
}
