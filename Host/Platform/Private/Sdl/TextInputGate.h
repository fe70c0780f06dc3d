#pragma once

#include "Host/HostWindow.h"

#include <vector>

/**
 * Puts key and text events into the order in which the user meant them. An input method commits its word after the key
 * that ended it has already arrived, so while an unfinished word (preedit) is open, keys and text are held back; once it
 * closes, the committed text goes first. Also joins text that arrives in pieces, and drops what shortcuts "type".
 */
class FTextInputGate
{
public:
	void OnKeyDown(IHostMessageHandler& Handler, const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat);
	void OnKeyUp(IHostMessageHandler& Handler, const FKey& Key, const FModifierKeysState& Modifiers);
	/** @param bMore  The piece is as long as pieces can be, so the next one may continue it. */
	void OnText(IHostMessageHandler& Handler, FStringView Text, bool bMore);
	void OnPreedit(IHostMessageHandler& Handler, FStringView Text, int32 Cursor);
	/** To be called when no more events wait. */
	void OnBatchEnd(IHostMessageHandler& Handler);
	/** The focus or the text field is gone: whatever is held comes out. */
	void Close(IHostMessageHandler& Handler);

private:
	enum class EHeld : uint8
	{
		KeyDown,
		KeyUp,
		/** Came from a key. */
		Typed,
		/** Came from the input method. */
		Committed,
	};
	struct FHeld
	{
		EHeld Kind = EHeld::KeyDown;
		FKey Key;
		FModifierKeysState Modifiers;
		bool bRepeat = false;
		FString Text;
	};
	bool IsHolding() const { return bOpen || bClosing; }
	void SendText(IHostMessageHandler& Handler);
	void Release(IHostMessageHandler& Handler);

	std::vector<FHeld> Held;
	/** Joined so far and not sent. */
	FString Pending;
	FModifierKeysState KeyModifiers;
	bool bOpen = false;
	/** The preedit has closed; what belongs to its end may still be among the waiting events. */
	bool bClosing = false;
	bool bBehindKey = false;
	bool bContinued = false;
	bool bLastTyped = false;
};
