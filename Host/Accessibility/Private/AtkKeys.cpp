#include "AtkKeys.h"

#include "Containers/Array.h"
#include "HAL/PlatformTime.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <algorithm>
#include <vector>

// Readers know keys by what X calls them, also by the code of the key on this keyboard, which only the X server can tell. Without
// one, under another display, they know them by their names alone.

namespace
{
	struct FKeyRow
	{
		const FKey* Key;
		KeySym Symbol;
	};

	const FKeyRow KeyRows[] = {
		{ &EKeys::BackSpace, XK_BackSpace },
		{ &EKeys::Tab, XK_Tab },
		{ &EKeys::Enter, XK_Return },
		{ &EKeys::Pause, XK_Pause },
		{ &EKeys::CapsLock, XK_Caps_Lock },
		{ &EKeys::Escape, XK_Escape },
		{ &EKeys::SpaceBar, XK_space },
		{ &EKeys::PageUp, XK_Page_Up },
		{ &EKeys::PageDown, XK_Page_Down },
		{ &EKeys::End, XK_End },
		{ &EKeys::Home, XK_Home },
		{ &EKeys::Left, XK_Left },
		{ &EKeys::Up, XK_Up },
		{ &EKeys::Right, XK_Right },
		{ &EKeys::Down, XK_Down },
		{ &EKeys::Insert, XK_Insert },
		{ &EKeys::Delete, XK_Delete },
		{ &EKeys::Zero, XK_0 },
		{ &EKeys::One, XK_1 },
		{ &EKeys::Two, XK_2 },
		{ &EKeys::Three, XK_3 },
		{ &EKeys::Four, XK_4 },
		{ &EKeys::Five, XK_5 },
		{ &EKeys::Six, XK_6 },
		{ &EKeys::Seven, XK_7 },
		{ &EKeys::Eight, XK_8 },
		{ &EKeys::Nine, XK_9 },
		{ &EKeys::NumPadZero, XK_KP_0 },
		{ &EKeys::NumPadOne, XK_KP_1 },
		{ &EKeys::NumPadTwo, XK_KP_2 },
		{ &EKeys::NumPadThree, XK_KP_3 },
		{ &EKeys::NumPadFour, XK_KP_4 },
		{ &EKeys::NumPadFive, XK_KP_5 },
		{ &EKeys::NumPadSix, XK_KP_6 },
		{ &EKeys::NumPadSeven, XK_KP_7 },
		{ &EKeys::NumPadEight, XK_KP_8 },
		{ &EKeys::NumPadNine, XK_KP_9 },
		{ &EKeys::Multiply, XK_KP_Multiply },
		{ &EKeys::Add, XK_KP_Add },
		{ &EKeys::Subtract, XK_KP_Subtract },
		{ &EKeys::Divide, XK_KP_Divide },
		{ &EKeys::Decimal, XK_KP_Decimal },
		{ &EKeys::F1, XK_F1 },
		{ &EKeys::F2, XK_F2 },
		{ &EKeys::F3, XK_F3 },
		{ &EKeys::F4, XK_F4 },
		{ &EKeys::F5, XK_F5 },
		{ &EKeys::F6, XK_F6 },
		{ &EKeys::F7, XK_F7 },
		{ &EKeys::F8, XK_F8 },
		{ &EKeys::F9, XK_F9 },
		{ &EKeys::F10, XK_F10 },
		{ &EKeys::F11, XK_F11 },
		{ &EKeys::F12, XK_F12 },
		{ &EKeys::LeftShift, XK_Shift_L },
		{ &EKeys::RightShift, XK_Shift_R },
		{ &EKeys::LeftControl, XK_Control_L },
		{ &EKeys::RightControl, XK_Control_R },
		{ &EKeys::LeftAlt, XK_Alt_L },
		{ &EKeys::RightAlt, XK_Alt_R },
		{ &EKeys::LeftCommand, XK_Super_L },
		{ &EKeys::RightCommand, XK_Super_R },
		{ &EKeys::Semicolon, XK_semicolon },
		{ &EKeys::Equals, XK_equal },
		{ &EKeys::Comma, XK_comma },
		{ &EKeys::Hyphen, XK_minus },
		{ &EKeys::Period, XK_period },
		{ &EKeys::Slash, XK_slash },
		{ &EKeys::Tilde, XK_grave },
		{ &EKeys::LeftBracket, XK_bracketleft },
		{ &EKeys::Backslash, XK_backslash },
		{ &EKeys::RightBracket, XK_bracketright },
		{ &EKeys::Apostrophe, XK_apostrophe },
	};

