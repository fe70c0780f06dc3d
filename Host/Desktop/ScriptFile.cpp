#include "ScriptFile.h"

#include "Host/UpdateGateControl.h"
#include "Misc/CString.h"
#include "StateWords.h"

namespace
{
	// Bounds beyond which a number is a slip of the pen: a day, the largest window, a wheel for a long list, hours of frames.
	constexpr double MaxSeconds = 86400.0;
	constexpr double MaxPixels = 16384.0;
	constexpr double MaxNotches = 10000.0;
	constexpr double MaxFrames = 1000000.0;

	/** The shape of what stands behind a verb. */
	enum class EScriptArguments : uint8
	{
		None,
		/** The rest of the line with its escapes. */
		Escaped,
		Chord,
		/** The rest of the line as it is. */
		Name,
		NameAndMove,
		NameAndNotches,
		Seconds,
		StateAndSeconds,
		GateState,
		Frames,
		Size,
	};

	struct FScriptVerbRow
	{
		const TCHAR* Words;
		EScriptVerb Verb;
		EScriptArguments Arguments;
		const TCHAR* Form;
		const TCHAR* Help;
	};

	// Longer words come before their beginnings ("answer file" before "answer"): the first row that fits is taken.
	constexpr FScriptVerbRow ScriptVerbs[] = {
		{ TEXT("type"), EScriptVerb::Type, EScriptArguments::Escaped, TEXT("type TEXT"),
			TEXT("types the rest of the line; \\n is Enter, \\t is Tab, \\\\ a backslash") },
		{ TEXT("key"), EScriptVerb::Key, EScriptArguments::Chord, TEXT("key CHORD"),
			TEXT("presses a key such as CTRL+ENTER, SHIFT+TAB, ESC, F5") },
		{ TEXT("click"), EScriptVerb::Click, EScriptArguments::Name, TEXT("click NAME"), TEXT("clicks in the middle of a widget") },
		{ TEXT("right-click"), EScriptVerb::RightClick, EScriptArguments::Name, TEXT("right-click NAME"),
			TEXT("the same with the right button") },
		{ TEXT("move"), EScriptVerb::Move, EScriptArguments::Name, TEXT("move NAME"), TEXT("moves the pointer there") },
		{ TEXT("drag"), EScriptVerb::Drag, EScriptArguments::NameAndMove, TEXT("drag NAME X Y"),
			TEXT("presses there, moves by X right and Y down (pixels), lets go") },
		{ TEXT("scroll"), EScriptVerb::Scroll, EScriptArguments::NameAndNotches, TEXT("scroll NAME N"),
			TEXT("turns the wheel there by N notches, up when positive") },
		{ TEXT("wait idle"), EScriptVerb::WaitIdle, EScriptArguments::Seconds, TEXT("wait idle SECONDS"),
			TEXT("until the agent rests and the picture stands still") },
		{ TEXT("wait state"), EScriptVerb::WaitState, EScriptArguments::StateAndSeconds, TEXT("wait state NAME SECONDS"),
			TEXT("until the conversation is in that state") },
		{ TEXT("tick"), EScriptVerb::Tick, EScriptArguments::Frames, TEXT("tick N"), TEXT("lets N sixtieths of a second pass") },
		{ TEXT("resize"), EScriptVerb::Resize, EScriptArguments::Size, TEXT("resize W H"),
			TEXT("changes the size of the window (pixels)") },
		{ TEXT("answer file"), EScriptVerb::AnswerFile, EScriptArguments::Name, TEXT("answer file PATH"),
			TEXT("saves there in the open save dialog, replacing a file") },
		{ TEXT("answer"), EScriptVerb::Answer, EScriptArguments::Name, TEXT("answer BUTTON"),
			TEXT("presses that button of the open dialog") },
		{ TEXT("update"), EScriptVerb::Update, EScriptArguments::GateState, TEXT("update STATE [N]"),
			TEXT("takes the update gate to a state, Downloading at N percent") },
		{ TEXT("dump"), EScriptVerb::Dump, EScriptArguments::Name, TEXT("dump FILE"), TEXT("as --dump, at this moment") },
		{ TEXT("screenshot"), EScriptVerb::Screenshot, EScriptArguments::Name, TEXT("screenshot FILE"),
			TEXT("as --screenshot, at this moment") },
		{ TEXT("close-tab"), EScriptVerb::CloseTab, EScriptArguments::None, TEXT("close-tab"), TEXT("closes the tab") },
		{ TEXT("open-tab"), EScriptVerb::OpenTab, EScriptArguments::None, TEXT("open-tab"),
			TEXT("opens the tab, or brings it to the front") },
		{ TEXT("quit"), EScriptVerb::Quit, EScriptArguments::None, TEXT("quit"),
			TEXT("ends the program; the end of the script does so too") },
	};

	struct FKeyAlias
	{
		const TCHAR* Alias;
		const TCHAR* Name;
	};

