#include "Headless/HeadlessWindow.h"

#include "Host/HostClock.h"
#include "Paint/Screenshot.h"

#include <algorithm>
#include <chrono>

FHeadlessWindow::FHeadlessWindow(const FIntPoint& InPixelSize, float InScale)
	: PixelSize(InPixelSize)
	, Scale(InScale)
{
	MakePicture();
}

void FHeadlessWindow::MakePicture()
{
	Painter.SetTarget(nullptr, 0, 0, 0);
	Pixels.assign(static_cast<size_t>(PixelSize.X) * static_cast<size_t>(PixelSize.Y), 0xFF000000u);
	Painter.SetTarget(reinterpret_cast<unsigned char*>(Pixels.data()), PixelSize.X, PixelSize.Y, PixelSize.X * 4);
}

void FHeadlessWindow::PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage)
{
	Painter.Paint(Elements, FPixelRect::Cover(Damage));
}

void FHeadlessWindow::PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds)
{
	if (bResized)
	{
		bResized = false;
		Handler.OnWindowResized();
		return;
	}
	std::unique_lock<std::mutex> Lock(Mutex);
	// Simulated time stands still while this sleeps: whoever steps it is the caller.
	if (!FHostClock::IsSimulated() && MaxWaitSeconds > 0.0)
	{
		Woken.wait_for(Lock, std::chrono::duration<double>(std::min(MaxWaitSeconds, 3600.0)), [this] { return bWake; });
	}
	bWake = false;
}

void FHeadlessWindow::Wake()
{
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		bWake = true;
	}
	Woken.notify_one();
}

bool FHeadlessWindow::SaveScreenshot(const FString& Path) const
{
	return SaveSurfaceAsPng(Painter.GetSurface(), Path);
}

void FHeadlessWindow::Resize(const FIntPoint& InPixelSize)
{
	const FIntPoint NewSize(std::clamp(InPixelSize.X, 1, 16384), std::clamp(InPixelSize.Y, 1, 16384));
	if (NewSize.X != PixelSize.X || NewSize.Y != PixelSize.Y)
	{
		PixelSize = NewSize;
		MakePicture();
		bResized = true;
	}
}

FColor FHeadlessWindow::GetPixel(int32 X, int32 Y) const
{
	if (X < 0 || Y < 0 || X >= PixelSize.X || Y >= PixelSize.Y)
	{
		return FColor(0, 0, 0, 0);
	}
	const uint32 Pixel = Pixels[static_cast<size_t>(Y) * static_cast<size_t>(PixelSize.X) + static_cast<size_t>(X)];
	return FColor(static_cast<uint8>(Pixel >> 16), static_cast<uint8>(Pixel >> 8), static_cast<uint8>(Pixel), 255);
}
