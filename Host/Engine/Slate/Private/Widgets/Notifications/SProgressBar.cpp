#include "Widgets/Notifications/SProgressBar.h"

#include "Host/HostAccess.h"
#include "Host/HostMotion.h"
#include "Host/HostSleep.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"

namespace
{
	/** Share of the bar that wanders, and the seconds of one round. */
	constexpr double MarqueeShare = 0.3;
	constexpr double MarqueeRound = 1.6;
	constexpr double LeastBarWidth = 32.0;
}

void SProgressBar::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	Style = InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FProgressBarStyle>("ProgressBar");
	Percent = InArgs._Percent;
	FillColorAndOpacity = InArgs._FillColorAndOpacity;
}

FVector2D SProgressBar::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return FVector2D(LeastBarWidth, Style->Height);
}

int32 SProgressBar::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FLinearColor& Tint = InWidgetStyle.GetColorAndOpacityTint();
	OutDrawElements.AddBrush(AllottedGeometry.GetLayoutBoundingRect(), Style->BackgroundImage, FLinearColor::White, Tint);

	const TOptional<float> Fraction = Percent.Get();
	double Begin = 0.0;
	double End = 0.0;
	if (Fraction.IsSet())
	{
		End = FMath::Clamp(static_cast<double>(Fraction.GetValue()), 0.0, 1.0);
	}
	else if (FHostMotion::IsReduced())
	{
		// In the middle, and not from the start as a fraction would.
		Begin = (1.0 - MarqueeShare) * 0.5;
		End = Begin + MarqueeShare;
	}
	else
	{
		FHostSleep::RequestFrameAt(Args.GetCurrentTime());
		const double Phase = FMath::Fmod(Args.GetCurrentTime(), MarqueeRound) / MarqueeRound;
		Begin = FMath::Max(Phase * (1.0 + MarqueeShare) - MarqueeShare, 0.0);
		End = FMath::Min(Phase * (1.0 + MarqueeShare), 1.0);
	}
	if (!(End > Begin))
	{
		return LayerId;
	}
	// Clipped rather than shortened below its own height, so that a small fraction keeps the bar's round end.
	const FSlateRect Visible = AllottedGeometry.ToDevice(FVector2D(Begin * Size.X, 0.0), FVector2D((End - Begin) * Size.X, Size.Y));
	FSlateRect Fill = Visible;
	Fill.Right = FMath::Max(Fill.Right, FMath::Min(Fill.Left + Fill.Height(), AllottedGeometry.GetLayoutBoundingRect().Right));
	const bool bShort = Fill.Right > Visible.Right;
	if (bShort)
	{
		OutDrawElements.PushClip(Visible);
	}
	OutDrawElements.AddBrush(Fill, Style->FillImage, FillColorAndOpacity.Get().GetColor(InWidgetStyle), Tint);
	if (bShort)
	{
		OutDrawElements.PopClip();
	}
	return LayerId;
}

void SProgressBar::DescribeAccess(FHostAccess& Out) const
{
	const TOptional<float> Fraction = Percent.Get();
	Out.Role = EHostRole::ProgressBar;
	Out.States |= Fraction.IsSet() ? EHostAccessState::None : EHostAccessState::Busy;
	FHostAccessRange Range;
	Range.Value = FMath::Clamp(static_cast<double>(Fraction.Get(0.0f)), 0.0, 1.0);
	Out.Range = Range;
}
