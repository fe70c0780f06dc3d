#include "ScriptTarget.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/WidgetFinder.h"
#include "Layout/ArrangedWidget.h"
#include "Misc/CString.h"
#include "Widgets/Layout/SScrollBox.h"

namespace
{
	/** Enough to see what a name has in common, few enough for one message. */
	constexpr int32 MaxListedHits = 10;

	/** The row of a menu, or anything inside one. */
	bool IsInMenu(const SWidget& Widget)
	{
		static const FName Row(TEXT("SMenuRow"));
		const TSharedPtr<SWidget> Parent = Widget.GetParentWidget();
		return Widget.GetType() == Row || (Parent && IsInMenu(*Parent));
	}

	/**
	 * Where a widget stands now: arranged from its layer's root down. What a scrolled box does not arrange keeps the place that it was
	 * last painted at, which says nothing. Unset for what stands nowhere.
	 */
	TOptional<FGeometry> FindPlace(const SWidget& Widget)
	{
		const TSharedPtr<SWidget> Parent = Widget.GetParentWidget();
		const TOptional<FGeometry> Around = Parent ? FindPlace(*Parent) : TOptional<FGeometry>(Widget.GetCachedGeometry());
		if (!Parent || !Around.IsSet())
		{
			return Around;
		}
		FArrangedChildren Arranged(EVisibility::Visible);
		Parent->ArrangeChildren(Around.GetValue(), Arranged);
		for (int32 Index = 0; Index < Arranged.Num(); ++Index)
		{
			if (&Arranged[Index].Widget.Get() == &Widget)
			{
				return Arranged[Index].Geometry;
			}
		}
		return TOptional<FGeometry>();
	}

	/** By kind, tag and place, so that one of several can be told from the others in a picture. */
	FString DescribeHit(const SWidget& Widget)
	{
		const FSlateRect Rect = Widget.GetCachedGeometry().GetLayoutBoundingRect();
		const FString Tag = Widget.GetTag().IsNone() ? FString() : TEXT(" #") + Widget.GetTag().ToString();
		return FString::Printf(
			TEXT("%s%s at %.0f, %.0f (%.0f x %.0f)"), *Widget.GetType().ToString(), *Tag, Rect.Left, Rect.Top, Rect.Width(), Rect.Height());
	}
}

bool FScriptTarget::IsInside(const TSharedPtr<const SWidget>& Widget, const SWidget& Outer)
{
	for (TSharedPtr<const SWidget> Step = Widget; Step; Step = Step->GetParentWidget())
	{
		if (Step.Get() == &Outer)
		{
			return true;
		}
	}
	return false;
}

FString FScriptTarget::Find(const FString& Name, TSharedPtr<SWidget>& OutWidget)
{
	TArray<TSharedRef<SWidget>> Hits = FWidgetFinder::FindByName(Name);
	// A control and the text inside it are one thing to a user.
	const TArray<TSharedRef<SWidget>> All = Hits;
	Hits.RemoveAll(
		[&All](const TSharedRef<SWidget>& Hit) {
			return All.ContainsByPredicate([&Hit](const TSharedRef<SWidget>& Other) { return Other != Hit && IsInside(Other, Hit.Get()); });
		});
	// What an open menu offers is what is meant, whatever else has that name.
	const TArray<TSharedRef<SWidget>> InMenus = Hits.FilterByPredicate([](const TSharedRef<SWidget>& Hit) { return IsInMenu(Hit.Get()); });
	if (InMenus.Num() > 0)
	{
		Hits = InMenus;
	}
	if (Hits.Num() == 0)
	{
		return FString::Printf(TEXT("Nothing on screen is called \"%s\"."), *Name);
	}
	// To pick one of several would make a script pass by luck.
	if (Hits.Num() > 1)
	{
		FString List;
		for (int32 Index = 0; Index < FMath::Min(Hits.Num(), MaxListedHits); ++Index)
		{
			List += (Index > 0 ? TEXT("; ") : TEXT("")) + DescribeHit(Hits[Index].Get());
		}
		return FString::Printf(TEXT("%d widgets are called \"%s\": %s%s."), Hits.Num(), *Name, *List,
			Hits.Num() > MaxListedHits ? TEXT("; and more") : TEXT(""));
	}
	OutWidget = Hits[0];
	return FString();
}

