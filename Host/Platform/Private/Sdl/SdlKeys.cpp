#include "Sdl/SdlKeys.h"

// Keys by what they type, as users know shortcuts: Ctrl+Z is where their keyboard has Z. A keyboard of another script
// types no Latin letters, so there the place of the key counts.

namespace
{
	struct FKeyRow
	{
		SDL_Keycode Code;
		const FKey* Key;
	};

	const FKeyRow KeyRows[] = {
		{ SDLK_BACKSPACE, &EKeys::BackSpace },
		{ SDLK_TAB, &EKeys::Tab },
		{ SDLK_RETURN, &EKeys::Enter },
		{ SDLK_RETURN2, &EKeys::Enter },
		{ SDLK_KP_ENTER, &EKeys::Enter },
		{ SDLK_PAUSE, &EKeys::Pause },
		{ SDLK_CAPSLOCK, &EKeys::CapsLock },
		{ SDLK_ESCAPE, &EKeys::Escape },
		{ SDLK_SPACE, &EKeys::SpaceBar },
		{ SDLK_PAGEUP, &EKeys::PageUp },
		{ SDLK_PAGEDOWN, &EKeys::PageDown },
		{ SDLK_END, &EKeys::End },
		{ SDLK_HOME, &EKeys::Home },
		{ SDLK_LEFT, &EKeys::Left },
		{ SDLK_UP, &EKeys::Up },
		{ SDLK_RIGHT, &EKeys::Right },
		{ SDLK_DOWN, &EKeys::Down },
		{ SDLK_INSERT, &EKeys::Insert },
		{ SDLK_DELETE, &EKeys::Delete },
		{ SDLK_0, &EKeys::Zero },
		{ SDLK_1, &EKeys::One },
		{ SDLK_2, &EKeys::Two },
		{ SDLK_3, &EKeys::Three },
		{ SDLK_4, &EKeys::Four },
		{ SDLK_5, &EKeys::Five },
		{ SDLK_6, &EKeys::Six },
		{ SDLK_7, &EKeys::Seven },
		{ SDLK_8, &EKeys::Eight },
		{ SDLK_9, &EKeys::Nine },
		{ SDLK_a, &EKeys::A },
		{ SDLK_b, &EKeys::B },
		{ SDLK_c, &EKeys::C },
		{ SDLK_d, &EKeys::D },
		{ SDLK_e, &EKeys::E },
		{ SDLK_f, &EKeys::F },
		{ SDLK_g, &EKeys::G },
		{ SDLK_h, &EKeys::H },
		{ SDLK_i, &EKeys::I },
		{ SDLK_j, &EKeys::J },
		{ SDLK_k, &EKeys::K },
		{ SDLK_l, &EKeys::L },
		{ SDLK_m, &EKeys::M },
		{ SDLK_n, &EKeys::N },
		{ SDLK_o, &EKeys::O },
		{ SDLK_p, &EKeys::P },
		{ SDLK_q, &EKeys::Q },
		{ SDLK_r, &EKeys::R },
		{ SDLK_s, &EKeys::S },
		{ SDLK_t, &EKeys::T },
		{ SDLK_u, &EKeys::U },
		{ SDLK_v, &EKeys::V },
		{ SDLK_w, &EKeys::W },
		{ SDLK_x, &EKeys::X },
		{ SDLK_y, &EKeys::Y },
		{ SDLK_z, &EKeys::Z },
		{ SDLK_KP_MULTIPLY, &EKeys::Multiply },
		{ SDLK_KP_PLUS, &EKeys::Add },
		{ SDLK_KP_MINUS, &EKeys::Subtract },
		{ SDLK_KP_DIVIDE, &EKeys::Divide },
		{ SDLK_F1, &EKeys::F1 },
		{ SDLK_F2, &EKeys::F2 },
		{ SDLK_F3, &EKeys::F3 },
		{ SDLK_F4, &EKeys::F4 },
		{ SDLK_F5, &EKeys::F5 },
		{ SDLK_F6, &EKeys::F6 },
		{ SDLK_F7, &EKeys::F7 },
		{ SDLK_F8, &EKeys::F8 },
		{ SDLK_F9, &EKeys::F9 },
		{ SDLK_F10, &EKeys::F10 },
		{ SDLK_F11, &EKeys::F11 },
		{ SDLK_F12, &EKeys::F12 },
		{ SDLK_LSHIFT, &EKeys::LeftShift },
		{ SDLK_RSHIFT, &EKeys::RightShift },
		{ SDLK_LCTRL, &EKeys::LeftControl },
		{ SDLK_RCTRL, &EKeys::RightControl },
		{ SDLK_LALT, &EKeys::LeftAlt },
		{ SDLK_RALT, &EKeys::RightAlt },
		{ SDLK_LGUI, &EKeys::LeftCommand },
		{ SDLK_RGUI, &EKeys::RightCommand },
		{ SDLK_SEMICOLON, &EKeys::Semicolon },
		{ SDLK_EQUALS, &EKeys::Equals },
		{ SDLK_COMMA, &EKeys::Comma },
		{ SDLK_MINUS, &EKeys::Hyphen },
		{ SDLK_PERIOD, &EKeys::Period },
		{ SDLK_SLASH, &EKeys::Slash },
		{ SDLK_BACKQUOTE, &EKeys::Tilde },
		{ SDLK_LEFTBRACKET, &EKeys::LeftBracket },
		{ SDLK_BACKSLASH, &EKeys::Backslash },
		{ SDLK_RIGHTBRACKET, &EKeys::RightBracket },
		{ SDLK_QUOTE, &EKeys::Apostrophe },
	};

