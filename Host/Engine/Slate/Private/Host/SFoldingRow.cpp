#include "Host/SFoldingRow.h"

#include "Layout/LayoutUtils.h"
#include "Layout/SlateRect.h"

namespace
{
	/** Lines of one thing stand closer than things do. */
	constexpr float FoldedGap = 4.0f;
}

void SFoldingRow::FSlot::Construct(const FSlotArguments& Arguments)
{
	ConstructLayout(Arguments);
}

SFoldingRow::SFoldingRow()
	: Children(this)
{
	SetCanTick(false);
}

void SFoldingRow::Construct(const FArguments& InArgs)
{
	FoldWidth = InArgs._FoldWidth;
	FirstShare = InArgs._FirstShare;
	FirstWidth = InArgs._FirstWidth;
	Gap = InArgs._Gap;
	Children.AddSlots(InArgs._Slots);
	check(Children.Num() == 2);
}

FVector2D SFoldingRow::GetWanted(int32 Index) const
{
	const FSlot& Slot = Children[Index];
	return Slot.GetWidget()->GetVisibility().IsCollapsed() ? FVector2D(0, 0)
														   : Slot.GetWidget()->GetDesiredSize() + Slot.GetPadding().GetDesiredSize();
}

float SFoldingRow::GetFoldedGap() const
{
	return GetWanted(0).Y > 0.0 ? FoldedGap : 0.0f;
}

FVector2D SFoldingRow::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const FVector2D First = GetWanted(0);
	const FVector2D Second = GetWanted(1);
	return bFolded ? FVector2D(FMath::Max(First.X, Second.X), First.Y + GetFoldedGap() + Second.Y)
				   : FVector2D((IsNaming() ? First.X : FirstWidth) + Gap + Second.X, FMath::Max(First.Y, Second.Y));
}

void SFoldingRow::AddChild(
	const FGeometry& Geometry, int32 Index, const FSlateRect& Place, bool bFills, FArrangedChildren& ArrangedChildren) const
{
	const FSlot& Slot = Children[Index];
	const TSharedRef<SWidget>& Widget = Slot.GetWidget();
	const FVector2D& Wanted = Widget->GetDesiredSize();
	const FAlignedAxis X = AlignChild(HAlign_Fill, Place.Width(), static_cast<float>(Wanted.X), Slot.GetPadding());
	const EVerticalAlignment Alignment = bFills ? VAlign_Fill : Slot.GetVerticalAlignment();
	const FAlignedAxis Y = AlignChild(Alignment, Place.Height(), static_cast<float>(Wanted.Y), Slot.GetPadding());
	ArrangedChildren.AddWidget(Widget->GetVisibility(),
		FArrangedWidget(Widget, Geometry.MakeChild(FVector2D(Place.Left + X.Offset, Place.Top + Y.Offset), FVector2D(X.Size, Y.Size))));
}

void SFoldingRow::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const float Width = static_cast<float>(AllottedGeometry.GetLocalSize().X);
	const float Height = static_cast<float>(AllottedGeometry.GetLocalSize().Y);
	const bool bFolds = Width > 0.0f && Width < FoldWidth;
	if (bFolds != bFolded)
	{
		bFolded = bFolds;
		const_cast<SFoldingRow*>(this)->Invalidate(EInvalidateWidgetReason::Layout);
	}
	if (!bFolded)
	{
		const float First = IsNaming() ? FMath::Max(Width * FirstShare - Gap, 0.0f) : FirstWidth;
		AddChild(AllottedGeometry, 0, FSlateRect(0.0f, 0.0f, First, Height), false, ArrangedChildren);
		AddChild(AllottedGeometry, 1, FSlateRect(First + Gap, 0.0f, FMath::Max(Width, First + Gap), Height), false, ArrangedChildren);
		return;
	}
	const float Wanted = static_cast<float>(GetWanted(0).Y);
	const float First = IsNaming() ? Wanted : FMath::Min(Wanted, Height * FirstShare);
	const float Top = First + GetFoldedGap();
	AddChild(AllottedGeometry, 0, FSlateRect(0.0f, 0.0f, Width, First), true, ArrangedChildren);
	AddChild(AllottedGeometry, 1, FSlateRect(0.0f, Top, Width, FMath::Max(Height, Top)), true, ArrangedChildren);
}
