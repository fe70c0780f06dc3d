#pragma once

#include "Host/HostWindow.h"
#include "Paint/CairoPainter.h"

#include <condition_variable>
#include <mutex>
#include <vector>

/** A window that is a picture in memory: the same painter as on screen, no input of its own. */
class FHeadlessWindow final : public IHostWindow
{
public:
	FHeadlessWindow(const FIntPoint& InPixelSize, float InScale);

	virtual FIntPoint GetPixelSize() const override { return PixelSize; }
	virtual float GetScale() const override { return Scale; }
	virtual bool IsVisible() const override { return true; }
	virtual bool IsHeadless() const override { return true; }
	virtual void SetTitle(const FString& Title) override {}
	virtual void SetCursor(EMouseCursor::Type Cursor) override {}
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override {}
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override;
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override;
	virtual void Wake() override;
	virtual bool SaveScreenshot(const FString& Path) const override;
	virtual void Resize(const FIntPoint& InPixelSize) override;
	virtual FColor GetPixel(int32 X, int32 Y) const override;

private:
	void MakePicture();

	FIntPoint PixelSize;
	float Scale = 1.0f;
	std::vector<uint32> Pixels;
	FCairoPainter Painter;
	bool bResized = false;
	std::mutex Mutex;
	std::condition_variable Woken;
	bool bWake = false;
};
