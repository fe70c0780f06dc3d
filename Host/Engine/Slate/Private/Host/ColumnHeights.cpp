#include "Host/ColumnHeights.h"

#include "Layout/ArrangedWidget.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Views/STableViewBase.h"

namespace
{
	/** Five lines of a text: what takes the room that is left can be used from here on. */
	constexpr float MinFilled = 96.0f;

	bool ScrollsByItself(const SWidget& Widget)
	{
		static const FName ScrollBoxType(TEXT("SScrollBox"));
		return (Widget.GetType() == ScrollBoxType && static_cast<const SScrollBox&>(Widget).GetOrientation() == Orient_Vertical) ||
			dynamic_cast<const STableViewBase*>(&Widget);
	}

	/** What a column needs; unset when none of its parts takes what is left. */
	TOptional<float> GetNeeded(const SVerticalBox& Column)
	{
		float Needed = 0.0f;
		bool bFills = false;
		for (int32 Index = 0; Index < Column.NumSlots(); ++Index)
		{
			const SBoxPanel::FSlot& Slot = Column.GetSlot(Index);
			const SWidget& Child = Slot.GetWidget().Get();
			if (Child.GetVisibility() == EVisibility::Collapsed)
			{
				continue;
			}
			const float Wanted = static_cast<float>(Child.GetDesiredSize().Y);
			const FMargin Padding = Slot.GetPadding();
			bFills = bFills || !Slot.IsAuto();
			Needed += (Slot.IsAuto() ? Wanted : FMath::Max(FMath::Min(Wanted, MinFilled), Slot.GetMinSize())) +
				static_cast<float>(Padding.Top + Padding.Bottom);
		}
		return bFills ? TOptional<float>(Needed) : TOptional<float>();
	}

	bool IsInAutoSlot(const SVerticalBox& Column, const SWidget& Child)
	{
		for (int32 Index = 0; Index < Column.NumSlots(); ++Index)
		{
			if (&Column.GetSlot(Index).GetWidget().Get() == &Child)
			{
				return Column.GetSlot(Index).IsAuto();
			}
		}
		return false;
	}
}

TOptional<float> ColumnHeights::FindMissing(const SWidget& Root, const FGeometry& Geometry)
{
	static const FName ColumnType(TEXT("SVerticalBox"));
	TOptional<float> Missing;
	if (ScrollsByItself(Root))
	{
		return Missing;
	}
	// 1. The column itself.
	const SVerticalBox* const Column = Root.GetType() == ColumnType ? static_cast<const SVerticalBox*>(&Root) : nullptr;
	if (Column)
	{
		if (const TOptional<float> Needed = GetNeeded(*Column); Needed.IsSet())
		{
			Missing = Needed.GetValue() - static_cast<float>(Geometry.GetLocalSize().Y);
		}
	}
	// 2. What stands in it. Parts that have their own height do not grow with the column.
	FArrangedChildren Arranged(EVisibility::Visible);
	Root.ArrangeChildren(Geometry, Arranged);
	for (int32 Index = 0; Index < Arranged.Num(); ++Index)
	{
		const SWidget& Child = Arranged[Index].Widget.Get();
		const TOptional<float> Inner =
			Column && IsInAutoSlot(*Column, Child) ? TOptional<float>() : FindMissing(Child, Arranged[Index].Geometry);
		if (Inner.IsSet())
		{
			Missing = Missing.IsSet() ? FMath::Max(Missing.GetValue(), Inner.GetValue()) : Inner.GetValue();
		}
	}
	return Missing;
}
