#include "Sdl/TextInputGate.h"

#include <algorithm>

// Brings keys and text into the order in which the user means them. An input method sends its texts beside the keys and
// not always in order: while its text is open, keys belong to it; when it closes, the confirmed text has to arrive
// before the key that closed it, although SDL reports that key first. So keys that come between the closing and its text
// are held back until the batch of events ends.
//
// Text after a key was typed by that key, and with Ctrl or Alt held it is a shortcut and no text. Text that comes alone
// was committed by an input method and is text in any case.

void FTextInputGate::OnKeyDown(IHostMessageHandler& Handler, const FKey& Key, const FModifierKeysState& Modifiers, bool bRepeat)
{
	bBehindKey = true;
	bContinued = false;
	KeyModifiers = Modifiers;
	if (IsHolding())
	{
		Held.push_back(FHeld{ EHeld::KeyDown, Key, Modifiers, bRepeat, FString() });
		return;
	}
	SendText(Handler);
	if (Key.IsValid())
	{
		Handler.OnKeyDown(Key, Modifiers, bRepeat);
	}
}

// The release of a key that is held back waits for its press.
void FTextInputGate::OnKeyUp(IHostMessageHandler& Handler, const FKey& Key, const FModifierKeysState& Modifiers)
{
	bBehindKey = false;
	bContinued = false;
	const bool bDownHeld =
		std::any_of(Held.begin(), Held.end(), [&Key](const FHeld& Entry) { return Entry.Kind == EHeld::KeyDown && Entry.Key == Key; });
	if (bDownHeld)
	{
		Held.push_back(FHeld{ EHeld::KeyUp, Key, Modifiers, false, FString() });
		return;
	}
	SendText(Handler);
	if (Key.IsValid())
	{
		Handler.OnKeyUp(Key, Modifiers);
	}
}

// A long text comes in several pieces, which are judged like the first.
void FTextInputGate::OnText(IHostMessageHandler& Handler, FStringView Text, bool bMore)
{
	const bool bTyped = bContinued ? bLastTyped : bBehindKey;
	bBehindKey = false;
	bContinued = bMore;
	bLastTyped = bTyped;
	// The right Alt key reaches the third level of a keyboard, where braces and the at sign live.
	const bool bThirdLevel = KeyModifiers.IsAltDown() && !KeyModifiers.IsLeftAltDown();
	if (bTyped && !bThirdLevel && (KeyModifiers.IsControlDown() || KeyModifiers.IsAltDown() || KeyModifiers.IsCommandDown()))
	{
		return;
	}
	FString Clean;
	for (const TCHAR Unit : Text)
	{
		if (Unit >= 0x20 && Unit != 0x7F)
		{
			Clean.AppendChar(Unit);
		}
	}
	if (Clean.IsEmpty())
	{
		return;
	}
	if (IsHolding())
	{
		Held.push_back(FHeld{ bTyped ? EHeld::Typed : EHeld::Committed, FKey(), FModifierKeysState(), false, MoveTemp(Clean) });
		return;
	}
	Pending += Clean;
}

void FTextInputGate::OnPreedit(IHostMessageHandler& Handler, FStringView Text, int32 Cursor)
{
	bBehindKey = false;
	bContinued = false;
	if (Text.IsEmpty())
	{
		if (bOpen)
		{
			bOpen = false;
			bClosing = true;
			Handler.OnPreedit(Text, 0);
		}
		return;
	}
	if (bClosing)
	{
		Release(Handler);
	}
	SendText(Handler);
	bOpen = true;
	Handler.OnPreedit(Text, std::clamp(Cursor, 0, Text.Len()));
}

// What had to come has come by now.
void FTextInputGate::OnBatchEnd(IHostMessageHandler& Handler)
{
	// A key that comes in a later batch than its text cannot be behind it.
	bBehindKey = false;
	bContinued = false;
	if (bClosing)
	{
		Release(Handler);
	}
	if (!bOpen)
	{
		SendText(Handler);
	}
}

// The field goes: everything that is held goes to it before.
void FTextInputGate::Close(IHostMessageHandler& Handler)
{
	if (bOpen)
	{
		bOpen = false;
		Handler.OnPreedit(FStringView(), 0);
	}
	Release(Handler);
	SendText(Handler);
	bBehindKey = false;
	bContinued = false;
}

void FTextInputGate::SendText(IHostMessageHandler& Handler)
{
	if (!Pending.IsEmpty())
	{
		const FString Text = MoveTemp(Pending);
		Pending.Reset();
		Handler.OnTextInput(Text);
	}
}

// Committed texts first, then the keys and what they typed, in order.
void FTextInputGate::Release(IHostMessageHandler& Handler)
{
	bClosing = false;
	// Handlers may come back here by way of a focus change.
	const std::vector<FHeld> Released = std::exchange(Held, std::vector<FHeld>());
	for (const FHeld& Entry : Released)
	{
		if (Entry.Kind == EHeld::Committed)
		{
			Pending += Entry.Text;
		}
	}
	SendText(Handler);
	for (const FHeld& Entry : Released)
	{
		switch (Entry.Kind)
		{
		case EHeld::KeyDown:
			SendText(Handler);
			if (Entry.Key.IsValid())
			{
				Handler.OnKeyDown(Entry.Key, Entry.Modifiers, Entry.bRepeat);
			}
			break;
		case EHeld::KeyUp:
			SendText(Handler);
			if (Entry.Key.IsValid())
			{
				Handler.OnKeyUp(Entry.Key, Entry.Modifiers);
			}
			break;
		case EHeld::Typed:
			Pending += Entry.Text;
			break;
		case EHeld::Committed:
			break;
		}
	}
	SendText(Handler);
}
