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

/**
 * Collects the arranged children of one widget, passing over those that the caller does not want. With a clip a panel may
 * leave out what lies outside; without one it gives all. The list's memory is used again by the next one, so that walking
 * a tree allocates nothing once it has been walked. Game thread only.
 */
class SLATECORE_API FArrangedChildren
{
public:
	/** @param InFilter  Children without any of these properties are passed over; Visible takes what is painted. */
	explicit FArrangedChildren(EVisibility InFilter);
	/** @param InClip  What can be seen, in device pixels. */
	FArrangedChildren(EVisibility InFilter, const FSlateRect& InClip);
	~FArrangedChildren();
	FArrangedChildren(const FArrangedChildren&) = delete;
	FArrangedChildren& operator=(const FArrangedChildren&) = delete;

	bool Accepts(EVisibility Visibility) const { return Filter == EVisibility::All || Visibility.IsVisible(); }
	/** Null when everything is wanted. */
	const FSlateRect* GetClip() const { return bHasClip ? &Clip : nullptr; }
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
	bool bHasClip = false;
	FSlateRect Clip;
	TArray<FArrangedWidget> Array;
};
