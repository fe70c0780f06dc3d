#include "CutNames.h"

#include "Framework/Application/SlateApplication.h"
#include "Layout/ArrangedWidget.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	/** Rounding may take so much of a text that fits, units. */
	constexpr float Tolerance = 1.0f;

	TSharedPtr<STextBlock> FindName(SWidget& Row)
	{
		static const FName TextType(TEXT("STextBlock"));
		if (Row.GetType() == TextType)
		{
			return StaticCastSharedRef<STextBlock>(Row.AsShared()).ToSharedPtr();
		}
		FChildren& Children = *Row.GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			if (const TSharedPtr<STextBlock> Name = FindName(Children.GetChildRefAt(Index)))
			{
				return Name;
			}
		}
		return nullptr;
	}

	void UpdateRow(SWidget& Row)
	{
		const TSharedPtr<STextBlock> Name = FindName(Row);
		if (!Name)
		{
			return;
		}
		// Seen to be cut, too.
		Name->SetOverflowPolicy(ETextOverflowPolicy::Ellipsis);
		const bool bIsCut = Name->GetDesiredSize().X > Name->GetCachedGeometry().GetLocalSize().X + Tolerance;
		const FText Wanted = bIsCut ? Name->GetDisplayedText() : FText();
		if (!Row.GetToolTipText().ToString().Equals(Wanted.ToString(), ESearchCase::CaseSensitive))
		{
			Row.SetToolTipText(Wanted);
		}
	}

	void UpdateBelow(SWidget& Widget)
	{
		static const FName RowType(TEXT("SFileSearchItem"));
		if (Widget.GetType() == RowType)
		{
			return UpdateRow(Widget);
		}
		// Children that are in view: a list may have many more.
		FArrangedChildren Arranged(EVisibility::Visible, Widget.GetCachedGeometry().GetLayoutBoundingRect());
		Widget.ArrangeChildren(Widget.GetCachedGeometry(), Arranged);
		for (int32 Index = 0; Index < Arranged.Num(); ++Index)
		{
			UpdateBelow(Arranged[Index].Widget.Get());
		}
	}
}

void FCutNames::Update()
{
	FSlateApplication& Application = FSlateApplication::Get();
	if (!Application.AnyMenusVisible())
	{
		return;
	}
	// The first layer is the window's own.
	const TArray<TSharedRef<SWidget>> Layers = Application.GetLayerRoots();
	for (int32 Index = 1; Index < Layers.Num(); ++Index)
	{
		UpdateBelow(Layers[Index].Get());
	}
}