	/** Zero for a key that has no name here. */
	KeySym FindSymbol(const FKey& Key, bool bShift)
	{
		for (const FKeyRow& Row : KeyRows)
		{
			if (*Row.Key == Key)
			{
				return Row.Symbol;
			}
		}
		const FString Name = Key.ToString();
		const bool bLetter = Name.Len() == 1 && Name[0] >= TEXT('A') && Name[0] <= TEXT('Z');
		return bLetter ? static_cast<KeySym>(Name[0] - TEXT('A')) + (bShift ? XK_A : XK_a) : NoSymbol;
	}

	/** Of this keyboard; zero without an X server. The connection is our own and is kept: one question a key. */
	guint16 FindCode(KeySym Symbol)
	{
		static Display* const Connection = XOpenDisplay(nullptr);
		return Connection ? static_cast<guint16>(XKeysymToKeycode(Connection, Symbol)) : 0;
	}

	struct FKeyListener
	{
		guint Id;
		AtkKeySnoopFunc Listener;
		gpointer Data;
	};

	std::vector<FKeyListener>& GetListeners()
	{
		static std::vector<FKeyListener> Listeners;
		return Listeners;
	}

	guint AddListener(AtkKeySnoopFunc Listener, gpointer Data)
	{
		static guint LastId = 0;
		GetListeners().push_back({ ++LastId, Listener, Data });
		return LastId;
	}

	void RemoveListener(guint Id)
	{
		std::erase_if(GetListeners(), [Id](const FKeyListener& Entry) { return Entry.Id == Id; });
	}
}

void AtkKeys::Install(AtkUtilClass& Util)
{
	Util.add_key_event_listener = &AddListener;
	Util.remove_key_event_listener = &RemoveListener;
}

bool AtkKeys::Tell(const FKey& Key, const FModifierKeysState& Modifiers, bool bDown)
{
	const KeySym Symbol = GetListeners().empty() ? NoSymbol : FindSymbol(Key, Modifiers.IsShiftDown());
	if (Symbol == NoSymbol)
	{
		return false;
	}
	AtkKeyEventStruct Event{};
	Event.type = bDown ? ATK_KEY_EVENT_PRESS : ATK_KEY_EVENT_RELEASE;
	Event.state = (Modifiers.IsShiftDown() ? ShiftMask : 0u) | (Modifiers.IsControlDown() ? ControlMask : 0u) |
		(Modifiers.IsAltDown() ? Mod1Mask : 0u);
	Event.keyval = static_cast<guint>(Symbol);
	// Not written to by listeners; the structure is older than const.
	Event.string = XKeysymToString(Symbol);
	Event.length = Event.string ? static_cast<gint>(std::char_traits<char>::length(Event.string)) : 0;
	Event.keycode = FindCode(Symbol);
	Event.timestamp = static_cast<guint32>(static_cast<uint64>(FPlatformTime::Seconds() * 1000.0));
	bool bTaken = false;
	// A copy: a listener may go away while it is asked.
	const std::vector<FKeyListener> All = GetListeners();
	for (const FKeyListener& Entry : All)
	{
		bTaken = Entry.Listener(&Event, Entry.Data) != 0 || bTaken;
	}
	return bTaken;
}
