#pragma once

#include "CoreMinimal.h"
#include "Framework/Application/SlateApplication.h"
#include "Rendering/DrawElements.h"

class FInputRouter;
class FLayerStack;

/** Runs frames: waits while idle, does the work of a frame, compares the picture with the last and paints what differs. */
class FFrameRunner
{
public:
	FFrameRunner(FLayerStack& InLayers, FInputRouter& InInput, IHostWindow& InWindow);

	/** How long the loop may sleep before the next frame, in seconds. */
	double GetWait() const;
	void RunFrame();
	void NoteActivity();
	const FSlateWindowElementList& GetElements() const { return Elements; }
	const FHostFrameStats& GetStats() const { return Stats; }

	/** The part of the window in which two lists differ; empty when they are equal. Pure. */
	static FSlateRect GetDamage(const TArray<FSlateDrawElement>& Before, const TArray<FSlateDrawElement>& Now);

	TFunction<void()> FrameHook;

private:
	void LayOutAndPaint(double Now, float DeltaTime, FSlateWindowElementList& Out);

	FLayerStack& Layers;
	FInputRouter& Input;
	IHostWindow& Window;
	FSlateWindowElementList Elements;
	FSlateWindowElementList Spare;
	FHostFrameStats Stats;
	double LastFrameTime;
	double ActiveUntil;
	bool bHasPicture = false;
};
