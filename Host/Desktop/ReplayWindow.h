#pragma once

#include "Host/HostWindow.h"
#include "ReplayTape.h"
#include "Templates/SharedPointer.h"

#include <chrono>
#include <memory>

/**
 * The window and the way in of a replay. Input, sizes and time are those of the recording; of what the platform has, closing the window
 * counts, and what has to be painted again. In memory a replay goes as fast as it can, on screen as it went, long pauses cut short.
 * Game thread.
 */
class FReplayWindow : public IHostWindow, public IHostMessageHandler
{
public:
	using FDo = TFunction<void(const std::string& Deed, const FString& Subject)>;

	/** @param Size  Pixels, as the recording begins. */
	FReplayWindow(
		const TSharedRef<IHostWindow>& InWindow, const FIntPoint& Size, float InScale, const std::shared_ptr<FReplayTape>& InTape);

	/** @param InDo  Does what a script did without input. @param InAtEnd  Called once, where the recording ends. */
	void SetUp(FDo InDo, TFunction<void()> InAtEnd);
	/** A frame is about to be run directly. */
	void NoteTurn();
	/** Before each turn: what a driver did then. */
	void Drive();

	// IHostWindow
	virtual FIntPoint GetPixelSize() const override { return Size; }
	virtual float GetScale() const override { return Scale; }
	virtual bool IsVisible() const override { return bVisible; }
	virtual bool IsHeadless() const override { return Window->IsHeadless(); }
	virtual void SetTitle(const FString& Title) override { Window->SetTitle(Title); }
	virtual void SetCursor(EMouseCursor::Type Cursor) override { Window->SetCursor(Cursor); }
	/** Nobody types here. */
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override {}
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override;
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override;
	virtual void Wake() override { Window->Wake(); }
	virtual bool SaveScreenshot(const FString& Path) const override { return Window->SaveScreenshot(Path); }
	/** The recording says which sizes there are. */
	virtual void Resize(const FIntPoint& PixelSize) override {}
	virtual FColor GetPixel(int32 X, int32 Y) const override { return Window->GetPixel(X, Y); }

	// IHostMessageHandler: what an event of the recording has led to goes on, all else stays here.
	virtual void OnKeyDown(const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat) override;
	virtual void OnKeyUp(const FKey& Key, const FModifierKeysState& Modifiers) override;
	virtual void OnTextInput(FStringView Text) override;
	virtual void OnPreedit(FStringView Text, int32 Cursor) override;
	virtual void OnMouseMove(const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& Modifiers) override;
	virtual void OnMouseLeave() override;
	virtual void OnWindowResized() override;
	virtual void OnWindowActivated(bool bActive) override;
	virtual void OnWindowExposed() override;
	virtual void OnCloseRequested() override;

private:
	using FClock = std::chrono::steady_clock;

	/** Does what the next line says, if it is of the kind that comes between turns. */
	bool PlayNext();
	/** Hands an event of the recording to the application. */
	void Dispatch(const FRecordLine& Line);
	void TakeSize(const FRecordLine& Line);
	void TakeTurn();
	/** Begins what the agent's side does in the turn, when its tasks are run. */
	void QueueDelivery() const;
	void PlayEnd();
	/** On screen: until the moment has come, as long as nobody closes the window. */
	void WaitUntil(double Seconds);
	void PumpScreen();

	const TSharedRef<IHostWindow> Window;
	FIntPoint Size;
	float Scale;
	bool bVisible = true;
	const std::shared_ptr<FReplayTape> Tape;
	FDo Do;
	TFunction<void()> AtEnd;
	/** Events that are being handled, one within another. */
	int32 Depth = 0;
	bool bIsOver = false;
	/** The moment on screen that goes with a moment of the recording. */
	FClock::time_point ShownAt;
	double ShownSeconds = 0.0;
};
