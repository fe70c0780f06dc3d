#include "KeyBindings.h"

#include "Host/HostAtomicFile.h"
#include "Host/HostFolders.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"

#include <string>

namespace
{
	struct FKeyState
	{
		FString Path;
		TMap<FName, FInputChord> Defaults;
		TMap<FName, FInputChord> Changed;
		FSimpleDelegate OnChanged;
		bool bIsCapturing = false;
	};

	FKeyState& GetState()
	{
		static FKeyState State;
		return State;
	}

	struct FTakenKey
	{
		const TCHAR* Chord;
		const TCHAR* Use;
	};

	// Keys of text boxes, of the window and of the chat. None of them ever comes to a command, or it would take it from them.
	constexpr FTakenKey TakenKeys[] = {
		{ TEXT("Ctrl+Enter"), TEXT("sends the prompt") },
		{ TEXT("Ctrl+Tab"), TEXT("goes to the next tab") },
		{ TEXT("Ctrl+Shift+Tab"), TEXT("goes to the tab before") },
		{ TEXT("F10"), TEXT("opens the menus") },
		{ TEXT("Alt+F4"), TEXT("closes the window") },
		{ TEXT("Ctrl+A"), TEXT("selects all text") },
		{ TEXT("Ctrl+C"), TEXT("copies text") },
		{ TEXT("Ctrl+X"), TEXT("cuts text") },
		{ TEXT("Ctrl+V"), TEXT("pastes text") },
		{ TEXT("Ctrl+Z"), TEXT("takes a change of text back") },
		{ TEXT("Ctrl+Y"), TEXT("makes a change of text again") },
		{ TEXT("Ctrl+Shift+Z"), TEXT("makes a change of text again") },
	};

	// With any modifiers: they move in texts and lists, or delete.
	constexpr const TCHAR* MovingKeys[] = { TEXT("Left"), TEXT("Right"), TEXT("Up"), TEXT("Down"), TEXT("Home"), TEXT("End"),
		TEXT("PageUp"), TEXT("PageDown"), TEXT("BackSpace"), TEXT("Delete"), TEXT("Insert"), TEXT("Tab"), TEXT("Enter"), TEXT("SpaceBar") };

	bool IsFunctionKey(const FKey& Key)
	{
		const FString Name = Key.ToString();
		return Name.Len() >= 2 && Name[0] == TEXT('F') && Name[1] >= TEXT('0') && Name[1] <= TEXT('9');
	}

	FString Save(const FKeyState& State)
	{
		if (State.Path.IsEmpty())
		{
			return FString();
		}
		FString Text;
		for (const TPair<FName, FInputChord>& Entry : State.Changed)
		{
			Text += Entry.Key.ToString() + TEXT("=") + FKeyBindings::Print(Entry.Value) + TEXT("\n");
		}
		const std::string Bytes = TCHAR_TO_UTF8(*Text);
		FString Reason;
		return HostSaveFile(State.Path, Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason)
			? FString()
			: FString::Printf(TEXT("The key holds until the program ends; it could not be kept. %s"), *Reason);
	}
}

void FKeyBindings::Load(const FString& Path)
{
	FKeyState& State = GetState();
	State.Path = Path;
	State.Changed.Empty();
	TArray<FString> Lines;
	if (Path.IsEmpty() || HostGetPathKind(Path) != EHostPathKind::File || !FFileHelper::LoadFileToStringArray(Lines, *Path))
	{
		return;
	}
	for (const FString& Line : Lines)
	{
		FString Command;
		FString Keys;
		FInputChord Chord;
		if (Line.Split(TEXT("="), &Command, &Keys) && Parse(Keys.TrimStartAndEnd(), Chord))
		{
			State.Changed.Add(FName(*Command.TrimStartAndEnd()), Chord);
		}
	}
}

FInputChord FKeyBindings::Get(const TCHAR* Command, const FInputChord& Default)
{
	FKeyState& State = GetState();
	State.Defaults.Add(FName(Command), Default);
	const FInputChord* const Changed = State.Changed.Find(FName(Command));
	return Changed ? *Changed : Default;
}

