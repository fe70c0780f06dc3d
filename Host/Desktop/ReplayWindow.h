#pragma once

#include "ForwardingWindow.h"
#include "InputGate.h"
#include "ReplayTape.h"

#include <chrono>
#include <memory>

/**
 * The window and the way in of a replay. Input, sizes and time are those of the recording; of what the platform has, closing the window
 * counts, and what has to be painted again. In memory a replay goes as fast as it can, on screen as it went, long pauses cut short.
 * Game thread.
 */
class FReplayWindow : public FForwardingWindow, public FInputGate
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
	/** Nobody types here. */
	virtual void SetTextInput(bool bActive, const FSlateRect& Caret) override {}
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override;
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override;
	/** The recording says which sizes there are. */
	virtual void Resize(const FIntPoint& PixelSize) override {}

protected:
	/** What an event of the recording has led to goes on, all else stays here. */
	virtual void Enter(const FHostInput& Input) override;

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
