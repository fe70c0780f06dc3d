#pragma once

#include "Host/HostNotifications.h"
#include "Layout/Children.h"
#include "Style/VelmoraUIStyles.h"
#include "Support/UiDriver.h"
#include "Widgets/SNullWidget.h"

#include <string>

/** A test of the module's widgets: the driver with the module's style set. */
class FVelmoraWidgetTest : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		FVelmoraUIStyles::Initialize();
	}

	void TearDown() override
	{
		FWidgetTest::TearDown();
		FVelmoraUIStyles::Shutdown();
	}

	/** "[2] Text" for each toast, the oldest first. */
	static FTextList Toasts()
	{
		FTextList List;
		for (const FHostToast& Toast : FHostNotifications::GetVisible())
		{
			List.push_back("[" + std::to_string(static_cast<int>(Toast.State)) + "] " + Utf8(Toast.Text.ToString()));
		}
		return List;
	}
};

/**
 * The widgets that a builder made, as one line: "SBorder[STextBlock 'Title']". Widgets that are complete in themselves
 * show their text and not their parts; empty slots are left out.
 */
inline std::string DumpWidgets(SWidget& Widget)
{
	std::string Type = Utf8(Widget.GetType().ToString());
	Type = Type.substr(0, Type.find('<'));
	for (const char* Leaf : { "STextBlock", "SEditableText" })
	{
		if (Type == Leaf)
		{
			return Type + " '" + Utf8(Widget.GetDisplayedText().ToString()) + "'";
		}
	}
	for (const char* Leaf : { "SCheckBox", "SImage", "SSpacer", "SThrobber" })
	{
		if (Type == Leaf)
		{
			return Type;
		}
	}
	std::string Inner;
	FChildren* Children = Widget.GetChildren();
	for (int32 Index = 0; Index < Children->Num(); ++Index)
	{
		const TSharedRef<SWidget> Child = Children->GetChildAt(Index);
		if (Child->GetType() != SNullWidget::NullWidget->GetType())
		{
			Inner += (Inner.empty() ? "" : ", ") + DumpWidgets(*Child);
		}
	}
	return Inner.empty() ? Type : Type + "[" + Inner + "]";
}

/** Texts of a widget and of all in it, shown or not, in tree order. */
inline FTextList TextsIn(SWidget& Widget)
{
	FTextList Texts;
	const std::string Own = Utf8(Widget.GetDisplayedText().ToString());
	if (!Own.empty())
	{
		Texts.push_back(Own);
	}
	FChildren* Children = Widget.GetChildren();
	for (int32 Index = 0; Index < Children->Num(); ++Index)
	{
		for (const std::string& Text : TextsIn(*Children->GetChildAt(Index)))
		{
			Texts.push_back(Text);
		}
	}
	return Texts;
}

/** The first widget of that type below another one, shown or not; null when there is none. */
inline TSharedPtr<SWidget> FindInside(SWidget& Root, const std::string& Type)
{
	FChildren* Children = Root.GetChildren();
	for (int32 Index = 0; Index < Children->Num(); ++Index)
	{
		const TSharedRef<SWidget> Child = Children->GetChildAt(Index);
		if (Utf8(Child->GetType().ToString()).starts_with(Type))
		{
			return Child;
		}
		if (const TSharedPtr<SWidget> Found = FindInside(*Child, Type))
		{
			return Found;
		}
	}
	return nullptr;
}

/** "RRGGBBAA", as the painter gets it. */
inline std::string Hex(const FLinearColor& Color)
{
	return Utf8(Color.ToFColorSRGB().ToHex());
}

/** What the last frame painted within a widget, of one kind: "Picture RRGGBBAA", or the colour alone. */
inline FTextList PaintedIn(const SWidget& Widget, ESlateDrawType Type)
{
	const FSlateRect Rect = Widget.GetCachedGeometry().GetLayoutBoundingRect();
	FTextList Painted;
	for (const FSlateDrawElement& Element : FSlateApplication::Get().GetLastElements().GetElements())
	{
		const FVector2D Place(Element.Rect.Left + 0.5, Element.Rect.Top + (Type == ESlateDrawType::Glyphs ? -0.5 : 0.5));
		if (Element.Type != Type || Place.X < Rect.Left || Place.X > Rect.Right || Place.Y < Rect.Top || Place.Y > Rect.Bottom)
		{
			continue;
		}
		std::string Name = Type == ESlateDrawType::Image ? Utf8(Element.Image.ToString()) : std::string();
		Name = Name.substr(Name.rfind('/') + 1);
		Painted.push_back((Name.empty() ? "" : Name.substr(0, Name.rfind('.')) + " ") + Utf8(Element.Color.ToHex()));
	}
	return Painted;
}

/** A localised text with its identity: "VelmoraUI,Key: text". */
inline std::string DumpKey(const FText& Text)
{
	const TOptional<FString> Namespace = FTextInspector::GetNamespace(Text);
	const TOptional<FString> Key = FTextInspector::GetKey(Text);
	return (Namespace ? Utf8(*Namespace) : "-") + "," + (Key ? Utf8(*Key) : "-") + ": " + Utf8(Text.ToString());
}
