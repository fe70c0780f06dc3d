#include "Support/UiDriver.h"

#include "Containers/StringConv.h"
#include "Host/HostClock.h"
#include "Host/HostInput.h"
#include "Host/HostServices.h"
#include "Host/HostSession.h"
#include "Styling/SlateStyle.h"
#include "Support/Base/PinnedFonts.h"
#include "Widgets/SNullWidget.h"

namespace
{
	FString FromUtf8(const std::string& Text)
	{
		return FString(FUTF8ToTCHAR(Text.c_str(), static_cast<int32>(Text.size())));
	}

	/** Of the test that runs; there is one at a time. */
	TUniquePtr<FHostSession> CurrentSession;

	FModifierKeysState MakeModifiers(bool bShift, bool bControl, bool bAlt)
	{
		return FModifierKeysState(bShift, false, bControl, false, bAlt, false);
	}
}

FWidgetTest::FWidgetTest() = default;
FWidgetTest::~FWidgetTest() = default;

void FWidgetTest::SetUp()
{
	// Before the first session reads the font configuration.
	UsePinnedFonts();
	FHostServices::ClearLaunchRecord();
	FHostSessionOptions Options;
	Options.HomeFolder = UTF8_TO_TCHAR(VELMORA_SOURCE_DIR);
	Options.Plugin.VersionName = TEXT("test");
	Options.StartTime = FDateTime(2026, 1, 31, 12, 0, 0);
	CurrentSession = MakeUnique<FHostSession>(Options);
	UnknownNamesBefore = FSlateStyleSet::GetUnknownNameCount();
	PumpFrame();
}

void FWidgetTest::TearDown()
{
	// No frame any more: widgets may be bound to variables of the test, which are gone by now.
	if (!bUnknownNamesAllowed)
	{
		EXPECT_EQ(App().GetLastElements().GetChequerCount(), 0) << "a red chequer is on screen";
		EXPECT_EQ(FSlateStyleSet::GetUnknownNameCount(), UnknownNamesBefore) << "an unknown brush, font or style was asked for";
	}
	CurrentSession.Reset();
}

void FWidgetTest::Show(const TSharedRef<SWidget>& Widget)
{
	App().SetRootContent(Widget);
	PumpFrame();
}

void FWidgetTest::PumpFrame(double Seconds)
{
	FHostClock::Advance(Seconds);
	App().Tick();
}

void FWidgetTest::PumpSeconds(double Seconds)
{
	for (double Done = 0.0; Done < Seconds - 1e-9; Done += 1.0 / 60.0)
	{
		PumpFrame();
	}
}

void FWidgetTest::LetTimePass(double Seconds)
{
	WaitFor([] { return false; }, Seconds);
}

double FWidgetTest::WaitFor(const std::function<bool()>& Test, double Seconds)
{
	constexpr double TurnSeconds = 1.0 / 60.0;
	double Passed = 0.0;
	while (!Test() && Passed < Seconds - 1e-9)
	{
		FHostClock::Advance(TurnSeconds);
		App().RunTurn(0.0);
		Passed += TurnSeconds;
	}
	return Passed;
}

int32 FWidgetTest::CountFrames(double Seconds)
{
	const uint64 Before = App().GetFrameStats().FrameCount;
	LetTimePass(Seconds);
	return static_cast<int32>(App().GetFrameStats().FrameCount - Before);
}

void FWidgetTest::Resize(int32 Width, int32 Height)
{
	App().GetWindow().Resize(FIntPoint(Width, Height));
	PumpFrame();
}

void FWidgetTest::MoveMouse(const FVector2D& Position)
{
	App().GetMessageHandler().OnMouseMove(Position, FModifierKeysState());
	PumpFrame();
}

void FWidgetTest::PressMouse(const FVector2D& Position, const FKey& Button)
{
	App().GetMessageHandler().OnMouseDown(Button, Position, FModifierKeysState());
	PumpFrame();
}

