#include "Host/HostClock.h"
#include "Host/Platform.h"
#include "Platform/InputRecorder.h"
#include "Rendering/DrawElements.h"
#include "Support/Base/TempFolder.h"

#include <cairo.h>

#include <chrono>
#include <thread>

namespace
{
	void PaintWhole(IHostWindow& Window, const FColor& Color)
	{
		const FIntPoint Size = Window.GetPixelSize();
		FSlateWindowElementList Elements(FVector2D(Size.X, Size.Y), 1.0f);
		const FSlateRect All(0, 0, static_cast<float>(Size.X), static_cast<float>(Size.Y));
		Elements.AddBox(All, Color);
		Window.PaintAndPresent(Elements, All);
	}

	double MeasurePump(IHostWindow& Window, double MaxWait)
	{
		FInputRecorder Recorder;
		const auto Begin = std::chrono::steady_clock::now();
		Window.PumpEvents(Recorder, MaxWait);
		return std::chrono::duration<double>(std::chrono::steady_clock::now() - Begin).count();
	}
}

TEST(HeadlessWindow, ResizingObeysAtOnceAndIsTold)
{
	const TSharedRef<IHostWindow> Window = FHostPlatform::CreateHeadlessWindow(FIntPoint(20, 10), 2.0f);
	EXPECT_EQ(Window->GetScale(), 2.0f);
	EXPECT_TRUE(Window->IsHeadless());
	FInputRecorder Recorder;
	for (const FIntPoint& Size : { FIntPoint(1, 1), FIntPoint(4000, 3000), FIntPoint(3, 7) })
	{
		Window->Resize(Size);
		EXPECT_EQ(Window->GetPixelSize(), Size);
		Window->PumpEvents(Recorder, 0.0);
		EXPECT_EQ(Recorder.Take(), "resized");
		PaintWhole(*Window, FColor(1, 2, 3, 255));
		EXPECT_EQ(Window->GetPixel(Size.X - 1, Size.Y - 1), FColor(1, 2, 3, 255));
		EXPECT_EQ(Window->GetPixel(Size.X, 0), FColor(0, 0, 0, 0));
	}
	Window->Resize(FIntPoint(-4, 0));
	EXPECT_EQ(Window->GetPixelSize(), FIntPoint(1, 1));
}

TEST(HeadlessWindow, ScreenshotsAreWhatWasPainted)
{
	const FTempFolder Folder;
	const TSharedRef<IHostWindow> Window = FHostPlatform::CreateHeadlessWindow(FIntPoint(5, 4), 1.0f);
	PaintWhole(*Window, FColor(10, 20, 30, 255));
	ASSERT_TRUE(Window->SaveScreenshot(Folder.At(TEXT("deep/shot.png"))));
	cairo_surface_t* Read = cairo_image_surface_create_from_png(Folder.AtBytes("deep/shot.png").c_str());
	ASSERT_EQ(cairo_surface_status(Read), CAIRO_STATUS_SUCCESS);
	EXPECT_EQ(cairo_image_surface_get_width(Read), 5);
	EXPECT_EQ(cairo_image_surface_get_height(Read), 4);
	EXPECT_EQ(*reinterpret_cast<const uint32*>(cairo_image_surface_get_data(Read)) & 0xFFFFFFu, 0x0A141Eu);
	cairo_surface_destroy(Read);
	Folder.Write("file", "x");
	EXPECT_FALSE(Window->SaveScreenshot(Folder.At(TEXT("file/shot.png"))));
}

TEST(HeadlessWindow, WaitingEndsWithTheTimeOrAWake)
{
	FHostClock::UseRealTime();
	const TSharedRef<IHostWindow> Window = FHostPlatform::CreateHeadlessWindow(FIntPoint(5, 4), 1.0f);
	EXPECT_GE(MeasurePump(*Window, 0.05), 0.045);
	std::thread Waker(
		[&Window]
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(20));
			Window->Wake();
		});
	EXPECT_LT(MeasurePump(*Window, 20.0), 10.0);
	Waker.join();
	Window->Wake();
	EXPECT_LT(MeasurePump(*Window, 20.0), 10.0) << "a wake before the sleep counts";
	FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31));
	EXPECT_LT(MeasurePump(*Window, 20.0), 10.0) << "simulated time does not sleep";
	FHostClock::UseRealTime();
}
