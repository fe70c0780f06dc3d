#pragma once

#include "CoreMinimal.h"
#include "Input/Events.h"

/** What one line of a script does. */
enum class EScriptVerb : uint8
{
	Type,
	Key,
	Click,
	RightClick,
	Move,
	Drag,
	Scroll,
	WaitIdle,
	WaitState,
	Tick,
	Resize,
	Answer,
	AnswerFile,
	Update,
	Dump,
	Screenshot,
	CloseTab,
	OpenTab,
	Quit,
};

/** One line of a script, read and checked. */
struct FScriptStep
{
	EScriptVerb Verb = EScriptVerb::Quit;
	/** Counted from 1. */
	int32 Line = 0;
	/** What to type, or the name of a widget, a state, a button or a file. */
	FString Text;
	FKey Key;
	FModifierKeysState Modifiers;
	/** A move or a size in pixels, notches, a count of frames, a percentage (negative for none), or (X) the seconds that a wait may take.
	 */
	double X = 0.0;
	double Y = 0.0;
};

/** The language of scripts: one step a line. */
class FScriptFile
{
public:
	/**
	 * Reads a script. Pure.
	 * @param OutErrorLine  Counted from 1, when there is an error.
	 * @return Empty when all is well; else one sentence that says what is wrong with that line.
	 */
	static FString Parse(const TArray<FString>& Lines, TArray<FScriptStep>& OutSteps, int32& OutErrorLine);
	/** Reads "CTRL+SHIFT+Left" or "esc"; false when it names no key. Pure. */
	static bool ParseChord(const FString& Chord, FKey& OutKey, FModifierKeysState& OutModifiers);
	/** One line a step, for --help. */
	static FString GetHelp();
};
