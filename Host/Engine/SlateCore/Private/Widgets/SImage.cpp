#include "Widgets/Images/SImage.h"

#include "Host/HostAccess.h"

void SImage::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	AssignSizeAttribute(
		Image, InArgs._Image.IsSet() ? InArgs._Image : TAttribute<const FSlateBrush*>(static_cast<const FSlateBrush*>(nullptr)));
	ColorAndOpacity = InArgs._ColorAndOpacity;
	AssignSizeAttribute(DesiredSizeOverride, InArgs._DesiredSizeOverride);
	if (InArgs._OnMouseButtonDown.IsBound())
	{
		OnMouseDown = InArgs._OnMouseButtonDown;
	}
}

void SImage::SetImage(TAttribute<const FSlateBrush*> InImage)
{
	AssignSizeAttribute(Image, MoveTemp(InImage));
}

FReply SImage::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (OnMouseDown.IsBound())
	{
		const FPointerEventHandler Handler = OnMouseDown;
		return Handler.Execute(MyGeometry, MouseEvent);
	}
	return FReply::Unhandled();
}

int32 SImage::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	if (const FSlateBrush* Brush = Image.Get())
	{
		OutDrawElements.AddBrush(AllottedGeometry.GetLayoutBoundingRect(), *Brush, ColorAndOpacity.Get().GetColor(InWidgetStyle),
			InWidgetStyle.GetColorAndOpacityTint());
	}
	return LayerId;
}

FVector2D SImage::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const FSlateBrush* Brush = Image.Get();
	if (!Brush)
	{
		return FVector2D(0, 0);
	}
	const TOptional<FVector2D> Override = DesiredSizeOverride.Get();
	return Override.IsSet() ? Override.GetValue() : Brush->GetImageSize();
}

void SImage::DescribeAccess(FHostAccess& Out) const
{
	// A picture with something to say; all others only adorn what stands beside them.
	Out.Name = GetToolTipText();
	Out.Role = Out.Name.IsEmpty() ? EHostRole::None : EHostRole::Image;
}
