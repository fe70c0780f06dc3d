#include "Host/HostClock.h"
#include "PlatformState.h"
#include "Sdl/SdlKeys.h"
#include "Sdl/SdlWindow.h"

#include <algorithm>
#include <cmath>
#include <cstring>

// SDL's events into calls of the message handler, in the order of their coming. What waits is taken in one batch: a drag
// may bring many moves between two frames, and only the last position counts.

namespace
{
	/** A flood of events must not keep the window from being painted. */
	constexpr int32 MaxEventsPerPump = 2000;
	/** SDL cuts committed text into pieces of 32 bytes with their null, on whole characters of at most 4 bytes. */
	constexpr size_t ShortestFullPiece = 28;

	FModifierKeysState GetModifiers()
	{
		return SdlKeys::FromModifiers(static_cast<uint16>(SDL_GetModState()));
	}
}

void FSdlWindow::PumpEvents(IHostMessageHandler& Handler, double MaxWaitSeconds)
{
	if (bTextInputClosed)
	{
		bTextInputClosed = false;
		Gate.Close(Handler);
	}
	bCloseSent = false;
	SDL_Event Event;
	const bool bMaySleep = MaxWaitSeconds > 0.0 && !FHostClock::IsSimulated();
	// Rather a little late than twice. Does not wait when something is there.
	const int Milliseconds = static_cast<int>(std::ceil(std::min(MaxWaitSeconds, 3600.0) * 1000.0));
	bool bAny = bMaySleep ? SDL_WaitEventTimeout(&Event, Milliseconds) == 1 : SDL_PollEvent(&Event) == 1;
	for (int32 Count = 0; bAny && Count < MaxEventsPerPump; ++Count)
	{
		Dispatch(Handler, Event);
		bAny = Count + 1 < MaxEventsPerPump && SDL_PollEvent(&Event) == 1;
	}
	SendMouseMove(Handler);
	Gate.OnBatchEnd(Handler);
}

void FSdlWindow::SendMouseMove(IHostMessageHandler& Handler)
{
	if (bMoveWaits)
	{
		bMoveWaits = false;
		Handler.OnMouseMove(MovePosition, GetModifiers());
	}
}

void FSdlWindow::Dispatch(IHostMessageHandler& Handler, const SDL_Event& Event)
{
	if (Event.type == WakeEvent)
	{
		bWakePending = false;
		return;
	}
	// Of many moves in a row only the last one counts.
	if (Event.type != SDL_MOUSEMOTION)
	{
		SendMouseMove(Handler);
	}
	switch (Event.type)
	{
	case SDL_KEYDOWN:
		Gate.OnKeyDown(Handler, SdlKeys::FromKeysym(Event.key.keysym), SdlKeys::FromModifiers(Event.key.keysym.mod), Event.key.repeat != 0);
		break;
	case SDL_KEYUP:
		Gate.OnKeyUp(Handler, SdlKeys::FromKeysym(Event.key.keysym), SdlKeys::FromModifiers(Event.key.keysym.mod));
		break;
	case SDL_TEXTINPUT:
		DispatchText(Handler, Event.text.text);
		break;
	case SDL_TEXTEDITING:
		DispatchPreedit(Handler, Event.edit.text, Event.edit.start);
		break;
	case SDL_TEXTEDITING_EXT:
		DispatchPreedit(Handler, Event.editExt.text, Event.editExt.start);
		SDL_free(Event.editExt.text);
		break;
	case SDL_DROPFILE:
	case SDL_DROPTEXT:
		DispatchDrop(Handler, Event.drop.file);
		SDL_free(Event.drop.file);
		break;
	case SDL_MOUSEMOTION:
		MovePosition = FVector2D(Event.motion.x, Event.motion.y);
		bMoveWaits = true;
		break;
	case SDL_MOUSEBUTTONDOWN:
	case SDL_MOUSEBUTTONUP:
		DispatchMouseButton(Handler, Event.button);
		break;
	case SDL_MOUSEWHEEL:
		DispatchWheel(Handler, Event.wheel);
		break;
	case SDL_WINDOWEVENT:
		DispatchWindowEvent(Handler, Event.window);
		break;
	case SDL_QUIT:
		// Closing the last window raises this as well, perhaps within the loop of a question about it. Otherwise it was a signal.
		if (!bQuitFollows)
		{
			PlatformState::NoteToldToEnd();
			Handler.OnCloseRequested();
		}
		bQuitFollows = false;
		break;
	default:
		break;
	}
}

