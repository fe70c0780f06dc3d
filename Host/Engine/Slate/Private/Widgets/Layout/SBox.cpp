#include "Widgets/Layout/SBox.h"

namespace
{
	/** A minimum wins over a maximum below it. */
	double LimitBoxSize(double Size, const FOptionalSize& Override, const FOptionalSize& Min, const FOptionalSize& Max)
	{
		if (Override.IsSet())
		{
			return Override.Get();
		}
		if (Max.IsSet())
		{
			Size = FMath::Min(Size, static_cast<double>(Max.Get()));
		}
		if (Min.IsSet())
		{
			Size = FMath::Max(Size, static_cast<double>(Min.Get()));
		}
		return Size;
	}
}

void SBox::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	SetWidthOverride(InArgs._WidthOverride);
	SetHeightOverride(InArgs._HeightOverride);
	SetMinDesiredWidth(InArgs._MinDesiredWidth);
	SetMinDesiredHeight(InArgs._MinDesiredHeight);
	SetMaxDesiredWidth(InArgs._MaxDesiredWidth);
	SetMaxDesiredHeight(InArgs._MaxDesiredHeight);
	ChildSlot.HAlign(InArgs._HAlign).VAlign(InArgs._VAlign).Padding(InArgs._Padding)[InArgs._Content.Widget];
}

FVector2D SBox::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const FVector2D Content = SCompoundWidget::ComputeDesiredSize(LayoutScaleMultiplier);
	return FVector2D(LimitBoxSize(Content.X, WidthOverride.Get(), MinDesiredWidth.Get(), MaxDesiredWidth.Get()),
		LimitBoxSize(Content.Y, HeightOverride.Get(), MinDesiredHeight.Get(), MaxDesiredHeight.Get()));
}
