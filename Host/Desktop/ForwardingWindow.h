#pragma once

#include "Host/HostWindow.h"
#include "Templates/SharedPointer.h"

/** Hands everything on to another window. Who changes one thing about it derives from this. As a window is called. */
class FForwardingWindow : public IHostWindow
{
public:
	explicit FForwardingWindow(const TSharedRef<IHostWindow>& InWindow)
		: Window(InWindow)
	{
	}

	virtual FIntPoint GetPixelSize() const override { return Window->GetPixelSize(); }
	virtual FIntPoint GetScreenPosition() const override { return Window->GetScreenPosition(); }
	virtual float GetScale() const override { return Window->GetScale(); }
	virtual bool IsVisible() const override { return Window->IsVisible(); }
	virtual bool IsHeadless() const override { return Window->IsHeadless(); }
	virtual void SetTitle(const FString& Title) override { Window->SetTitle(Title); }
	virtual void SetCursor(EMouseCursor::Type Cursor) override { Window->SetCursor(Cursor); }
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override { Window->SetTextInput(bActive, Caret); }
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override
	{
		Window->PaintAndPresent(Elements, Damage);
	}
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override { Window->PumpEvents(Handler, MaxWaitSeconds); }
	virtual void Wake() override { Window->Wake(); }
	virtual bool SaveScreenshot(const FString& Path) const override { return Window->SaveScreenshot(Path); }
	virtual void Resize(const FIntPoint& PixelSize) override { Window->Resize(PixelSize); }
	virtual FColor GetPixel(int32 X, int32 Y) const override { return Window->GetPixel(X, Y); }

protected:
	const TSharedRef<IHostWindow> Window;
};
