#include "Host/HostWidgetPaint.h"

#include "Host/TextShaper.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"
#include "Widgets/SWidget.h"

namespace
{
	void AddSurfaceShadow(FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Radius, float Blur, float Offset,
		float Opacity, float Scale, const FWidgetStyle& Style)
	{
		const FLinearColor Black(0.0f, 0.0f, 0.0f, Opacity * Style.GetColorAndOpacityTint().A);
		OutDrawElements.AddShadow(Rect, Radius * Scale, Blur * Scale, Offset * Scale, Black.ToFColorSRGB());
	}
}

void FHostWidgetPaint::AddFocusRing(
	FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Radius, float Scale, const FWidgetStyle& Style)
{
	FLinearColor Color = FAppStyle::GetColor("Colors.Accent");
	Color.A *= Style.GetColorAndOpacityTint().A;
	const float DeviceRadius = Radius * Scale;
	OutDrawElements.AddRoundedBox(Rect, FVector4f(DeviceRadius, DeviceRadius, DeviceRadius, DeviceRadius), FColor(0, 0, 0, 0),
		Color.ToFColorSRGB(), FMath::Max(FMath::RoundToFloat(Scale), 1.0f));
}

void FHostWidgetPaint::AddToolTipSurface(
	FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Scale, const FWidgetStyle& Style)
{
	AddSurfaceShadow(OutDrawElements, Rect, 4.0f, 12.0f, 4.0f, 0.5f, Scale, Style);
	OutDrawElements.AddBrush(Rect, *FAppStyle::GetBrush("ToolTip.Background"), FLinearColor::White, Style.GetColorAndOpacityTint());
}

void FHostWidgetPaint::AddToastSurface(
	FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Scale, const FWidgetStyle& Style)
{
	AddSurfaceShadow(OutDrawElements, Rect, 6.0f, 24.0f, 8.0f, 0.55f, Scale, Style);
	OutDrawElements.AddBrush(Rect, *FAppStyle::GetBrush("Menu.Background"), FLinearColor::White, Style.GetColorAndOpacityTint());
}

float FHostWidgetPaint::GetLineHeightPercentage(const FSlateFontInfo& Font, float LineHeight)
{
	if (!ITextShaper::IsSet())
	{
		return 1.0f;
	}
	const float Scale = SWidget::GetLayoutScale();
	const float Natural = ITextShaper::Get().GetLineMetrics(Font, Scale).LineHeight;
	return Natural > 0.0f ? LineHeight * Scale / Natural : 1.0f;
}