void FWidgetTest::ReleaseMouse(const FVector2D& Position, const FKey& Button)
{
	App().GetMessageHandler().OnMouseUp(Button, Position, FModifierKeysState());
	PumpFrame();
}

void FWidgetTest::Click(const TSharedRef<SWidget>& Widget)
{
	ClickAt(GetCenter(Widget));
}

void FWidgetTest::ClickAt(const FVector2D& Position, int32 Count)
{
	MoveMouse(Position);
	for (int32 Index = 0; Index < Count; ++Index)
	{
		PressMouse(Position);
		ReleaseMouse(Position);
	}
}

void FWidgetTest::Scroll(const TSharedRef<SWidget>& Widget, float Notches)
{
	App().GetMessageHandler().OnMouseWheel(FVector2D(0.0, Notches), GetCenter(Widget), FModifierKeysState());
	PumpFrame();
}

void FWidgetTest::PressKey(const char* Chord)
{
	TArray<FString> Parts;
	FromUtf8(Chord).ParseIntoArray(Parts, TEXT("+"));
	bool bShift = false;
	bool bControl = false;
	bool bAlt = false;
	FKey Key;
	for (const FString& Part : Parts)
	{
		if (Part == TEXT("SHIFT"))
		{
			bShift = true;
		}
		else if (Part == TEXT("CTRL"))
		{
			bControl = true;
		}
		else if (Part == TEXT("ALT"))
		{
			bAlt = true;
		}
		else
		{
			Key = EKeys::Find(FName(*Part));
		}
	}
	ASSERT_TRUE(Key.IsValid()) << Chord;
	const FModifierKeysState Modifiers = MakeModifiers(bShift, bControl, bAlt);
	HostInput::PressKey(Key, Modifiers);
	PumpFrame();
}

void FWidgetTest::TypeText(const std::string& Text)
{
	HostInput::Type(FromUtf8(Text), /*bTabsAreText*/ true);
	PumpFrame();
}

FVector2D FWidgetTest::GetCenter(const TSharedRef<SWidget>& Widget)
{
	const FSlateRect Rect = Widget->GetCachedGeometry().GetLayoutBoundingRect();
	return FVector2D((Rect.Left + Rect.Right) * 0.5, (Rect.Top + Rect.Bottom) * 0.5);
}

FTextList FWidgetTest::VisibleTexts()
{
	FTextList Texts;
	for (const FString& Text : FWidgetFinder::GetVisibleTexts())
	{
		Texts.push_back(Utf8(Text));
	}
	return Texts;
}

namespace
{
	TSharedRef<SWidget> TakeOne(const TArray<TSharedRef<SWidget>>& Found, const std::string& Name)
	{
		EXPECT_EQ(Found.Num(), 1) << Name << "\n" << Utf8(FWidgetFinder::DumpTree());
		return Found.Num() > 0 ? Found[0] : SNullWidget::GetNullWidget();
	}
}

TSharedRef<SWidget> FWidgetTest::FindByTag(const char* Tag)
{
	const FName Name(*FromUtf8(Tag));
	return TakeOne(FWidgetFinder::FindAll([Name](SWidget& Widget) { return Widget.GetTag() == Name; }), Tag);
}

TSharedRef<SWidget> FWidgetTest::FindByText(const std::string& Text)
{
	return TakeOne(FWidgetFinder::FindByText(FromUtf8(Text)), Text);
}

TSharedRef<SWidget> FWidgetTest::FindByToolTip(const std::string& FirstLine)
{
	return TakeOne(FWidgetFinder::FindByToolTip(FromUtf8(FirstLine)), FirstLine);
}

std::vector<TSharedRef<SWidget>> FWidgetTest::FindByType(const char* Type)
{
	std::vector<TSharedRef<SWidget>> Found;
	for (const TSharedRef<SWidget>& Widget : FWidgetFinder::FindByType(FName(*FromUtf8(Type))))
	{
		Found.push_back(Widget);
	}
	return Found;
}
