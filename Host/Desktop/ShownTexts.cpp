#include "ShownTexts.h"

#include "FoundMarks.h"
#include "Host/HostTextWidget.h"
#include "Host/TextShaper.h"
#include "Layout/ArrangedWidget.h"
#include "OpenChat.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/SlateTypes.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	const FName MarkdownType(TEXT("SMarkdownTextBlock"));
	const FName ToolsType(TEXT("SToolExecutionContainer"));
	const FName TextType(TEXT("STextBlock"));
	const FName WrapBoxType(TEXT("SWrapBox"));
	const FName HorizontalBoxType(TEXT("SHorizontalBox"));
	const FName ScrollBoxType(TEXT("SScrollBox"));
	const FName BoxType(TEXT("SBox"));
	const FName AreaType(TEXT("SExpandableArea"));
	const FName FoldButtonTag(TEXT("ToolExecutionsHeader"));

	/** What shows and hides that body; null when it is none. Between the two stand the column of header and body, and a border. */
	TSharedPtr<SWidget> FindFold(const SWidget& Body)
	{
		constexpr int32 MaxDistance = 3;
		TSharedPtr<SWidget> Parent = Body.GetType() == BoxType ? Body.GetParentWidget() : nullptr;
		for (int32 Distance = 1; Parent && Distance <= MaxDistance; ++Distance)
		{
			if (Parent->GetType() == AreaType || Parent->GetType() == ToolsType)
			{
				return Parent;
			}
			Parent = Parent->GetParentWidget();
		}
		return nullptr;
	}

	TSharedPtr<SWidget> FindByTag(SWidget& Widget, FName Tag)
	{
		if (Widget.GetTag() == Tag)
		{
			return Widget.AsShared();
		}
		FChildren& Children = *Widget.GetChildren();
		TSharedPtr<SWidget> Found;
		for (int32 Index = 0; Index < Children.Num() && !Found; ++Index)
		{
			Found = FindByTag(Children.GetChildRefAt(Index), Tag);
		}
		return Found;
	}

	void OpenFold(SWidget& Fold)
	{
		if (Fold.GetType() == AreaType)
		{
			static_cast<SExpandableArea&>(Fold).SetExpanded(true);
		}
		else if (const TSharedPtr<SWidget> Header = FindByTag(Fold, FoldButtonTag))
		{
			// Whether a group of tools is open is known to its owner alone.
			FOpenChat::Press(Header.ToSharedRef());
		}
	}

	/** A text that is higher than this many lines was wrapped. */
	constexpr float WrappedLines = 1.5f;

	/** Code stands in a column of lines in a scroll box, its pieces side by side. */
	bool IsCodeLine(const SWidget& Widget)
	{
		const TSharedPtr<SWidget> Column = Widget.GetType() == HorizontalBoxType ? Widget.GetParentWidget() : nullptr;
		const TSharedPtr<SWidget> Around = Column ? Column->GetParentWidget() : nullptr;
		return Around && Around->GetType() == ScrollBoxType;
	}

	/** Shapes the text as the widget does: no widget says where its letters stand. */
	void UpdateRects(const FShownPlace& Place, const SWidget& Widget, const FGeometry& Geometry)
	{
		const FVector2D Size = Geometry.GetLocalSize();
		const float Scale = Geometry.GetAccumulatedScale();
		if (Place.Size == Size && Place.Scale == Scale)
		{
			return;
		}
		Place.Size = Size;
		Place.Scale = Scale;
		Place.Rects.Reset();
		const FSlateFontInfo Font = Widget.GetType() == TextType ? static_cast<const STextBlock&>(Widget).GetFont()
																 : FVelmoraUIStyles::GetTextStyle("Velmora.Markdown.Code").Font;
		const bool bWraps = static_cast<float>(Size.Y) * Scale > ITextShaper::Get().GetLineMetrics(Font, Scale).LineHeight * WrappedLines;
		FoundMarks::AppendRects(Widget.GetDisplayedText().ToString(), Font, Scale, bWraps ? static_cast<float>(Size.X) * Scale : 0.0f,
			Place.Place, Place.Rects);
	}

	void AddSeen(const FArrangedWidget& Arranged, const FSlateRect& OuterClip, TMap<const SWidget*, FSeenWidget>& Out)
	{
		FSlateRect Clip = OuterClip;
		if (Arranged.Widget->GetClipping() != EWidgetClipping::Inherit || Arranged.Widget->GetType() == ScrollBoxType)
		{
			Clip = Clip.IntersectionWith(Arranged.Geometry.GetLayoutBoundingRect());
		}
		if (Clip.IsEmpty())
		{
			return;
		}
		Out.Add(&Arranged.Widget.Get(), { Arranged.Geometry, Clip });
		FArrangedChildren Children(EVisibility::Visible, Clip);
		Arranged.Widget->ArrangeChildren(Arranged.Geometry, Children);
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			AddSeen(Children[Index], Clip, Out);
		}
	}

	class FCollector
	{
	public:
		void Visit(SWidget& Widget, bool bIsText)
		{
			if (!Widget.GetVisibility().IsVisible() && !FindFold(Widget))
			{
				return;
			}
			const FName Type = Widget.GetType();
			const bool bIsRead = bIsText || Type == MarkdownType || Type == ToolsType;
			if (bIsRead && AddText(Widget))
			{
				return;
			}
			const bool bBegins = bIsRead && !bIsJoining && (Type == WrapBoxType || IsCodeLine(Widget));
			bIsJoining = bIsJoining || bBegins;
			bHasOpenText = bHasOpenText && !bBegins;
			FChildren& Children = *Widget.GetChildren();
			for (int32 Index = 0; Index < Children.Num(); ++Index)
			{
				Visit(Children.GetChildRefAt(Index), bIsRead);
			}
			if (bBegins)
			{
				bIsJoining = false;
				bHasOpenText = false;
			}
		}

		TArray<FShownText> Texts;

	private:
		bool AddText(SWidget& Widget)
		{
			const FText Own = Widget.GetDisplayedText();
			if (Own.IsEmpty())
			{
				return false;
			}
			if (!bIsJoining || !bHasOpenText)
			{
				Texts.AddDefaulted();
				bHasOpenText = bIsJoining;
			}
			FShownText& Text = Texts.Last();
			const int32 Begin = Text.Text.Len();
			Text.Text += Own.ToString();
			Text.Parts.Add({ TWeakPtr<SWidget>(Widget.AsShared()), Begin, Text.Text.Len() - Begin });
			return true;
		}

		bool bIsJoining = false;
		bool bHasOpenText = false;
	};
}

