#include "Widgets/Layout/SScrollBar.h"

#include "Host/HostAccess.h"
#include "Host/ScrollThumb.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"

void SScrollBar::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	Style = InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FScrollBarStyle>("ScrollBar");
	Orientation = InArgs._Orientation;
	Room = InArgs._Room > 0.0f ? InArgs._Room : Style->Room;
	UserScrolledHandler = InArgs._OnUserScrolled;
}

void SScrollBar::SetState(float InOffsetFraction, float InThumbSizeFraction)
{
	ThumbSizeFraction = FMath::Clamp(InThumbSizeFraction, 0.0f, 1.0f);
	OffsetFraction = FMath::Clamp(InOffsetFraction, 0.0f, 1.0f - ThumbSizeFraction);
}

void SScrollBar::GetThumb(float BarLength, float& OutStart, float& OutEnd) const
{
	const FScrollRange Range{ ThumbSizeFraction, 1.0, OffsetFraction };
	OutStart = Range.GetThumbStart(BarLength, Style->MinThumbLength);
	OutEnd = OutStart + Range.GetThumbLength(BarLength, Style->MinThumbLength);
}

void SScrollBar::DragTo(float ThumbStart, float BarLength)
{
	const FScrollRange Range{ ThumbSizeFraction, 1.0, OffsetFraction };
	OffsetFraction = static_cast<float>(Range.GetOffsetFor(ThumbStart, BarLength, Style->MinThumbLength));
	UserScrolledHandler.ExecuteIfBound(OffsetFraction);
}

void SScrollBar::DescribeAccess(FHostAccess& Out) const
{
	if (!IsNeeded())
	{
		return;
	}
	Out.Role = EHostRole::ScrollBar;
	Out.States |= Orientation == Orient_Vertical ? EHostAccessState::Vertical : EHostAccessState::Horizontal;
	Out.Name = Orientation == Orient_Vertical ? NSLOCTEXT("HostAccess", "VerticalBar", "Vertical scroll bar")
											  : NSLOCTEXT("HostAccess", "HorizontalBar", "Horizontal scroll bar");
	FHostAccessRange Range;
	Range.Value = OffsetFraction;
	Range.Maximum = 1.0 - ThumbSizeFraction;
	Range.bCanBeSet = true;
	Out.Range = Range;
}

bool SScrollBar::SetAccessValue(double Value)
{
	if (!IsNeeded())
	{
		return false;
	}
	OffsetFraction = static_cast<float>(FMath::Clamp(Value, 0.0, 1.0 - static_cast<double>(ThumbSizeFraction)));
	UserScrolledHandler.ExecuteIfBound(OffsetFraction);
	return true;
}

FReply SScrollBar::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !IsNeeded())
	{
		return FReply::Unhandled();
	}
	const float BarLength = GetAlong(MyGeometry.GetLocalSize());
	const float Where = GetAlong(MyGeometry.AbsoluteToLocal(MouseEvent.GetScreenSpacePosition()));
	float Start = 0.0f;
	float End = 0.0f;
	GetThumb(BarLength, Start, End);
	bDragging = true;
	if (Where >= Start && Where < End)
	{
		GrabOffset = Where - Start;
	}
	else
	{
		// Beside the thumb: it jumps under the pointer and can be dragged on from there.
		GrabOffset = (End - Start) * 0.5f;
		DragTo(Where - GrabOffset, BarLength);
	}
	return FReply::Handled().CaptureMouse(AsShared());
}

FReply SScrollBar::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return OnMouseButtonDown(MyGeometry, MouseEvent);
}

FReply SScrollBar::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !bDragging)
	{
		return FReply::Unhandled();
	}
	bDragging = false;
	return FReply::Handled().ReleaseMouseCapture();
}

FReply SScrollBar::OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const float BarLength = GetAlong(MyGeometry.GetLocalSize());
	const float Where = GetAlong(MyGeometry.AbsoluteToLocal(MouseEvent.GetScreenSpacePosition()));
	if (bDragging)
	{
		DragTo(Where - GrabOffset, BarLength);
	}
	float Start = 0.0f;
	float End = 0.0f;
	GetThumb(BarLength, Start, End);
	bThumbHovered = IsHovered() && Where >= Start && Where < End;
	return bDragging ? FReply::Handled() : FReply::Unhandled();
}

FVector2D SScrollBar::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return Orientation == Orient_Vertical ? FVector2D(Room, 0.0) : FVector2D(0.0, Room);
}

int32 SScrollBar::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	if (!IsNeeded())
	{
		return LayerId;
	}
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const bool bActive = bDragging || bThumbHovered;
	const double Across = Orientation == Orient_Vertical ? Size.X : Size.Y;
	const double Width = FMath::Min(static_cast<double>(bActive ? Style->ActiveThumbWidth : Style->ThumbWidth), Across);
	float Start = 0.0f;
	float End = 0.0f;
	GetThumb(GetAlong(Size), Start, End);
	const double Side = (Across - Width) * 0.5;
	FSlateRect Thumb = Orientation == Orient_Vertical ? AllottedGeometry.ToDevice(FVector2D(Side, Start), FVector2D(Width, End - Start))
													  : AllottedGeometry.ToDevice(FVector2D(Start, Side), FVector2D(End - Start, Width));
	Thumb = FSlateRect(FMath::RoundToFloat(Thumb.Left), FMath::RoundToFloat(Thumb.Top), FMath::RoundToFloat(Thumb.Right),
		FMath::RoundToFloat(Thumb.Bottom));
	const float Thickness = static_cast<float>(Width) * AllottedGeometry.GetAccumulatedScale();
	FScrollThumb::PaintThumb(Thumb, Thickness, bDragging, bThumbHovered, OutDrawElements, *Style, InWidgetStyle);
	return LayerId;
}
