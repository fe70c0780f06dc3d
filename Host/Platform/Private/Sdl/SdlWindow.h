#pragma once

#include "Host/Platform.h"
#include "Paint/CairoPainter.h"
#include "Sdl/TextInputGate.h"

#include <SDL.h>

#include <atomic>
#include <vector>

/** A window on an X11 or Wayland display, painted by the processor into SDL's window surface. */
class FSdlWindow final : public IHostWindow
{
public:
	/** @param OutError  Filled with a sentence when the result is null. */
	static TSharedPtr<FSdlWindow> Create(const FHostWindowOptions& Options, FString& OutError);
	virtual ~FSdlWindow() override;
	FSdlWindow(const FSdlWindow&) = delete;
	FSdlWindow& operator=(const FSdlWindow&) = delete;

	virtual FIntPoint GetPixelSize() const override;
	virtual FIntPoint GetScreenPosition() const override;
	virtual float GetScale() const override { return Scale; }
	virtual bool IsVisible() const override;
	virtual bool IsHeadless() const override { return false; }
	virtual void SetTitle(const FString& Title) override;
	virtual void SetCursor(EMouseCursor::Type Cursor) override;
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override;
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override;
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override;
	virtual void Wake() override;
	virtual bool SaveScreenshot(const FString& Path) const override;
	virtual void Resize(const FIntPoint& PixelSize) override;
	virtual FColor GetPixel(int32 X, int32 Y) const override;

private:
	FSdlWindow(SDL_Window* InWindow, float InScale);

	/** Takes hold of the window's picture. Sets bPictureLost when it is a new one. */
	bool EnsurePicture();
	void SetIcon(const FString& Path);
	void Dispatch(IHostMessageHandler& Handler, const SDL_Event& Event);
	void DispatchWindowEvent(IHostMessageHandler& Handler, const SDL_WindowEvent& Event);
	void DispatchMouseButton(IHostMessageHandler& Handler, const SDL_MouseButtonEvent& Event);
	void DispatchText(IHostMessageHandler& Handler, const char* Bytes);
	/** @param Bytes  Path of a file, or a line of text. */
	void DispatchDrop(IHostMessageHandler& Handler, const char* Bytes);
	void DispatchWheel(IHostMessageHandler& Handler, const SDL_MouseWheelEvent& Event);
	void DispatchPreedit(IHostMessageHandler& Handler, const char* Text, int32 CursorCharacter);
	void SendMouseMove(IHostMessageHandler& Handler);

	SDL_Window* Window = nullptr;
	SDL_Surface* Surface = nullptr;
	void* SurfacePixels = nullptr;
	/** Used where the display has another pixel format than ours. */
	std::vector<uint32> OwnPixels;
	SDL_Surface* OwnSurface = nullptr;
	FCairoPainter Painter;
	FTextInputGate Gate;
	std::vector<SDL_Cursor*> Cursors;
	EMouseCursor::Type CurrentCursor = EMouseCursor::Default;
	float Scale = 1.0f;
	FString PlacePath;
	SDL_Rect TextInputRect = {};
	uint32 WakeEvent = 0;
	std::atomic<bool> bWakePending{ false };
	bool bPictureLost = true;
	bool bTextInput = false;
	bool bTextInputClosed = false;
	bool bMoveWaits = false;
	bool bCloseSent = false;
	/** SDL tells of the end once more for a window that was closed. */
	bool bQuitFollows = false;
	FVector2D MovePosition = FVector2D(0, 0);
	uint32 ButtonsDown = 0;
};