FInputChord FKeyBindings::GetDefault(FName Command)
{
	const FInputChord* const Default = GetState().Defaults.Find(Command);
	return Default ? *Default : FInputChord();
}

FString FKeyBindings::Change(FName Command, const FInputChord& Chord)
{
	FKeyState& State = GetState();
	if (Chord == GetDefault(Command))
	{
		State.Changed.Remove(Command);
	}
	else
	{
		if (FString Complaint = CheckKey(Chord); !Complaint.IsEmpty())
		{
			return Complaint;
		}
		State.Changed.Add(Command, Chord);
	}
	const FString Complaint = Save(State);
	State.OnChanged.ExecuteIfBound();
	return Complaint;
}

void FKeyBindings::SetOnChanged(FSimpleDelegate Handler)
{
	GetState().OnChanged = MoveTemp(Handler);
}

void FKeyBindings::SetCapturing(bool bCaptures)
{
	GetState().bIsCapturing = bCaptures;
}

bool FKeyBindings::IsCapturing()
{
	return GetState().bIsCapturing;
}

FString FKeyBindings::Print(const FInputChord& Chord)
{
	if (!Chord.IsValidChord())
	{
		return FString();
	}
	const FString Modifiers = FString(Chord.bCtrl ? TEXT("Ctrl+") : TEXT("")) + (Chord.bAlt ? TEXT("Alt+") : TEXT("")) +
		(Chord.bShift ? TEXT("Shift+") : TEXT(""));
	return Modifiers + Chord.Key.ToString();
}

bool FKeyBindings::Parse(const FString& Text, FInputChord& OutChord)
{
	OutChord = FInputChord();
	if (Text.IsEmpty())
	{
		return true;
	}
	TArray<FString> Names;
	Text.ParseIntoArray(Names, TEXT("+"), false);
	FInputChord Chord;
	for (int32 Index = 0; Index + 1 < Names.Num(); ++Index)
	{
		bool* const Modifier = Names[Index] == TEXT("Ctrl") ? &Chord.bCtrl
			: Names[Index] == TEXT("Alt")					? &Chord.bAlt
			: Names[Index] == TEXT("Shift")					? &Chord.bShift
															: nullptr;
		if (!Modifier)
		{
			return false;
		}
		*Modifier = true;
	}
	Chord.Key = EKeys::Find(FName(*Names.Last()));
	if (!Chord.IsValidChord() || Chord.Key == EKeys::Invalid)
	{
		return false;
	}
	OutChord = Chord;
	return true;
}

FString FKeyBindings::CheckKey(const FInputChord& Chord)
{
	const FString Name = Print(Chord);
	if (Name.IsEmpty())
	{
		return FString();
	}
	const FString Shown = Chord.GetInputText().ToString();
	for (const FTakenKey& Taken : TakenKeys)
	{
		if (Name == Taken.Chord)
		{
			return FString::Printf(TEXT("%s %s. Nothing was changed."), *Shown, Taken.Use);
		}
	}
	for (const TCHAR* const Moving : MovingKeys)
	{
		if (Chord.Key.ToString() == Moving)
		{
			return FString::Printf(TEXT("%s moves in texts and lists, or changes them. Nothing was changed."), *Shown);
		}
	}
	const bool bIsPlain = !Chord.bCtrl && !Chord.bAlt && Chord.Key != EKeys::Escape && !IsFunctionKey(Chord.Key);
	if (bIsPlain)
	{
		return FString::Printf(TEXT("%s types something. Take Ctrl with it, or a function key. Nothing was changed."), *Shown);
	}
	if (Chord.bAlt && !Chord.bCtrl && Chord.Key.ToString().Len() == 1)
	{
		return FString::Printf(TEXT("%s is for the menus. Nothing was changed."), *Shown);
	}
	return FString();
}
