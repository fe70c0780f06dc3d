#pragma once

#include "CoreMinimal.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/WidgetFinder.h"
#include "Support/Base/Printers.h"
#include "Widgets/SWidget.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/** Texts as a list that gtest prints and compares, letter case included. */
using FTextList = std::vector<std::string>;

/**
 * A test that shows widgets: a headless application with pinned fonts and a clock that only PumpFrame moves. Input
 * enters where the platform's does. A test fails when an unknown brush, font or style name was asked for.
 */
class FWidgetTest : public ::testing::Test
{
public:
	FWidgetTest();
	~FWidgetTest() override;

protected:
	void SetUp() override;
	void TearDown() override;

	/** Makes the widget the window's content and runs a frame. */
	void Show(const TSharedRef<SWidget>& Widget);
	/** Moves the clock, then runs one frame. */
	void PumpFrame(double Seconds = 1.0 / 60.0);
	/** Frames of a sixtieth second until so much time has passed. */
	void PumpSeconds(double Seconds);

	// What comes to the screen without being pumped.
	/** From here on input brings one frame, and nothing but active timers brings another. */
	static void SleepStrictly() { App().SetStrictSleep(true); }
	/** Turns of the loop, a sixtieth second each. Slate has its frames among them when it is awake, and only then. */
	void LetTimePass(double Seconds);
	/** Seconds of such turns until the test holds; the whole time when it never does. */
	double WaitFor(const std::function<bool()>& Test, double Seconds);
	/** Frames that so much time brings. */
	int32 CountFrames(double Seconds);
	void Resize(int32 Width, int32 Height);

	// Input. Positions are device pixels.
	void MoveMouse(const FVector2D& Position);
	void Hover(const TSharedRef<SWidget>& Widget) { MoveMouse(GetCenter(Widget)); }
	void PressMouse(const FVector2D& Position, const FKey& Button = EKeys::LeftMouseButton);
	void ReleaseMouse(const FVector2D& Position, const FKey& Button = EKeys::LeftMouseButton);
	/** Move, press, release in the middle of the widget, a frame after each. */
	void Click(const TSharedRef<SWidget>& Widget);
	void ClickAt(const FVector2D& Position, int32 Count = 1);
	void Scroll(const TSharedRef<SWidget>& Widget, float Notches);
	/** A chord such as "CTRL+SHIFT+Left" or "Enter": modifiers, key down, key up, then a frame. */
	void PressKey(const char* Chord);
	/** Text as typed; a line feed is the key Enter. */
	void TypeText(const std::string& Text);

	// Looking.
	static FVector2D GetCenter(const TSharedRef<SWidget>& Widget);
	/** Left, top, width, height in device pixels. */
	static FSlateRect GetRect(const SWidget& Widget) { return Widget.GetCachedGeometry().GetLayoutBoundingRect(); }
	static FTextList VisibleTexts();
	/** Fails the test when there is not exactly one; gives an empty widget then. */
	static TSharedRef<SWidget> FindByTag(const char* Tag);
	static TSharedRef<SWidget> FindByText(const std::string& Text);
	static TSharedRef<SWidget> FindByToolTip(const std::string& FirstLine);
	static std::vector<TSharedRef<SWidget>> FindByType(const char* Type);
	static int32 CountByType(const char* Type) { return static_cast<int32>(FindByType(Type).size()); }
	static bool IsShown(const TSharedRef<SWidget>& Widget) { return FWidgetFinder::IsShown(Widget.Get()); }
	/** The one shown widget of that class. */
	template <typename WidgetType>
	TSharedRef<WidgetType> FindOne(const char* Type)
	{
		const std::vector<TSharedRef<SWidget>> Found = FindByType(Type);
		EXPECT_EQ(Found.size(), 1u) << Type;
		return StaticCastSharedRef<WidgetType>(Found.at(0));
	}
	static FSlateApplication& App() { return FSlateApplication::Get(); }
	/** Unknown names are expected in this test. */
	void AllowUnknownNames() { bUnknownNamesAllowed = true; }

private:
	bool bUnknownNamesAllowed = false;
	int32 UnknownNamesBefore = 0;
};
