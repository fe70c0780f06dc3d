#pragma once

#include "CoreMinimal.h"
#include "GenericPlatform/ICursor.h"
#include "InputCoreTypes.h"
#include "Input/Events.h"
#include "Layout/SlateRect.h"

class FSlateWindowElementList;

/** What the platform tells the application; positions are device pixels in the window. Game thread, during PumpEvents. */
class SLATECORE_API IHostMessageHandler
{
public:
	virtual ~IHostMessageHandler();
	virtual void OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat) = 0;
	virtual void OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers) = 0;
	/** Committed text of any length. Control characters are never sent here. */
	virtual void OnTextInput(FStringView Text) = 0;
	/** Text of an input method that is not committed yet; empty ends it. Cursor counts UTF-16 units. */
	virtual void OnPreedit(FStringView Text, int32 Cursor) = 0;
	virtual void OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers) = 0;
	virtual void OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) = 0;
	virtual void OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) = 0;
	/** Delta in wheel notches, up and right positive. */
	virtual void OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers) = 0;
	virtual void OnMouseLeave() = 0;
	virtual void OnWindowResized() = 0;
	virtual void OnWindowActivated(bool bActive) = 0;
	/** The picture on screen was lost; everything is to be painted again. */
	virtual void OnWindowExposed() = 0;
	virtual void OnCloseRequested() = 0;
};

/** A window of the platform: an on-screen one, or an image in memory with the same behaviour. Game thread, Wake excepted. */
class SLATECORE_API IHostWindow
{
public:
	virtual ~IHostWindow();

	virtual FIntPoint GetPixelSize() const = 0;
	/** Upper left corner of the content on the screen, in pixels, as far as the platform knows. */
	virtual FIntPoint GetScreenPosition() const { return FIntPoint(0, 0); }
	/** Device pixels per layout unit. */
	virtual float GetScale() const = 0;
	/** False while minimised or hidden: nothing is painted then. */
	virtual bool IsVisible() const = 0;
	virtual bool IsHeadless() const = 0;
	virtual void SetTitle(const FString& Title) = 0;
	virtual void SetCursor(EMouseCursor::Type Cursor) = 0;
	/** Opens or closes text input of the platform; the rectangle (device pixels) is where a candidate window belongs. */
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) = 0;
	/** Paints what lies inside Damage (device pixels) and brings it on screen. */
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) = 0;
	/**
	 * Hands waiting events to the handler.
	 * @param MaxWaitSeconds  How long to sleep when nothing waits; Wake ends the sleep.
	 */
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) = 0;
	/** Ends a sleeping PumpEvents. Any thread. */
	virtual void Wake() = 0;
	/** Writes what was painted last as a PNG file. False when it cannot be written. */
	virtual bool SaveScreenshot(const FString& Path) const = 0;
	/** Changes the size as a user would; the headless window obeys at once. */
	virtual void Resize(const FIntPoint& PixelSize) = 0;
	/** The colour of a painted pixel, for tests. */
	virtual FColor GetPixel(int32 X, int32 Y) const = 0;
};
