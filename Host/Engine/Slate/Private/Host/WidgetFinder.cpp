#include "Host/WidgetFinder.h"

#include "Framework/Application/SlateApplication.h"

// Finds widgets as a user would name them: by what they show, by their tooltip or by a tag. Hidden ones are never found.
// The topmost layer comes first, so that a dialog's button wins over one below it.

namespace
{
	/** Visits shown widgets below one, itself first. */
	void VisitShown(const TSharedRef<SWidget>& Widget, int32 Depth, TFunctionRef<void(const TSharedRef<SWidget>&, int32)> Visit)
	{
		if (!Widget->GetVisibility().IsVisible())
		{
			return;
		}
		Visit(Widget, Depth);
		FChildren& Children = *Widget->GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			VisitShown(Children.GetChildAt(Index), Depth + 1, Visit);
		}
	}

	FString GetFirstLine(const FString& Text)
	{
		int32 End = INDEX_NONE;
		return Text.FindChar(TEXT('\n'), End) ? Text.Left(End) : Text;
	}
}

TArray<TSharedRef<SWidget>> FWidgetFinder::FindAll(TFunctionRef<bool(SWidget&)> Test)
{
	TArray<TSharedRef<SWidget>> Found;
	if (!FSlateApplication::IsInitialized())
	{
		return Found;
	}
	const TArray<TSharedRef<SWidget>> Roots = FSlateApplication::Get().GetLayerRoots();
	for (int32 Index = Roots.Num() - 1; Index >= 0; --Index)
	{
		VisitShown(Roots[Index], 0,
			[&](const TSharedRef<SWidget>& Widget, int32 Depth)
			{
				if (Test(Widget.Get()))
				{
					Found.Add(Widget);
				}
			});
	}
	return Found;
}

TSharedPtr<SWidget> FWidgetFinder::FindByTag(FName Tag)
{
	const TArray<TSharedRef<SWidget>> Found = FindAll([Tag](SWidget& Widget) { return Widget.GetTag() == Tag; });
	return Found.Num() > 0 ? TSharedPtr<SWidget>(Found[0]) : nullptr;
}

TArray<TSharedRef<SWidget>> FWidgetFinder::FindByType(FName Type)
{
	return FindAll([Type](SWidget& Widget) { return Widget.GetType() == Type; });
}

TArray<TSharedRef<SWidget>> FWidgetFinder::FindByText(FStringView Text)
{
	const FString Wanted(Text);
	return FindAll(
		[&Wanted](SWidget& Widget)
		{
			const FText Shown = Widget.GetDisplayedText();
			return !Shown.IsEmpty() && Shown.ToString().Equals(Wanted);
		});
}

TArray<TSharedRef<SWidget>> FWidgetFinder::FindByToolTip(FStringView FirstLine)
{
	const FString Wanted(FirstLine);
	return FindAll(
		[&Wanted](SWidget& Widget)
		{
			const FText ToolTip = Widget.GetToolTipText();
			return !ToolTip.IsEmpty() && GetFirstLine(ToolTip.ToString()).Equals(Wanted);
		});
}

TArray<TSharedRef<SWidget>> FWidgetFinder::FindByName(const FString& Name)
{
	if (Name.StartsWith(TEXT("#")))
	{
		const FName Tag(*Name.RightChop(1));
		return FindAll([Tag](SWidget& Widget) { return Widget.GetTag() == Tag; });
	}
	const TArray<TSharedRef<SWidget>> ByText = FindByText(Name);
	return ByText.Num() > 0 ? ByText : FindByToolTip(Name);
}

TArray<FString> FWidgetFinder::GetVisibleTexts()
{
	TArray<FString> Texts;
	FindAll(
		[&Texts](SWidget& Widget)
		{
			const FText Text = Widget.GetDisplayedText();
			if (!Text.IsEmpty())
			{
				Texts.Add(Text.ToString());
			}
			return false;
		});
	return Texts;
}

FString FWidgetFinder::DumpTree()
{
	FString Out;
	if (!FSlateApplication::IsInitialized())
	{
		return Out;
	}
	for (const TSharedRef<SWidget>& Root : FSlateApplication::Get().GetLayerRoots())
	{
		VisitShown(Root, 0,
			[&Out](const TSharedRef<SWidget>& Widget, int32 Depth)
			{
				const FSlateRect Rect = Widget->GetCachedGeometry().GetLayoutBoundingRect();
				Out += FString::ChrN(Depth, TEXT('\t')) + Widget->GetType().ToString();
				if (!Widget->GetTag().IsNone())
				{
					Out += TEXT(" #") + Widget->GetTag().ToString();
				}
				const FText Text = Widget->GetDisplayedText();
				if (!Text.IsEmpty())
				{
					Out += TEXT(" \"") + Text.ToString().ReplaceCharWithEscapedChar() + TEXT("\"");
				}
				Out += FString::Printf(TEXT(" (%.1f, %.1f, %.1f, %.1f)\n"), Rect.Left, Rect.Top, Rect.Width(), Rect.Height());
			});
	}
	return Out;
}

bool FWidgetFinder::IsShown(const SWidget& Widget)
{
	if (!Widget.GetVisibility().IsVisible())
	{
		return false;
	}
	for (TSharedPtr<SWidget> Parent = Widget.GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (!Parent->GetVisibility().IsVisible())
		{
			return false;
		}
	}
	const FIntPoint Size = FSlateApplication::Get().GetWindow().GetPixelSize();
	const FSlateRect Window(0.0f, 0.0f, static_cast<float>(Size.X), static_cast<float>(Size.Y));
	return FSlateRect::DoRectanglesIntersect(Widget.GetCachedGeometry().GetLayoutBoundingRect(), Window);
}

bool FWidgetFinder::IsEnabledInTree(const SWidget& Widget)
{
	if (!Widget.IsEnabled())
	{
		return false;
	}
	for (TSharedPtr<SWidget> Parent = Widget.GetParentWidget(); Parent; Parent = Parent->GetParentWidget())
	{
		if (!Parent->IsEnabled())
		{
			return false;
		}
	}
	return true;
}