void FSdlWindow::DispatchText(IHostMessageHandler& Handler, const char* Bytes)
{
	const size_t Length = std::strlen(Bytes);
	const FUTF8ToTCHAR Text(Bytes, static_cast<int32>(Length));
	Gate.OnText(Handler, FStringView(Text.Get(), Text.Length()), Length >= ShortestFullPiece);
}

// As if it were typed, so that it is undone and recorded as typing is. A blank keeps several files apart.
void FSdlWindow::DispatchDrop(IHostMessageHandler& Handler, const char* Bytes)
{
	if (!Bytes)
	{
		return;
	}
	if (!bTextInput)
	{
		PlatformState::ReportProblem(TEXT("What was dropped has nowhere to go: click into the prompt, then drop it again."));
		return;
	}
	const FUTF8ToTCHAR Text(Bytes);
	Gate.OnText(Handler, FString(FStringView(Text.Get(), Text.Length())) + TEXT(" "), /*bMore*/ false);
}

// Precise deltas, so that touchpads scroll smoothly.
void FSdlWindow::DispatchWheel(IHostMessageHandler& Handler, const SDL_MouseWheelEvent& Event)
{
	const float Sign = Event.direction == SDL_MOUSEWHEEL_FLIPPED ? -1.0f : 1.0f;
	Handler.OnMouseWheel(FVector2D(Event.preciseX * Sign, Event.preciseY * Sign), FVector2D(Event.mouseX, Event.mouseY), GetModifiers());
}

void FSdlWindow::DispatchPreedit(IHostMessageHandler& Handler, const char* Text, int32 CursorCharacter)
{
	const FUTF8ToTCHAR Converted(Text ? Text : "");
	const FStringView View(Converted.Get(), Converted.Length());
	// The cursor counts characters; ours counts units.
	int32 Cursor = 0;
	for (int32 Character = 0; Character < CursorCharacter && Cursor < View.Len(); ++Character)
	{
		const bool bPair = (View[Cursor] & 0xFC00) == 0xD800 && Cursor + 1 < View.Len();
		Cursor += bPair ? 2 : 1;
	}
	Gate.OnPreedit(Handler, View, Cursor);
}

void FSdlWindow::DispatchMouseButton(IHostMessageHandler& Handler, const SDL_MouseButtonEvent& Event)
{
	const bool bDown = Event.type == SDL_MOUSEBUTTONDOWN;
	const uint32 Bit = 1u << std::min<uint32>(Event.button, 31);
	const uint32 Before = ButtonsDown;
	ButtonsDown = bDown ? ButtonsDown | Bit : ButtonsDown & ~Bit;
	// A drag goes on outside the window.
	if ((Before == 0) != (ButtonsDown == 0))
	{
		SDL_CaptureMouse(ButtonsDown != 0 ? SDL_TRUE : SDL_FALSE);
	}
	const FKey Button = SdlKeys::FromMouseButton(Event.button);
	if (!Button.IsValid())
	{
		return;
	}
	const FVector2D Position(Event.x, Event.y);
	if (bDown)
	{
		Handler.OnMouseDown(Button, Position, GetModifiers());
	}
	else
	{
		Handler.OnMouseUp(Button, Position, GetModifiers());
	}
}

void FSdlWindow::DispatchWindowEvent(IHostMessageHandler& Handler, const SDL_WindowEvent& Event)
{
	switch (Event.event)
	{
	case SDL_WINDOWEVENT_SIZE_CHANGED:
		bPictureLost = true;
		Handler.OnWindowResized();
		break;
	case SDL_WINDOWEVENT_SHOWN:
	case SDL_WINDOWEVENT_EXPOSED:
	case SDL_WINDOWEVENT_RESTORED:
	case SDL_WINDOWEVENT_MAXIMIZED:
		Handler.OnWindowExposed();
		break;
	case SDL_WINDOWEVENT_FOCUS_GAINED:
		Handler.OnWindowActivated(true);
		break;
	case SDL_WINDOWEVENT_FOCUS_LOST:
		Gate.Close(Handler);
		Handler.OnWindowActivated(false);
		break;
	case SDL_WINDOWEVENT_LEAVE:
		Handler.OnMouseLeave();
		break;
	case SDL_WINDOWEVENT_CLOSE:
		if (!bCloseSent)
		{
			bCloseSent = true;
			bQuitFollows = true;
			Handler.OnCloseRequested();
		}
		break;
	default:
		break;
	}
}
