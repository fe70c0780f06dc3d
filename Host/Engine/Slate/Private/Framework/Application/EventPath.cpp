#include "EventPath.h"

#include "LayerStack.h"

// Hits are looked for from the topmost layer down and, within a layer, from the child painted last to the one painted first:
// what one sees on top is what one hits. The widget tree is arranged anew on the way, so that a hit belongs to the layout as
// it is now and not to the last frame's.

namespace
{
	/** Appends the widgets under a point below Parent, of those in view; true when something was hit. */
	bool AppendHitPath(const FArrangedWidget& Parent, const FVector2D& Position, const FSlateRect& View, TArray<FArrangedWidget>& Path)
	{
		const EVisibility Visibility = Parent.Widget->GetVisibility();
		if (!Visibility.IsVisible())
		{
			return false;
		}
		const bool bInside = Parent.Geometry.IsUnderLocation(Position);
		const bool bClips = Parent.Widget->GetClipping() != EWidgetClipping::Inherit;
		if (bClips && !bInside)
		{
			return false;
		}
		const int32 Depth = Path.Num();
		Path.Add(Parent);
		if (Visibility.AreChildrenHitTestVisible())
		{
			const FSlateRect Inner = bClips ? View.IntersectionWith(Parent.Geometry.GetLayoutBoundingRect()) : View;
			FArrangedChildren Children(EVisibility::Visible, Inner);
			Parent.Widget->ArrangeChildren(Parent.Geometry, Children);
			for (int32 Index = Children.Num() - 1; Index >= 0; --Index)
			{
				if (AppendHitPath(Children[Index], Position, Inner, Path))
				{
					return true;
				}
			}
		}
		if (bInside && Visibility.IsHitTestVisible())
		{
			return true;
		}
		// Nothing was hit after all.
		while (Path.Num() > Depth)
		{
			Path.Pop();
		}
		return false;
	}
}

FEventPath FEventPath::Under(const FLayerStack& Layers, const FVector2D& Position, const FIntPoint& WindowSize)
{
	FEventPath Path;
	const FSlateRect View(0.0f, 0.0f, static_cast<float>(WindowSize.X), static_cast<float>(WindowSize.Y));
	const TArray<FLayer>& All = Layers.GetLayers();
	for (int32 Index = All.Num() - 1; Index >= 0; --Index)
	{
		const FLayer& Layer = All[Index];
		if (Layer.bInert)
		{
			continue;
		}
		if (AppendHitPath(FArrangedWidget(Layer.Root, Layer.Geometry), Position, View, Path.Widgets) || Layer.bModal)
		{
			break;
		}
	}
	Path.CountEnabled();
	return Path;
}

FEventPath FEventPath::To(const TSharedPtr<SWidget>& Widget)
{
	FEventPath Path;
	for (TSharedPtr<SWidget> Step = Widget; Step; Step = Step->GetParentWidget())
	{
		Path.Widgets.Insert(FArrangedWidget(Step.ToSharedRef(), Step->GetCachedGeometry()), 0);
	}
	Path.CountEnabled();
	return Path;
}

void FEventPath::CountEnabled()
{
	EnabledCount = 0;
	while (EnabledCount < Widgets.Num() && Widgets[EnabledCount].Widget->IsEnabled())
	{
		++EnabledCount;
	}
}

void FEventPath::Shorten(int32 Count)
{
	while (Widgets.Num() > Count)
	{
		Widgets.Pop();
	}
}

TSharedRef<SWidget> FEventPath::GetRootOf(const TSharedRef<SWidget>& Widget)
{
	TSharedRef<SWidget> Root = Widget;
	while (const TSharedPtr<SWidget> Parent = Root->GetParentWidget())
	{
		Root = Parent.ToSharedRef();
	}
	return Root;
}