TOptional<FVector2D> FScriptTarget::GetPlace(const FString& Name, const FIntPoint& WindowSize)
{
	// "@40%,75%": shares of the window, so that a script does for every size.
	TArray<FString> Parts;
	Name.RightChop(1).ParseIntoArray(Parts, TEXT(","), false);
	FVector2D Place(0, 0);
	for (int32 Axis = 0; Axis < 2; ++Axis)
	{
		const FString Number = Parts.Num() == 2 ? Parts[Axis].LeftChop(1) : FString();
		const double Share = FCString::Atod(*Number) / 100.0;
		if (!Name.StartsWith(TEXT("@")) || !Number.IsNumeric() || !Parts[Axis].EndsWith(TEXT("%")) || Share < 0.0 || Share > 1.0)
		{
			return TOptional<FVector2D>();
		}
		// 100 % is the last pixel, not the one after it.
		const int32 Length = Axis == 0 ? WindowSize.X : WindowSize.Y;
		(Axis == 0 ? Place.X : Place.Y) = FMath::FloorToInt32(Share * FMath::Max(Length - 1, 0));
	}
	return Place;
}

TOptional<FVector2D> FScriptTarget::GetVisiblePoint(const SWidget& Widget)
{
	const FIntPoint Size = FSlateApplication::Get().GetWindow().GetPixelSize();
	// The middle of what can be seen: the middle of the whole may lie outside of a scrolled list.
	const TOptional<FGeometry> Place = FindPlace(Widget);
	if (!Place.IsSet())
	{
		return TOptional<FVector2D>();
	}
	FSlateRect Visible =
		Place->GetLayoutBoundingRect().IntersectionWith(FSlateRect(0.0f, 0.0f, static_cast<float>(Size.X), static_cast<float>(Size.Y)));
	for (TSharedPtr<SWidget> Parent = Widget.GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (Parent->GetClipping() != EWidgetClipping::Inherit)
		{
			Visible = Visible.IntersectionWith(Parent->GetCachedGeometry().GetLayoutBoundingRect());
		}
	}
	if (Visible.IsEmpty())
	{
		return TOptional<FVector2D>();
	}
	return FVector2D((Visible.Left + Visible.Right) * 0.5, (Visible.Top + Visible.Bottom) * 0.5);
}

bool FScriptTarget::BringIntoView(const TSharedRef<SWidget>& Widget)
{
	bool bScrolls = false;
	// Each around it: a list in a tab that scrolls sideways may be out of view with all that is in it.
	for (TSharedPtr<SWidget> Parent = Widget->GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (Parent->GetType() == FName(TEXT("SScrollBox")))
		{
			StaticCastSharedPtr<SScrollBox>(Parent)->ScrollDescendantIntoView(Widget, false);
			bScrolls = true;
		}
	}
	return bScrolls;
}

FString FScriptTarget::Reach(const FString& Name, FScriptTarget& Target)
{
	const TOptional<FVector2D> Visible = GetVisiblePoint(*Target.Widget);
	if (!Visible.IsSet())
	{
		return FString::Printf(TEXT("\"%s\" is not in view; scroll to it first."), *Name);
	}
	Target.Point = Visible.GetValue();
	const TArray<TSharedRef<SWidget>> Path = FSlateApplication::Get().GetPathUnderPoint(Target.Point);
	// Texts let the pointer through to what they stand in, so a widget around the target will do.
	const SWidget* const Last = Path.Num() > 0 ? &Path.Last().Get() : nullptr;
	const bool bOnPath =
		Path.ContainsByPredicate([&Target](const TSharedRef<SWidget>& Widget) { return &Widget.Get() == Target.Widget.Get(); });
	const bool bReached = bOnPath || (Last && IsInside(Target.Widget, *Last));
	if (bReached)
	{
		return FString();
	}
	return FString::Printf(
		TEXT("\"%s\" is covered by %s."), *Name, *(Last ? DescribeHit(*Last) : FString(TEXT("something that takes no input"))));
}
