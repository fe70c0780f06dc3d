#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Framework/Commands/InputChord.h"

/**
 * The keys of the frame's commands: what each has by default, and what the user has given it instead. The latter stand in a file of
 * the user's, one command a line, such as "Find=Ctrl+F" or "Find=" for none. Game thread.
 */
class FKeyBindings
{
public:
	/** Reads the user's keys. Lines that name no key are left out. Without a call nothing is kept. An empty path forgets all. */
	static void Load(const FString& Path);

	/** The key of a command; remembers its default. For the registration of commands. */
	static FInputChord Get(const TCHAR* Command, const FInputChord& Default);
	static FInputChord GetDefault(FName Command);

	/**
	 * Gives a command another key, or none by an empty chord, and keeps it.
	 *
	 * @return Empty, or a sentence: why nothing was changed, or that it could not be kept.
	 */
	[[nodiscard]] static FString Change(FName Command, const FInputChord& Chord);

	/** Called when a key was changed; the commands are to be registered anew. */
	static void SetOnChanged(FSimpleDelegate Handler);

	/** While a page waits for the key that is to be taken, no command runs by it. */
	static void SetCapturing(bool bCaptures);
	static bool IsCapturing();

	/** For the file: "Ctrl+Shift+F3", "Ctrl+Hyphen"; empty for none. Keys have the engine's names, whatever the keyboard. */
	static FString Print(const FInputChord& Chord);
	/** False when it is no such text; empty is no key. */
	static bool Parse(const FString& Text, FInputChord& OutChord);

	/** Empty, or a sentence that says why no command can have this key. */
	static FString CheckKey(const FInputChord& Chord);
};
