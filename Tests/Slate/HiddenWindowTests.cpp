#include "Async/Async.h"
#include "Async/TaskGraphInterfaces.h"
#include "Containers/Ticker.h"
#include "Host/HostClock.h"
#include "Host/Platform.h"
#include "Support/UiDriver.h"
#include "Widgets/Text/STextBlock.h"

#include <cmath>

namespace
{
	/** A headless window that can be hidden, and that waits in simulated time when it is told to. */
	class FHidingWindow final : public IHostWindow
	{
	public:
		virtual FIntPoint GetPixelSize() const override { return Inner->GetPixelSize(); }
		virtual float GetScale() const override { return Inner->GetScale(); }
		virtual bool IsVisible() const override { return bVisible; }
		virtual bool IsHeadless() const override { return true; }
		virtual void SetTitle(const FString& Title) override {}
		virtual void SetCursor(EMouseCursor::Type Cursor) override {}
		virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override {}
		virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override
		{
			++PaintCount;
			Inner->PaintAndPresent(Elements, Damage);
		}
		virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override
		{
			Inner->PumpEvents(Handler, MaxWaitSeconds);
			// As windows do, in whole milliseconds.
			FHostClock::Advance(bWaits ? std::ceil(MaxWaitSeconds * 1000.0) / 1000.0 : 0.0);
		}
		virtual void Wake() override { Inner->Wake(); }
		virtual bool SaveScreenshot(const FString& Path) const override { return Inner->SaveScreenshot(Path); }
		virtual void Resize(const FIntPoint& PixelSize) override { Inner->Resize(PixelSize); }
		virtual FColor GetPixel(int32 X, int32 Y) const override { return Inner->GetPixel(X, Y); }

		TSharedRef<IHostWindow> Inner = FHostPlatform::CreateHeadlessWindow(FIntPoint(300, 100), 1.0f);
		bool bVisible = true;
		bool bWaits = false;
		int32 PaintCount = 0;
	};
}

using HiddenWindow = FWidgetTest;

TEST_F(HiddenWindow, WorkGoesOnAndTheFirstFrameAfterShowsIt)
{
	FSlateApplication::Shutdown();
	const TSharedRef<FHidingWindow> Window = MakeShared<FHidingWindow>();
	FSlateApplication::Create(Window);
	const TSharedRef<STextBlock> Block = SNew(STextBlock).Text(FText::FromString(TEXT("before")));
	Show(Block);
	const int32 ElementsBefore = App().GetLastElements().GetElements().Num();
	ASSERT_GT(ElementsBefore, 0);

	Window->bVisible = false;
	int32 Ticks = 0;
	const FTSTicker::FDelegateHandle Ticker = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda(
		[&Ticks](float)
		{
			++Ticks;
			return true;
		}));
	AsyncTask(ENamedThreads::GameThread, [Block]() { Block->SetText(FText::FromString(TEXT("what came meanwhile"))); });
	const int32 PaintsBefore = Window->PaintCount;
	PumpSeconds(0.5);
	EXPECT_GE(Ticks, 30);
	EXPECT_EQ(Window->PaintCount, PaintsBefore);
	const TArray<FSlateDrawElement> Old = App().GetLastElements().GetElements();

	Window->bVisible = true;
	PumpFrame();
	EXPECT_EQ(Window->PaintCount, PaintsBefore + 1);
	EXPECT_FALSE(Old == App().GetLastElements().GetElements());
	EXPECT_GT(Block->GetCachedGeometry().GetLayoutBoundingRect().Width(), 0.0f);
	const TArray<FSlateDrawElement> First = App().GetLastElements().GetElements();
	PumpFrame();
	EXPECT_TRUE(First == App().GetLastElements().GetElements()) << "the first frame was not whole yet";
	FTSTicker::GetCoreTicker().RemoveTicker(Ticker);
}

TEST_F(HiddenWindow, AtRestTheLoopTurnsOnceASecond)
{
	FSlateApplication::Shutdown();
	const TSharedRef<FHidingWindow> Window = MakeShared<FHidingWindow>();
	FSlateApplication::Create(Window);
	Show(SNew(STextBlock).Text(FText::FromString(TEXT("nothing moves"))));
	PumpSeconds(1.0);
	// Who looks for something once a second, each from a moment of its own.
	std::vector<FTSTicker::FDelegateHandle> Tickers;
	for (int32 Index = 0; Index < 3; ++Index)
	{
		Tickers.push_back(FTSTicker::GetCoreTicker().AddTicker(TEXT(""), 1.0f, [](float) { return true; }));
		PumpSeconds(0.05);
	}
	Window->bWaits = true;
	const FHostFrameStats Before = App().GetFrameStats();
	const double End = FHostClock::Seconds() + 60.0;
	while (FHostClock::Seconds() < End)
	{
		App().RunTurn();
	}
	EXPECT_EQ(App().GetFrameStats().FrameCount, Before.FrameCount);
	EXPECT_LE(App().GetFrameStats().TurnCount - Before.TurnCount, 64u);
	EXPECT_GE(App().GetFrameStats().TurnCount - Before.TurnCount, 57u);
	for (const FTSTicker::FDelegateHandle& Ticker : Tickers)
	{
		FTSTicker::RemoveTicker(Ticker);
	}
}
