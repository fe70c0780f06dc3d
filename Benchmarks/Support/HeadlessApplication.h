#pragma once

#include "CoreMinimal.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostSession.h"
#include "Templates/UniquePtr.h"

/** The application without a screen, 1280×800, with pinned fonts and a clock that only PumpFrame moves. One at a time. */
class FHeadlessApplication
{
public:
	FHeadlessApplication();
	~FHeadlessApplication();

	void Show(const TSharedRef<SWidget>& Widget);
	void PumpFrame(double Seconds = 1.0 / 60.0);
	/** Until animations are over and every size is known. */
	void Settle();
	void Wheel(float Notches);
	void Click(const FVector2D& Position);
	void PressKey(const FKey& Key);
	void PressControlKey(const FKey& Key);
	void Type(FStringView Text);
	static FSlateApplication& App() { return FSlateApplication::Get(); }

	/** Seconds of work of this thread; waiting for others does not count. */
	static double GetThreadSeconds();
	/** Bytes of the process that are in memory. */
	static double GetResidentBytes();

private:
	TUniquePtr<FHostSession> Session;
};

/** Frames of 1/60 s of real time beside work on other threads. */
struct FPacedFrames
{
	void Pump(FHeadlessApplication& Application);

	int64 Count = 0;
	double WorstMilliseconds = 0.0;
};