	// As keyboards are lettered, beside the engine's names for the keys.
	constexpr FKeyAlias KeyAliases[] = {
		{ TEXT("ESC"), TEXT("Escape") },
		{ TEXT("RETURN"), TEXT("Enter") },
		{ TEXT("SPACE"), TEXT("SpaceBar") },
		{ TEXT("DEL"), TEXT("Delete") },
		{ TEXT("INS"), TEXT("Insert") },
		{ TEXT("PGUP"), TEXT("PageUp") },
		{ TEXT("PGDN"), TEXT("PageDown") },
		{ TEXT("0"), TEXT("Zero") },
		{ TEXT("1"), TEXT("One") },
		{ TEXT("2"), TEXT("Two") },
		{ TEXT("3"), TEXT("Three") },
		{ TEXT("4"), TEXT("Four") },
		{ TEXT("5"), TEXT("Five") },
		{ TEXT("6"), TEXT("Six") },
		{ TEXT("7"), TEXT("Seven") },
		{ TEXT("8"), TEXT("Eight") },
		{ TEXT("9"), TEXT("Nine") },
		{ TEXT("/"), TEXT("Slash") },
		{ TEXT("."), TEXT("Period") },
		{ TEXT(","), TEXT("Comma") },
		{ TEXT("-"), TEXT("Hyphen") },
	};

	/** Takes the first word off a line, and the blanks behind it. */
	FString TakeFirstWord(FString& Rest)
	{
		int32 End = 0;
		while (End < Rest.Len() && !FChar::IsWhitespace(Rest[End]))
		{
			++End;
		}
		const FString Word = Rest.Left(End);
		Rest = Rest.RightChop(End).TrimStart();
		return Word;
	}

	/** Takes the last word off a line, and the blanks before it. */
	FString TakeLastWord(FString& Rest)
	{
		Rest.TrimEndInline();
		int32 Start = Rest.Len();
		while (Start > 0 && !FChar::IsWhitespace(Rest[Start - 1]))
		{
			--Start;
		}
		const FString Word = Rest.RightChop(Start);
		Rest = Rest.Left(Start).TrimEnd();
		return Word;
	}

	bool ParseNumber(const FString& Text, double Min, double Max, bool bWhole, double& OutValue)
	{
		if (!Text.IsNumeric())
		{
			return false;
		}
		// Digits were asked for before, so no text counts as zero.
		OutValue = FCString::Atod(*Text);
		return OutValue >= Min && OutValue <= Max && (!bWhole || static_cast<double>(static_cast<int64>(OutValue)) == OutValue);
	}

	bool Unescape(const FString& Text, FString& Out)
	{
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			if (Text[Index] != TEXT('\\'))
			{
				Out.AppendChar(Text[Index]);
				continue;
			}
			// An escape that means nothing is a mistake worth a line number, not a backslash.
			const TCHAR Letter = ++Index < Text.Len() ? Text[Index] : TEXT('\0');
			if (Letter != TEXT('n') && Letter != TEXT('t') && Letter != TEXT('\\'))
			{
				return false;
			}
			Out.AppendChar(Letter == TEXT('n') ? TEXT('\n') : (Letter == TEXT('t') ? TEXT('\t') : TEXT('\\')));
		}
		return true;
	}

	/** Finds the row whose words a line begins with and takes them off; what is left begins behind one blank. */
	const FScriptVerbRow* TakeVerb(const FString& Line, FString& OutRest)
	{
		for (const FScriptVerbRow& Row : ScriptVerbs)
		{
			const FString Words(Row.Words);
			if (Line.Equals(Words))
			{
				OutRest.Reset();
				return &Row;
			}
			if (Line.StartsWith(Words, ESearchCase::CaseSensitive) && FChar::IsWhitespace(Line[Words.Len()]))
			{
				OutRest = Line.RightChop(Words.Len() + 1);
				return &Row;
			}
		}
		return nullptr;
	}

	bool ReadArguments(EScriptArguments Arguments, const FString& Raw, FScriptStep& Step)
	{
		FString Rest = Raw.TrimStartAndEnd();
		switch (Arguments)
		{
		case EScriptArguments::None:
			return Rest.IsEmpty();
		case EScriptArguments::Escaped:
			return !Raw.IsEmpty() && Unescape(Raw, Step.Text);
		case EScriptArguments::Chord:
			return FScriptFile::ParseChord(Rest, Step.Key, Step.Modifiers);
		case EScriptArguments::Name:
			Step.Text = Rest;
			return !Rest.IsEmpty();
		case EScriptArguments::NameAndMove:
		{
			// From the end: a name may hold blanks and numbers itself.
			const FString Y = TakeLastWord(Rest);
			const FString X = TakeLastWord(Rest);
			Step.Text = Rest;
			return !Rest.IsEmpty() && ParseNumber(X, -MaxPixels, MaxPixels, false, Step.X) &&
				ParseNumber(Y, -MaxPixels, MaxPixels, false, Step.Y);
		}
		case EScriptArguments::NameAndNotches:
		{
			const FString Notches = TakeLastWord(Rest);
			Step.Text = Rest;
			return !Rest.IsEmpty() && ParseNumber(Notches, -MaxNotches, MaxNotches, false, Step.X);
		}
		case EScriptArguments::Seconds:
			return ParseNumber(Rest, 0.0, MaxSeconds, false, Step.X);
		case EScriptArguments::StateAndSeconds:
			Step.Text = TakeFirstWord(Rest);
			return FStateWords::IsWord(Step.Text) && ParseNumber(Rest, 0.0, MaxSeconds, false, Step.X);
		case EScriptArguments::GateState:
		{
			Step.Text = TakeFirstWord(Rest);
			// No percentage.
			Step.X = -1.0;
			TArray<FString> States;
			Velmora::FUpdateGateControl::GetStateWords().ParseIntoArray(States, TEXT(", "), true);
			const bool bKnown = States.ContainsByPredicate([&Step](const FString& State) { return State.Equals(Step.Text); });
			return bKnown && (Rest.IsEmpty() || (Step.Text.Equals(TEXT("Downloading")) && ParseNumber(Rest, 0.0, 100.0, true, Step.X)));
		}
		case EScriptArguments::Frames:
			return ParseNumber(Rest, 0.0, MaxFrames, true, Step.X);
		case EScriptArguments::Size:
		{
			const FString Width = TakeFirstWord(Rest);
			return ParseNumber(Width, 1.0, MaxPixels, true, Step.X) && ParseNumber(Rest, 1.0, MaxPixels, true, Step.Y);
		}
		}
		return false;
	}
}

