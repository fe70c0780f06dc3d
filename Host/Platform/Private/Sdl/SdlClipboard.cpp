#include "Sdl/SdlClipboard.h"

#include "Host/HostServices.h"
#include "PlatformState.h"
#include "Sdl/X11Support.h"

#include <SDL.h>

#include <string>

// The clipboard of the desktop as UTF-8 text. It belongs to a window; without one the host's own hooks are taken out,
// and texts stay within the program. So does a text that the X server could not take.

namespace
{
	struct FClipboardState
	{
		SDL_Window* Window = nullptr;
		/** A text that the desktop could not take, good as long as nobody else takes the clipboard. */
		FString Kept;
		unsigned long KeptOwner = 0;
	};

	FClipboardState& GetClipboardState()
	{
		static FClipboardState State;
		return State;
	}

	std::string MakeClipboardText(const FString& Text)
	{
		std::string Utf8;
		FTCHARToUTF8::Append(Utf8, Text);
		// The clipboard ends a text at its first null.
		for (size_t Null = Utf8.find('\0'); Null != std::string::npos; Null = Utf8.find('\0', Null))
		{
			Utf8.replace(Null, 1, "\xEF\xBF\xBD");
		}
		return Utf8;
	}
}

void FSdlClipboard::Install()
{
	FHostServices::SetClipboardHooks([](const FString& Text) { Copy(Text); }, [](FString& OutText) { Paste(OutText); });
}

void FSdlClipboard::SetWindow(SDL_Window* Window)
{
	FClipboardState& State = GetClipboardState();
	State.Window = Window;
	if (!Window)
	{
		FHostServices::SetClipboardHooks(nullptr, nullptr);
	}
}

void FSdlClipboard::Select(const FString& Text)
{
	const FClipboardState& State = GetClipboardState();
	const std::string Utf8 = MakeClipboardText(Text);
	// Nobody has asked for it, so nobody is told when it is too long or the desktop knows no such thing.
	if (State.Window && Utf8.size() <= X11Support::GetMaxClipboardBytes(State.Window))
	{
		SDL_SetPrimarySelectionText(Utf8.c_str());
	}
}

void FSdlClipboard::Copy(const FString& Text)
{
	FClipboardState& State = GetClipboardState();
	State.Kept.Empty();
	const std::string Utf8 = MakeClipboardText(Text);
	if (Utf8.size() > X11Support::GetMaxClipboardBytes(State.Window))
	{
		// The X server would end the connection over a request of this size.
		SDL_SetClipboardText("");
		State.Kept = Text;
		State.KeptOwner = X11Support::GetClipboardOwner(State.Window);
		PlatformState::ReportProblem(
			TEXT("The text is too long for the clipboard of the desktop. It can be pasted within this program only."));
		return;
	}
	if (SDL_SetClipboardText(Utf8.c_str()) != 0)
	{
		PlatformState::ReportProblem(TEXT("The text could not be copied to the clipboard. Please try again."));
	}
}

void FSdlClipboard::Paste(FString& OutText)
{
	FClipboardState& State = GetClipboardState();
	OutText.Reset();
	if (!State.Kept.IsEmpty() && X11Support::GetClipboardOwner(State.Window) == State.KeptOwner)
	{
		OutText = State.Kept;
		return;
	}
	State.Kept.Empty();
	char* const Text = SDL_GetClipboardText();
	if (Text && *Text)
	{
		// Made where it stays: it may be tens of megabytes.
		OutText = FString(Text);
	}
	else if (X11Support::HasClipboardOwner(State.Window))
	{
		// A text of megabytes that its owner hands over in parts arrives as nothing, and so does a picture.
		PlatformState::ReportProblem(
			TEXT("The clipboard could not be read as text. If it holds a very long text, please paste it in smaller parts."));
	}
	SDL_free(Text);
}
