#pragma once

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

/** A localised text with its identity: "VelmoraUI,Key: text". */
inline std::string DumpKey(const FText& Text)
{
	const TOptional<FString> Namespace = FTextInspector::GetNamespace(Text);
	const TOptional<FString> Key = FTextInspector::GetKey(Text);
	return (Namespace ? Utf8(*Namespace) : "-") + "," + (Key ? Utf8(*Key) : "-") + ": " + Utf8(Text.ToString());
}