bool FScriptFile::ParseChord(const FString& Chord, FKey& OutKey, FModifierKeysState& OutModifiers)
{
	TArray<FString> Parts;
	Chord.ParseIntoArray(Parts, TEXT("+"), false);
	bool bShift = false;
	bool bControl = false;
	bool bAlt = false;
	// FString's == ignores letter case, as key names do.
	for (int32 Index = 0; Index + 1 < Parts.Num(); ++Index)
	{
		const FString& Part = Parts[Index];
		const bool bIsControl = Part == TEXT("CTRL") || Part == TEXT("CONTROL");
		bControl = bControl || bIsControl;
		bShift = bShift || Part == TEXT("SHIFT");
		bAlt = bAlt || Part == TEXT("ALT");
		if (!bIsControl && Part != TEXT("SHIFT") && Part != TEXT("ALT"))
		{
			return false;
		}
	}
	// What is left is the key itself, by its name or as it is lettered.
	FString Name = Parts.IsEmpty() ? FString() : Parts.Last();
	for (const FKeyAlias& Row : KeyAliases)
	{
		if (Name == Row.Alias)
		{
			Name = Row.Name;
			break;
		}
	}
	OutKey = Name.IsEmpty() ? FKey() : EKeys::Find(FName(*Name));
	OutModifiers = FModifierKeysState(bShift, false, bControl, false, bAlt, false);
	return OutKey.IsValid();
}

FString FScriptFile::Parse(const TArray<FString>& Lines, TArray<FScriptStep>& OutSteps, int32& OutErrorLine)
{
	for (int32 Index = 0; Index < Lines.Num(); ++Index)
	{
		const FString Line = Lines[Index].TrimStart();
		// A name that begins with # never begins a line, so # there is a comment.
		if (Line.TrimEnd().IsEmpty() || Line.StartsWith(TEXT("#")))
		{
			continue;
		}
		OutErrorLine = Index + 1;
		FString Rest;
		const FScriptVerbRow* const Row = TakeVerb(Line, Rest);
		if (!Row)
		{
			FString Unknown = Line;
			return FString::Printf(TEXT("There is no step \"%s\". Try --help."), *TakeFirstWord(Unknown));
		}
		FScriptStep Step;
		Step.Verb = Row->Verb;
		Step.Line = Index + 1;
		if (!ReadArguments(Row->Arguments, Rest, Step))
		{
			FString States;
			if (Row->Verb == EScriptVerb::WaitState)
			{
				States = TEXT("; NAME is one of ") + FStateWords::GetAll();
			}
			else if (Row->Verb == EScriptVerb::Update)
			{
				States = TEXT("; STATE is one of ") + Velmora::FUpdateGateControl::GetStateWords();
			}
			return FString::Printf(TEXT("This step is written \"%s\"%s."), Row->Form, *States);
		}
		OutSteps.Add(MoveTemp(Step));
	}
	// Only now: a script with one wrong line does nothing at all.
	OutErrorLine = 0;
	return FString();
}

FString FScriptFile::GetHelp()
{
	constexpr int32 FormWidth = 25;
	FString Help;
	for (const FScriptVerbRow& Row : ScriptVerbs)
	{
		FString Form(Row.Form);
		Help += TEXT("  ") + Form + FString::ChrN(FormWidth - Form.Len(), TEXT(' ')) + Row.Help + TEXT("\n");
	}
	return Help;
}
