#include "Host/TabStops.h"

#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Views/STableViewBase.h"

namespace
{
	/** A panel that takes the keyboard for what is in it shows no ring of its own. */
	bool IsPanelOfStops(const TSharedRef<SWidget>& Widget, int32 StopsInside)
	{
		return StopsInside > 1 && !dynamic_cast<const STableViewBase*>(&Widget.Get()) && !dynamic_cast<const SDockTab*>(&Widget.Get());
	}
}

bool TabStops::CanBeSeen(const TSharedRef<SWidget>& Widget)
{
	FSlateRect Visible = Widget->GetCachedGeometry().GetLayoutBoundingRect();
	for (TSharedPtr<SWidget> Parent = Widget->GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (Parent->GetType() == FName(TEXT("SScrollBox")))
		{
			return CanBeSeen(Parent.ToSharedRef());
		}
		if (Parent->GetClipping() != EWidgetClipping::Inherit || !Parent->GetParentWidget())
		{
			Visible = Visible.IntersectionWith(Parent->GetCachedGeometry().GetLayoutBoundingRect());
		}
	}
	return !Visible.IsEmpty();
}

void TabStops::BringIntoView(const TSharedRef<SWidget>& Widget)
{
	for (TSharedPtr<SWidget> Parent = Widget->GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (Parent->GetType() == FName(TEXT("SScrollBox")))
		{
			StaticCastSharedPtr<SScrollBox>(Parent)->ScrollDescendantIntoView(Widget, false);
		}
	}
}

void TabStops::Collect(const TSharedRef<SWidget>& Widget, TArray<TSharedRef<SWidget>>& Out)
{
	if (!Widget->GetVisibility().IsVisible() || !Widget->IsEnabled())
	{
		return;
	}
	const int32 Place = Out.Num();
	FChildren& Children = *Widget->GetChildren();
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		Collect(Children.GetChildAt(Index), Out);
	}
	if (Widget->SupportsKeyboardFocus() && Widget->IsTabStop() && !IsPanelOfStops(Widget, Out.Num() - Place))
	{
		Out.Insert(Widget, Place);
	}
}
