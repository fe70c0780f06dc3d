#include "DesktopOptions.h"

#include "Misc/CString.h"
#include "ScriptFile.h"

namespace
{
	constexpr int32 MaxSide = 16384;
	constexpr float MinScale = 0.5f;
	constexpr float MaxScale = 4.0f;

	bool ParseWhole(const FString& Text, int32& OutValue)
	{
		if (Text.IsEmpty() || Text.Len() > 6)
		{
			return false;
		}
		OutValue = 0;
		for (const TCHAR Digit : Text)
		{
			if (Digit < TEXT('0') || Digit > TEXT('9'))
			{
				return false;
			}
			OutValue = OutValue * 10 + (Digit - TEXT('0'));
		}
		return true;
	}

	bool ParseSize(const FString& Text, FIntPoint& OutSize)
	{
		FString Width;
		FString Height;
		int32 X = 0;
		int32 Y = 0;
		if (!Text.Split(TEXT("x"), &Width, &Height) || !ParseWhole(Width, X) || !ParseWhole(Height, Y))
		{
			return false;
		}
		OutSize = FIntPoint(X, Y);
		return X >= 1 && Y >= 1 && X <= MaxSide && Y <= MaxSide;
	}

	/** Local time without a zone: a date, or a date and a time of day. */
	bool ParseLocalTime(const FString& Text, TOptional<FDateTime>& OutTime)
	{
		FDateTime Time;
		const FString TimeOfDay = Text.RightChop(10);
		int32 Zone = INDEX_NONE;
		const bool bHasZone = TimeOfDay.EndsWith(TEXT("Z")) || TimeOfDay.FindChar(TEXT('+'), Zone) || TimeOfDay.FindChar(TEXT('-'), Zone);
		if (bHasZone || !FDateTime::ParseIso8601(*Text, Time) || Time.GetYear() < 1970 || Time.GetYear() > 9000)
		{
			return false;
		}
		OutTime = Time;
		return true;
	}

	bool ParseScale(const FString& Text, float& OutScale)
	{
		OutScale = Text.IsNumeric() ? static_cast<float>(FCString::Atof(*Text)) : 0.0f;
		return OutScale >= MinScale && OutScale <= MaxScale;
	}
}

FString FDesktopOptions::Parse(const TArray<FString>& Arguments)
{
	for (int32 Index = 0; Index < Arguments.Num(); ++Index)
	{
		FString Name = Arguments[Index];
		FString Value;
		bool bHasValue = false;
		if (Name.StartsWith(TEXT("--")))
		{
			FString Left;
			if (Name.Split(TEXT("="), &Left, &Value))
			{
				Name = Left;
				bHasValue = true;
			}
		}
		const auto Is = [&Name](const TCHAR* Option) { return Name.Equals(Option); };
		if (Is(TEXT("--headless")) || Is(TEXT("--draft")) || Is(TEXT("--help")) || Is(TEXT("-h")) || Is(TEXT("--version")) ||
			Is(TEXT("--list-connections")) || Is(TEXT("--list-models")))
		{
			if (bHasValue)
			{
				return FString::Printf(TEXT("%s takes no value."), *Name);
			}
			bHeadless = bHeadless || Is(TEXT("--headless"));
			bDraft = bDraft || Is(TEXT("--draft"));
			bShowHelp = bShowHelp || Is(TEXT("--help")) || Is(TEXT("-h"));
			bShowVersion = bShowVersion || Is(TEXT("--version"));
			bListConnections = bListConnections || Is(TEXT("--list-connections"));
			bListModels = bListModels || Is(TEXT("--list-models"));
			continue;
		}
		const bool bKnown = Is(TEXT("--project")) || Is(TEXT("--size")) || Is(TEXT("--scale")) || Is(TEXT("--prompt")) ||
			Is(TEXT("--dump")) || Is(TEXT("--screenshot")) || Is(TEXT("--script")) || Is(TEXT("--frames")) || Is(TEXT("--now")) ||
			Is(TEXT("--set")) || Is(TEXT("--connection")) || Is(TEXT("--server")) || Is(TEXT("--model")) || Is(TEXT("--allow"));
		if (!bKnown)
		{
			return FString::Printf(TEXT("Unknown option \"%s\". Try --help."), *Arguments[Index]);
		}
		if (!bHasValue)
		{
			if (Index + 1 >= Arguments.Num())
			{
				return FString::Printf(TEXT("%s needs a value. Try --help."), *Name);
			}
			Value = Arguments[++Index];
		}
		if (Is(TEXT("--project")))
		{
			ProjectFolder = Value;
		}
		else if (Is(TEXT("--size")))
		{
			if (!ParseSize(Value, Size))
			{
				return FString::Printf(TEXT("--size wants two whole numbers such as 1280x800, not \"%s\"."), *Value);
			}
		}
		else if (Is(TEXT("--scale")))
		{
			if (!ParseScale(Value, Scale))
			{
				return FString::Printf(TEXT("--scale wants a number from 0.5 to 4, not \"%s\"."), *Value);
			}
		}
		else if (Is(TEXT("--prompt")))
		{
			if (Value.IsEmpty())
			{
				return TEXT("--prompt wants a text to send.");
			}
			Prompt = Value;
		}
		else if (Is(TEXT("--script")))
		{
			ScriptFile = Value;
		}
		else if (Is(TEXT("--frames")))
		{
			FramesFile = Value;
		}
		else if (Is(TEXT("--now")))
		{
			if (!ParseLocalTime(Value, Now))
			{
				return FString::Printf(TEXT("--now wants a local time such as 2026-01-31T12:00:00, not \"%s\"."), *Value);
			}
		}
		else if (Is(TEXT("--set")))
		{
			TPair<FString, FString> Variable;
			if (!Value.Split(TEXT("="), &Variable.Key, &Variable.Value) || Variable.Key.IsEmpty())
			{
				return FString::Printf(TEXT("--set wants NAME=VALUE, not \"%s\"."), *Value);
			}
			Variables.Add(MoveTemp(Variable));
		}
		else if (Is(TEXT("--connection")))
		{
			Connection = Value;
		}
		else if (Is(TEXT("--server")))
		{
			Server = Value;
		}
		else if (Is(TEXT("--model")))
		{
			Model = Value;
		}
		else if (Is(TEXT("--allow")))
		{
			AllowedCalls.Add(Value);
		}
		else if (Is(TEXT("--dump")))
		{
			DumpFile = Value;
		}
		else
		{
			ScreenshotFile = Value;
		}
	}
	const bool bHasModelServer = !Connection.IsEmpty() || !Server.IsEmpty();
	if (!Connection.IsEmpty() && !Server.IsEmpty())
	{
		return TEXT("--connection and --server exclude each other.");
	}
	if (!bHasModelServer && (!Model.IsEmpty() || bListModels))
	{
		return TEXT("--model and --list-models go with --connection or --server.");
	}
	// Simulated time moves only while something is done.
	return Now.IsSet() && !HasAction() ? FString(TEXT("--now is for runs with --script, --prompt, --dump or --screenshot.")) : FString();
}