	/** Keys of the number pad, with and without its lock. */
	struct FPadRow
	{
		SDL_Keycode Code;
		const FKey* Locked;
		const FKey* Unlocked;
	};
	const FPadRow PadRows[] = {
		{ SDLK_KP_0, &EKeys::NumPadZero, &EKeys::Insert },
		{ SDLK_KP_1, &EKeys::NumPadOne, &EKeys::End },
		{ SDLK_KP_2, &EKeys::NumPadTwo, &EKeys::Down },
		{ SDLK_KP_3, &EKeys::NumPadThree, &EKeys::PageDown },
		{ SDLK_KP_4, &EKeys::NumPadFour, &EKeys::Left },
		{ SDLK_KP_5, &EKeys::NumPadFive, &EKeys::NumPadFive },
		{ SDLK_KP_6, &EKeys::NumPadSix, &EKeys::Right },
		{ SDLK_KP_7, &EKeys::NumPadSeven, &EKeys::Home },
		{ SDLK_KP_8, &EKeys::NumPadEight, &EKeys::Up },
		{ SDLK_KP_9, &EKeys::NumPadNine, &EKeys::PageUp },
		{ SDLK_KP_PERIOD, &EKeys::Decimal, &EKeys::Delete },
	};

	const FKey* FindKey(SDL_Keycode Code)
	{
		for (const FKeyRow& Row : KeyRows)
		{
			if (Row.Code == Code)
			{
				return Row.Key;
			}
		}
		return nullptr;
	}

	/** What a key at this place types on a keyboard with Latin letters. */
	SDL_Keycode GetLatinCode(SDL_Scancode Place)
	{
		if (Place >= SDL_SCANCODE_A && Place <= SDL_SCANCODE_Z)
		{
			return SDLK_a + (Place - SDL_SCANCODE_A);
		}
		if (Place >= SDL_SCANCODE_1 && Place <= SDL_SCANCODE_9)
		{
			return SDLK_1 + (Place - SDL_SCANCODE_1);
		}
		return Place == SDL_SCANCODE_0 ? SDLK_0 : SDLK_UNKNOWN;
	}
}

namespace SdlKeys
{
	FKey FromKeysym(const SDL_Keysym& Keysym)
	{
		for (const FPadRow& Row : PadRows)
		{
			if (Row.Code == Keysym.sym)
			{
				return (Keysym.mod & KMOD_NUM) ? *Row.Locked : *Row.Unlocked;
			}
		}
		const FKey* Key = FindKey(Keysym.sym);
		if (!Key)
		{
			Key = FindKey(GetLatinCode(Keysym.scancode));
		}
		return Key ? *Key : EKeys::Invalid;
	}

	FKey FromMouseButton(uint8 Button)
	{
		switch (Button)
		{
		case SDL_BUTTON_LEFT:
			return EKeys::LeftMouseButton;
		case SDL_BUTTON_MIDDLE:
			return EKeys::MiddleMouseButton;
		case SDL_BUTTON_RIGHT:
			return EKeys::RightMouseButton;
		case SDL_BUTTON_X1:
			return EKeys::ThumbMouseButton;
		case SDL_BUTTON_X2:
			return EKeys::ThumbMouseButton2;
		default:
			return EKeys::Invalid;
		}
	}

	FModifierKeysState FromModifiers(uint16 Modifiers)
	{
		const auto Has = [Modifiers](int Flag) { return (Modifiers & Flag) != 0; };
		// The level shift of X11 is what other systems call the right Alt key.
		return FModifierKeysState(Has(KMOD_LSHIFT), Has(KMOD_RSHIFT), Has(KMOD_LCTRL), Has(KMOD_RCTRL), Has(KMOD_LALT),
			Has(KMOD_RALT | KMOD_MODE), Has(KMOD_LGUI), Has(KMOD_RGUI));
	}
}
