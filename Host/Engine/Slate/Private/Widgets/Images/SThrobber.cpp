#include "Widgets/Images/SThrobber.h"

#include "Host/HostAccess.h"
#include "Host/HostMotion.h"
#include "Host/HostSleep.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"

namespace
{
	constexpr double ThrobberStep = 0.4;
	constexpr float ThrobberDisc = 6.0f;
	constexpr float ThrobberGap = 4.0f;

	/** The bright disc, the one behind it, all others. */
	float GetDiscOpacity(int32 StepsBehind)
	{
		return StepsBehind == 0 ? 1.0f : (StepsBehind == 1 ? 0.6f : 0.25f);
	}
}

void SThrobber::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	NumPieces = FMath::Max(InArgs._NumPieces, 1);
}

int32 SThrobber::GetBrightPiece(double Time, int32 NumPieces)
{
	// A little forward, so that a clock stepped by exactly the period does not stay behind for rounding.
	const int64 Step = FMath::FloorToInt64(Time / ThrobberStep + 1.0e-6);
	return static_cast<int32>(((Step % NumPieces) + NumPieces) % NumPieces);
}

FVector2D SThrobber::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return FVector2D(NumPieces * ThrobberDisc + (NumPieces - 1) * ThrobberGap, ThrobberDisc);
}

int32 SThrobber::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bStill = FHostMotion::IsReduced();
	const int32 Bright = bStill ? 0 : GetBrightPiece(Args.GetCurrentTime(), NumPieces);
	if (!bStill)
	{
		FHostSleep::RequestFrameAt(
			(static_cast<double>(FMath::FloorToInt64(Args.GetCurrentTime() / ThrobberStep + 1.0e-6)) + 1.0) * ThrobberStep);
	}
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FVector2D Own(NumPieces * ThrobberDisc + (NumPieces - 1) * ThrobberGap, ThrobberDisc);
	const FVector2D Corner = (Size - Own) * 0.5;
	const float Radius = ThrobberDisc * 0.5f * AllottedGeometry.GetAccumulatedScale();
	const FLinearColor Color = FAppStyle::GetColor("Colors.Throbber") * InWidgetStyle.GetColorAndOpacityTint();
	for (int32 Piece = 0; Piece < NumPieces; ++Piece)
	{
		FLinearColor Disc = Color;
		Disc.A *= GetDiscOpacity((Piece - Bright + NumPieces) % NumPieces);
		const FSlateRect Rect =
			AllottedGeometry.ToDevice(Corner + FVector2D(Piece * (ThrobberDisc + ThrobberGap), 0.0), FVector2D(ThrobberDisc, ThrobberDisc));
		OutDrawElements.AddRoundedBox(Rect, FVector4f(Radius, Radius, Radius, Radius), Disc.ToFColorSRGB(), FColor(0, 0, 0, 0), 0.0f);
	}
	return LayerId;
}

void SThrobber::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::Image;
	Out.Name = NSLOCTEXT("HostAccess", "Busy", "Busy");
	Out.States |= EHostAccessState::Busy;
}
