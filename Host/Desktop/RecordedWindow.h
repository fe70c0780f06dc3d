#pragma once

#include "ForwardingWindow.h"
#include "InputGate.h"
#include "RecordFile.h"

#include <memory>

/**
 * The window and the way in of a session that is recorded: notes turns, sizes, what is painted and what comes in, and changes nothing.
 * Events that come while another one is handled are what that one has led to, and will again; they are not noted. Game thread.
 */
class FRecordedWindow : public FForwardingWindow, public FInputGate
{
public:
	FRecordedWindow(const TSharedRef<IHostWindow>& InWindow, const std::shared_ptr<FRecordWriter>& InWriter);

	/** A turn begins, with the platform's events taken, or a frame that is run directly. */
	void NoteTurn();
	/** What the turn before has had, which is known by now. */
	void NoteFrame();
	/** A script, or another driver, is about to do what it does: not what an event has led to, even within one. */
	void BeginDriver();
	void EndDriver();

	// IHostWindow
	virtual void PaintAndPresent(const FSlateWindowElementList& Elements, const FSlateRect& Damage) override;
	virtual void PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds) override;

protected:
	/** Writes it unless it is what another one has led to, then hands it on. */
	virtual void Enter(const FHostInput& Input) override;

private:
	FRecordWords MakeLine(const FHostInput& Input) const;
	/** What differs from the last look. */
	void NoteSize();

	const std::shared_ptr<FRecordWriter> Writer;
	/** Events that are being handled, one within another. */
	int32 Depth = 0;
	TArray<int32> DepthsOutside;
	bool bPumps = false;
	double NotedTime = 0.0;
	uint64 NotedFrames = 0;
	FIntPoint NotedSize = FIntPoint(0, 0);
	float NotedScale = 0.0f;
	bool bNotedVisible = true;
};

/** Modifier keys as a number, and back. */
int32 PackModifiers(const FModifierKeysState& Modifiers);
FModifierKeysState UnpackModifiers(int64 Bits);