FString FDesktopOptions::GetHelp()
{
	// clang-format off
	return FString(
		TEXT("Velmora UI: the chat of an AI co-developer, in a window of its own.\n")
		TEXT("\n")
		TEXT("  velmora [options]\n")
		TEXT("\n")
		TEXT("  --project DIR      the project that the agent works on (default: this folder)\n")
		TEXT("  --prompt TEXT      type one prompt, send it, print the answer as Markdown on\n")
		TEXT("                     standard output and the tools on standard error, then end\n")
		TEXT("  --dump FILE        write what is on screen and in the conversation as JSON\n")
		TEXT("  --screenshot FILE  write what is on screen as a PNG picture\n")
		TEXT("  --script FILE      run the steps of a script, one a line, then end\n")
		TEXT("  --now TIME         begin at this local time, such as 2026-01-31T12:00:00, and let\n")
		TEXT("                     time pass by a sixtieth of a second a frame: the same run\n")
		TEXT("                     gives the same pictures and dumps, byte by byte\n")
		TEXT("  --set NAME=VALUE   set a console variable; may be given several times\n")
		TEXT("  --connection NAME  let a model answer instead of the built-in agent, by one of the\n")
		TEXT("                     connections in velmora-ui/connections.json of your\n")
		TEXT("                     configuration folder\n")
		TEXT("  --server URL       the same for this run only; a key is taken from the variable\n")
		TEXT("                     VELMORA_SERVER_KEY\n")
		TEXT("  --model NAME       with either: this model\n")
		TEXT("  --list-connections, --list-models\n")
		TEXT("  --allow PREFIX     allow what would be asked, by the beginning of tool and path,\n")
		TEXT("                     such as \"edit_file .vscode/\"; may be given several times\n")
		TEXT("  --frames FILE      write a line for each frame of a session in a window: seconds\n")
		TEXT("                     since 1970, milliseconds of work, pixels painted\n")
		TEXT("  --draft            put back the prompt that was not sent last time, and keep this\n")
		TEXT("                     one, as a session in a window does; for scripts\n")
		TEXT("  --headless         no window: the same program, painted into memory\n")
		TEXT("  --size WxH         size of the window in pixels (default 1280x800)\n")
		TEXT("  --scale F          pixels per unit, 0.5 to 4 (default: GDK_SCALE, or 1)\n")
		TEXT("  --help, --version\n")
		TEXT("\n")
		TEXT("Without a display and with nothing to do (--prompt, --script, --dump or\n")
		TEXT("--screenshot) the program reads prompts from standard input, one a line, and\n")
		TEXT("answers each. --prompt comes before --script, --dump and --screenshot after it.\n")
		TEXT("\n")
		TEXT("Steps of a script:\n")) +
		FScriptFile::GetHelp() +
		TEXT("NAME is #Tag (the tags are in a dump), the whole text of a widget, or the first\n")
		TEXT("line of its tooltip; it must name exactly one thing. @X%,Y% is a place in the\n")
		TEXT("window. A line that begins with # is a comment. A dialog that no step answers\n")
		TEXT("takes No or Cancel.\n")
		TEXT("\n")
		TEXT("Exit codes: 0 all went well, 1 something failed, 2 a wrong option or a script\n")
		TEXT("that could not be run to its end (the message names the line).\n");
	// clang-format on
}
