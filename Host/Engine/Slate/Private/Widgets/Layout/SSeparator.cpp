#include "Widgets/Layout/SSeparator.h"

#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"

void SSeparator::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	Orientation = InArgs._Orientation;
	Thickness = InArgs._Thickness;
	ColorAndOpacity = InArgs._ColorAndOpacity;
}

int32 SSeparator::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	// Centred, and never thicker than asked for when it is given more room.
	FSlateRect Line = AllottedGeometry.GetLayoutBoundingRect();
	const float Width = FMath::Max(FMath::RoundToFloat(Thickness * AllottedGeometry.GetAccumulatedScale()), 1.0f);
	if (Orientation == Orient_Horizontal)
	{
		Line.Top = FMath::RoundToFloat((Line.Top + Line.Bottom - Width) * 0.5f);
		Line.Bottom = Line.Top + Width;
	}
	else
	{
		Line.Left = FMath::RoundToFloat((Line.Left + Line.Right - Width) * 0.5f);
		Line.Right = Line.Left + Width;
	}
	const FLinearColor Color =
		ColorAndOpacity.IsSet() ? ColorAndOpacity.Get().GetColor(InWidgetStyle) : FAppStyle::GetColor("Colors.PopupLine");
	OutDrawElements.AddBox(Line, (Color * InWidgetStyle.GetColorAndOpacityTint()).ToFColorSRGB());
	return LayerId;
}

FVector2D SSeparator::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return FVector2D(Thickness, Thickness);
}
