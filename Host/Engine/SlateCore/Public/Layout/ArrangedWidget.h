#pragma once

#include "CoreMinimal.h"
#include "Layout/Geometry.h"
#include "Layout/Visibility.h"

class SWidget;

/** A widget and where its parent has put it. */
class FArrangedWidget
{
public:
	FArrangedWidget(TSharedRef<SWidget> InWidget, const FGeometry& InGeometry)
		: Geometry(InGeometry)
		, Widget(MoveTemp(InWidget))
	{
	}
	FGeometry Geometry;
	TSharedRef<SWidget> Widget;
};

/** Collects the arranged children of one widget, passing over those that the caller does not want. */
class FArrangedChildren
{
public:
	/** @param InFilter  Children without any of these properties are passed over; Visible takes what is painted. */
	explicit FArrangedChildren(EVisibility InFilter)
		: Filter(InFilter)
	{
	}
	bool Accepts(EVisibility Visibility) const { return Filter == EVisibility::All || Visibility.IsVisible(); }
	void AddWidget(EVisibility Visibility, const FArrangedWidget& Widget)
	{
		if (Accepts(Visibility))
		{
			Array.Add(Widget);
		}
	}
	void AddWidget(const FArrangedWidget& Widget) { Array.Add(Widget); }
	int32 Num() const { return Array.Num(); }
	const FArrangedWidget& operator[](int32 Index) const { return Array[Index]; }
	FArrangedWidget& operator[](int32 Index) { return Array[Index]; }

private:
	EVisibility Filter;
	TArray<FArrangedWidget> Array;
};
