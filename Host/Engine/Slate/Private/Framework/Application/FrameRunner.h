#pragma once

#include "CoreMinimal.h"
#include "Framework/Application/SlateApplication.h"
#include "Rendering/DrawElements.h"

class FInputRouter;
class FLayerStack;

/**
 * Turns the loop and decides in each turn whether Slate is awake: if so the turn has a frame, which compares the picture with
 * the last one and paints what differs. Tasks and core ticker run in every turn.
 */
class FFrameRunner
{
public:
	FFrameRunner(FLayerStack& InLayers, FInputRouter& InInput, IHostWindow& InWindow);

	/** How long the loop may wait before the next turn, in seconds. */
	double GetWait() const;
	/** One turn without waiting. @return Whether a frame was part of it; bForce brings one in any case. */
	bool RunTurn(bool bForce);
	/** A frame soon, and full rate for a while. */
	void NoteActivity();
	/** The next turn has a frame. */
	void RequestFrame() { bFrameWanted = true; }
	void SetStrictSleep(bool bStrict);
	const FSlateWindowElementList& GetElements() const { return Elements; }
	const FHostFrameStats& GetStats() const { return Stats; }

	/** The part of the window in which two lists differ; empty when they are equal. Pure. */
	static FSlateRect GetDamage(const TArray<FSlateDrawElement>& Before, const TArray<FSlateDrawElement>& Now);

	TFunction<void()> FrameHook;

private:
	void RunFrame(double Now);
	void Present(FSlateWindowElementList&& Next);
	void LayOutAndPaint(double Now, float DeltaTime, FSlateWindowElementList& Out);
	/** When the next frame is due; FHostSleep::Never when nothing brings one. */
	double GetNextFrameTime() const;

	FLayerStack& Layers;
	FInputRouter& Input;
	IHostWindow& Window;
	FSlateWindowElementList Elements;
	FSlateWindowElementList Spare;
	FHostFrameStats Stats;
	double LastTurnTime;
	double LastFrameTime;
	/** The beat of the frames: a late frame does not put off those after it. */
	double LastBeat;
	double ActiveUntil;
	/** Layers that were open in the last frame. */
	int32 ShownLayers = 0;
	bool bFrameWanted = true;
	/** The layout did not come to rest within the last frame. */
	bool bUnsettled = false;
	bool bStrictSleep = false;
	bool bHasPicture = false;
};
