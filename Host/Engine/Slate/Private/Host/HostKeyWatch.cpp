#include "Host/HostKeyWatch.h"

namespace
{
	struct FKeyWatchState
	{
		FHostKeyWatch::FListener Listener;
		/** The key that went down last was kept, and what it types comes after it. */
		bool bKeepsText = false;
	};

	FKeyWatchState& GetState()
	{
		static FKeyWatchState State;
		return State;
	}
}

void FHostKeyWatch::SetListener(FListener Listener)
{
	GetState().Listener = MoveTemp(Listener);
	GetState().bKeepsText = false;
}

bool FHostKeyWatch::TakesKey(const FKey& Key, const FModifierKeysState& Modifiers, bool bDown)
{
	FKeyWatchState& State = GetState();
	if (!State.Listener)
	{
		return false;
	}
	// A copy: the listener may end the watch.
	const FListener Listener = State.Listener;
	const bool bTakes = Listener(Key, Modifiers, bDown);
	// Text comes between the two; what comes later was typed otherwise, as by an input method.
	State.bKeepsText = bDown && bTakes;
	return bTakes;
}

bool FHostKeyWatch::TakesText()
{
	return GetState().bKeepsText;
}