TArray<FShownText> ShownTexts::Collect(SWidget& Row)
{
	FCollector Collector;
	Collector.Visit(Row, false);
	return MoveTemp(Collector.Texts);
}

bool ShownTexts::IsHidden(const SWidget& Widget, const SWidget& Outer)
{
	bool bIsHidden = !Widget.GetVisibility().IsVisible();
	for (TSharedPtr<SWidget> Parent = Widget.GetParentWidget(); Parent && Parent.Get() != &Outer && !bIsHidden;
		 Parent = Parent->GetParentWidget())
	{
		bIsHidden = !Parent->GetVisibility().IsVisible();
	}
	return bIsHidden;
}

bool ShownTexts::Unfold(const SWidget& Widget, const SWidget& Outer)
{
	bool bHasOpened = false;
	for (TSharedPtr<SWidget> Parent = Widget.GetParentWidget(); Parent && Parent.Get() != &Outer; Parent = Parent->GetParentWidget())
	{
		const TSharedPtr<SWidget> Fold = Parent->GetVisibility().IsVisible() ? nullptr : FindFold(*Parent);
		if (Fold)
		{
			OpenFold(*Fold);
			bHasOpened = true;
		}
	}
	return bHasOpened;
}

TArray<FShownPlace> ShownTexts::Split(const FShownText& Text, const Velmora::FFoundPlace& Place)
{
	TArray<FShownPlace> Places;
	const int32 End = Place.Begin + Place.Length;
	for (const FShownText::FPart& Part : Text.Parts)
	{
		const int32 From = FMath::Max(Place.Begin, Part.Begin);
		const int32 To = FMath::Min(End, Part.Begin + Part.Length);
		if (From < To)
		{
			FShownPlace& Shown = Places.AddDefaulted_GetRef();
			Shown.Widget = Part.Widget;
			Shown.Place = { From - Part.Begin, To - From };
		}
	}
	return Places;
}

TMap<const SWidget*, FSeenWidget> ShownTexts::CollectSeen(SWidget& Outer)
{
	TMap<const SWidget*, FSeenWidget> Seen;
	const FGeometry& Geometry = Outer.GetCachedGeometry();
	AddSeen(FArrangedWidget(Outer.AsShared(), Geometry), Geometry.GetLayoutBoundingRect(), Seen);
	return Seen;
}

TOptional<FGeometry> ShownTexts::FindGeometry(const SWidget& Widget, const SWidget& Outer)
{
	// 1. The way up.
	TArray<const SWidget*> Path = { &Widget };
	TSharedPtr<SWidget> Parent = Widget.GetParentWidget();
	for (; Parent && Parent.Get() != &Outer; Parent = Parent->GetParentWidget())
	{
		Path.Add(Parent.Get());
	}
	TOptional<FGeometry> Place;
	if (!Parent)
	{
		return Place;
	}
	// 2. Down again, each in the place that the one around it gives.
	Place = Outer.GetCachedGeometry();
	const SWidget* Around = &Outer;
	for (int32 Depth = Path.Num() - 1; Depth >= 0 && Place; --Depth)
	{
		FArrangedChildren Children(EVisibility::Visible);
		Around->ArrangeChildren(*Place, Children);
		Around = Path[Depth];
		Place.Reset();
		for (int32 Index = 0; Index < Children.Num() && !Place; ++Index)
		{
			if (&Children[Index].Widget.Get() == Around)
			{
				Place = Children[Index].Geometry;
			}
		}
	}
	return Place;
}

TArray<FSlateRect> ShownTexts::GetRects(const FShownPlace& Place, const FGeometry& Geometry)
{
	TArray<FSlateRect> Rects;
	const TSharedPtr<SWidget> Widget = Place.Widget.Pin();
	if (!Widget)
	{
		return Rects;
	}
	UpdateRects(Place, *Widget, Geometry);
	const float Left = FMath::RoundToFloat(static_cast<float>(Geometry.GetAbsolutePosition().X));
	const float Top = static_cast<float>(Geometry.GetAbsolutePosition().Y);
	for (const FSlateRect& Rect : Place.Rects)
	{
		Rects.Add(FSlateRect(Left + Rect.Left, Top + Rect.Top, Left + Rect.Right, Top + Rect.Bottom));
	}
	return Rects;
}
