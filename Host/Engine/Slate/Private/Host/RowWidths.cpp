#include "Host/RowWidths.h"

#include "Layout/ArrangedWidget.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"

namespace
{
	const FName RowType(TEXT("SHorizontalBox"));
	const FName ScrollBoxType(TEXT("SScrollBox"));
	const FName BorderType(TEXT("SBorder"));

	/** What takes the room that is left can be used from here on. */
	constexpr float MinFilled = 48.0f;
	/** A slot of less weight is there to keep another one from growing. */
	constexpr float MinWeight = 0.05f;

	float GetNeeded(const SHorizontalBox& Row)
	{
		float Needed = 0.0f;
		for (int32 Index = 0; Index < Row.NumSlots(); ++Index)
		{
			const SBoxPanel::FSlot& Slot = Row.GetSlot(Index);
			const SWidget& Child = Slot.GetWidget().Get();
			if (Child.GetVisibility() == EVisibility::Collapsed)
			{
				continue;
			}
			const float Wanted = static_cast<float>(Child.GetDesiredSize().X);
			const float Filled = Slot.GetWeight() < MinWeight ? 0.0f : FMath::Max(FMath::Min(Wanted, MinFilled), Slot.GetMinSize());
			Needed += (Slot.IsAuto() ? Wanted : Filled) + static_cast<float>(Slot.GetPadding().Left + Slot.GetPadding().Right);
		}
		return Needed;
	}

	/** What is too wide for it moves in it, or is cut by a border that says so. */
	bool TakesAnyWidth(const SWidget& Widget)
	{
		const bool bMoves =
			Widget.GetType() == ScrollBoxType && static_cast<const SScrollBox&>(Widget).GetOrientation() == Orient_Horizontal;
		return bMoves || (Widget.GetType() == BorderType && Widget.GetClipping() != EWidgetClipping::Inherit);
	}
}

float RowWidths::FindMissing(const SWidget& Root, const FGeometry& Geometry)
{
	const float Width = static_cast<float>(Geometry.GetLocalSize().X);
	if (Width <= 0.0f || TakesAnyWidth(Root))
	{
		return 0.0f;
	}
	float Missing = Root.GetType() == RowType ? GetNeeded(static_cast<const SHorizontalBox&>(Root)) - Width : 0.0f;
	FArrangedChildren Arranged(EVisibility::Visible, Geometry.GetLayoutBoundingRect());
	Root.ArrangeChildren(Geometry, Arranged);
	for (int32 Index = 0; Index < Arranged.Num(); ++Index)
	{
		Missing = FMath::Max(Missing, FindMissing(Arranged[Index].Widget.Get(), Arranged[Index].Geometry));
	}
	return FMath::Max(Missing, 0.0f);
}
