#include "DesktopOptions.h"

#include "Misc/CString.h"
#include "Math/UnrealMathUtility.h"
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

	/**
	 * One option. Its name, whether it takes a value, what the help says of it and what it does stand in one row, so that a new
	 * option is one row and can be forgotten nowhere.
	 */
	struct FOptionRow
	{
		const TCHAR* Name;
		/** What the value is called in the help; null for a switch. */
		const TCHAR* Argument;
		/** Lines of the help, parted by line feeds. */
		const TCHAR* Help;
		/** Empty when the value can be used; else one sentence. A switch gets an empty value. */
		FString (*Apply)(FDesktopOptions& Options, const FString& Value);
	};

	/** For values that are taken as they stand. */
	template <FString FDesktopOptions::*Member>
	FString SetText(FDesktopOptions& Options, const FString& Value)
	{
		Options.*Member = Value;
		return FString();
	}

	template <bool FDesktopOptions::*Member>
	FString SetSwitch(FDesktopOptions& Options, const FString& Value)
	{
		Options.*Member = true;
		return FString();
	}

	FString SetPrompt(FDesktopOptions& Options, const FString& Value)
	{
		// One that goes out in place of another would be a text lost without a word.
		if (Options.Prompt.IsSet())
		{
			return TEXT("--prompt can be given once; several prompts come by standard input, one a line.");
		}
		Options.Prompt = Value;
		return Value.IsEmpty() ? FString(TEXT("--prompt wants a text to send.")) : FString();
	}

	FString SetStartTime(FDesktopOptions& Options, const FString& Value)
	{
		return ParseLocalTime(Value, Options.Now)
			? FString()
			: FString::Printf(TEXT("--now wants a local time such as 2026-01-31T12:00:00, not \"%s\"."), *Value);
	}

	FString AddVariable(FDesktopOptions& Options, const FString& Value)
	{
		TPair<FString, FString> Variable;
		if (!Value.Split(TEXT("="), &Variable.Key, &Variable.Value) || Variable.Key.IsEmpty())
		{
			return FString::Printf(TEXT("--set wants NAME=VALUE, not \"%s\"."), *Value);
		}
		Options.Variables.Add(MoveTemp(Variable));
		return FString();
	}

	FString AddAllowedCall(FDesktopOptions& Options, const FString& Value)
	{
		Options.AllowedCalls.Add(Value);
		return FString();
	}

	/** Letter case counts, as in the names of options. */
	template <EAccessChoice FDesktopOptions::*Member>
	FString SetChoice(FDesktopOptions& Options, const FString& Value)
	{
		const bool bOn = Value.Equals(TEXT("on"));
		if (!bOn && !Value.Equals(TEXT("off")) && !Value.Equals(TEXT("desktop")))
		{
			return FString::Printf(TEXT("\"%s\" is neither on, off nor desktop."), *Value);
		}
		Options.*Member = bOn ? EAccessChoice::On : (Value.Equals(TEXT("off")) ? EAccessChoice::Off : EAccessChoice::Desktop);
		return FString();
	}

	FString SetSize(FDesktopOptions& Options, const FString& Value)
	{
		Options.bHasSize = true;
		return ParseSize(Value, Options.Size)
			? FString()
			: FString::Printf(TEXT("--size wants two whole numbers such as 1280x800, not \"%s\"."), *Value);
	}

	FString SetScale(FDesktopOptions& Options, const FString& Value)
	{
		return ParseScale(Value, Options.Scale) ? FString()
												: FString::Printf(TEXT("--scale wants a number from 0.5 to 4, not \"%s\"."), *Value);
	}

	// In the order of the help.
	// clang-format off
	constexpr FOptionRow OptionRows[] = {
		{ TEXT("--project"), TEXT("DIR"),
			TEXT("the project that the agent works on (default: this folder)"),
			&SetText<&FDesktopOptions::ProjectFolder> },
		{ TEXT("--prompt"), TEXT("TEXT"),
			TEXT("type one prompt, send it, print the answer as Markdown on\n")
			TEXT("standard output and the tools on standard error, then end"),
			&SetPrompt },
		{ TEXT("--dump"), TEXT("FILE"),
			TEXT("write what is on screen and in the conversation as JSON; its\n")
			TEXT("folder must be there"),
			&SetText<&FDesktopOptions::DumpFile> },
		{ TEXT("--screenshot"), TEXT("FILE"),
			TEXT("write what is on screen as a PNG picture"),
			&SetText<&FDesktopOptions::ScreenshotFile> },
		{ TEXT("--script"), TEXT("FILE"),
			TEXT("run the steps of a script, one a line, then end"),
			&SetText<&FDesktopOptions::ScriptFile> },
		{ TEXT("--now"), TEXT("TIME"),
			TEXT("begin at this local time, such as 2026-01-31T12:00:00, and let\n")
			TEXT("time pass by a sixtieth of a second a frame: the same run\n")
			TEXT("gives the same pictures and dumps, byte by byte"),
			&SetStartTime },
		{ TEXT("--set"), TEXT("NAME=VALUE"),
			TEXT("set a console variable; may be given several times"),
			&AddVariable },
		{ TEXT("--connection"), TEXT("NAME"),
			TEXT("let a model answer instead of the built-in agent, by one of the\n")
			TEXT("connections in velmora-ui/connections.json of your\n")
			TEXT("configuration folder"),
			&SetText<&FDesktopOptions::Connection> },
		{ TEXT("--server"), TEXT("URL"),
			TEXT("the same for this run only; a key is taken from the variable\n")
			TEXT("VELMORA_SERVER_KEY"),
			&SetText<&FDesktopOptions::Server> },
		{ TEXT("--model"), TEXT("NAME"),
			TEXT("with either: this model"),
			&SetText<&FDesktopOptions::Model> },
		{ TEXT("--list-connections"), nullptr,
			TEXT("print the connections that are set up, then end"),
			&SetSwitch<&FDesktopOptions::bListConnections> },
		{ TEXT("--list-models"), nullptr,
			TEXT("print the models of --connection or --server, then end"),
			&SetSwitch<&FDesktopOptions::bListModels> },
		{ TEXT("--allow"), TEXT("PREFIX"),
			TEXT("allow what would be asked, by the beginning of tool and path,\n")
			TEXT("such as \"edit_file .vscode/\"; may be given several times"),
			&AddAllowedCall },
		{ TEXT("--frames"), TEXT("FILE"),
			TEXT("write a line for each frame of a session in a window: seconds\n")
			TEXT("since 1970, milliseconds of work, pixels painted"),
			&SetText<&FDesktopOptions::FramesFile> },
		{ TEXT("--record"), TEXT("FILE"),
			TEXT("write the session down, to report a fault: what is typed and\n")
			TEXT("clicked, and what the agent answers, as text in a file that\n")
			TEXT("you alone can read"),
			&SetText<&FDesktopOptions::RecordFile> },
		{ TEXT("--record-masked"), nullptr,
			TEXT("with --record: letters become x and digits 0"),
			&SetSwitch<&FDesktopOptions::bRecordMasked> },
		{ TEXT("--replay"), TEXT("FILE"),
			TEXT("show a recorded session again, with the same pictures; without\n")
			TEXT("its project, and without an agent. --screenshot and --dump\n")
			TEXT("write how it ends"),
			&SetText<&FDesktopOptions::ReplayFile> },
		{ TEXT("--draft"), nullptr,
			TEXT("put back the prompt that was not sent last time, and keep this\n")
			TEXT("one, as a session in a window does; for scripts"),
			&SetSwitch<&FDesktopOptions::bDraft> },
		{ TEXT("--no-history"), nullptr,
			TEXT("keep no conversation, no undo and no draft of this run; for scripts"),
			&SetSwitch<&FDesktopOptions::bNoHistory> },
		{ TEXT("--headless"), nullptr,
			TEXT("no window: the same program, painted into memory"),
			&SetSwitch<&FDesktopOptions::bHeadless> },
		{ TEXT("--size"), TEXT("WxH"),
			TEXT("size of the window in pixels (default: as it was last time, or\n")
			TEXT("1280x800 times the scale)"),
			&SetSize },
		{ TEXT("--scale"), TEXT("F"),
			TEXT("pixels per unit, 0.5 to 4 (default: GDK_SCALE, or 1)"),
			&SetScale },
		{ TEXT("--accessibility"), TEXT("WHEN"),
			TEXT("show the window to screen readers: on, off or desktop, which is\n")
			TEXT("when one asks (default)"),
			&SetChoice<&FDesktopOptions::Accessibility> },
		{ TEXT("--reduced-motion"), TEXT("WHEN"),
			TEXT("no fades and no blinking: on, off or desktop (default)"),
			&SetChoice<&FDesktopOptions::ReducedMotion> },
		{ TEXT("--high-contrast"), TEXT("WHEN"),
			TEXT("bright text on black: on, off or desktop (default)"),
			&SetChoice<&FDesktopOptions::HighContrast> },
		{ TEXT("--help"), nullptr,
			TEXT("print this, then end; so does -h"),
			&SetSwitch<&FDesktopOptions::bShowHelp> },
		{ TEXT("--version"), nullptr,
			TEXT("print the version, then end"),
			&SetSwitch<&FDesktopOptions::bShowVersion> },
	};
	// clang-format on

	const FOptionRow* FindOption(const FString& Name)
	{
		// Letter case counts, as it does for the programs around this one; the engine's strings would ignore it.
		const FString Wanted = Name.Equals(TEXT("-h")) ? FString(TEXT("--help")) : Name;
		for (const FOptionRow& Row : OptionRows)
		{
			if (Wanted.Equals(Row.Name))
			{
				return &Row;
			}
		}
		return nullptr;
	}

	/** The help of one option: its name at the left, its lines in a column, below a name that would reach into them. */
	FString DescribeOption(const FOptionRow& Row)
	{
		constexpr int32 HelpColumn = 21;
		FString Text = FString(TEXT("  ")) + Row.Name + (Row.Argument ? FString(TEXT(" ")) + Row.Argument : FString());
		const auto Indent = [&Text](int32 Used) { Text += FString::ChrN(FMath::Max(HelpColumn - Used, 0), TEXT(' ')); };
		if (Text.Len() + 2 > HelpColumn)
		{
			Text += TEXT("\n");
			Indent(0);
		}
		else
		{
			Indent(Text.Len());
		}
		for (const TCHAR* At = Row.Help; *At; ++At)
		{
			Text.AppendChar(*At);
			if (*At == TEXT('\n'))
			{
				Indent(0);
			}
		}
		return Text + TEXT("\n");
	}

	/** What options forbid or need one another. */
	FString CheckTogether(const FDesktopOptions& Options)
	{
		const bool bHasModelServer = !Options.Connection.IsEmpty() || !Options.Server.IsEmpty();
		if (!Options.Connection.IsEmpty() && !Options.Server.IsEmpty())
		{
			return TEXT("--connection and --server exclude each other.");
		}
		if (!bHasModelServer && (!Options.Model.IsEmpty() || Options.bListModels))
		{
			return TEXT("--model and --list-models go with --connection or --server.");
		}
		if (Options.bRecordMasked && Options.RecordFile.IsEmpty())
		{
			return TEXT("--record-masked goes with --record.");
		}
		if (!Options.RecordFile.IsEmpty() && Options.Prompt.IsSet())
		{
			return TEXT("--record is for sessions in a window and for --script.");
		}
		const bool bIsAnotherRun = Options.Prompt.IsSet() || !Options.ScriptFile.IsEmpty() || !Options.RecordFile.IsEmpty() ||
			Options.Now.IsSet() || !Options.ProjectFolder.IsEmpty() || bHasModelServer || Options.bHasSize || Options.bDraft;
		if (!Options.ReplayFile.IsEmpty() && bIsAnotherRun)
		{
			return TEXT("--replay goes with --headless, --screenshot and --dump: all else comes from the recording.");
		}
		// Simulated time moves only while something is done.
		return Options.Now.IsSet() && !Options.HasAction()
			? FString(TEXT("--now is for runs with --script, --prompt, --dump or --screenshot."))
			: FString();
	}
}

FString FDesktopOptions::Parse(const TArray<FString>& Arguments)
{
	for (int32 Index = 0; Index < Arguments.Num(); ++Index)
	{
		// 1. "--name=value" is one argument, "--name value" two. A value may hold more of "=" than the first.
		FString Name = Arguments[Index];
		FString Value;
		FString Left;
		const bool bHasValue = Name.StartsWith(TEXT("--")) && Name.Split(TEXT("="), &Left, &Value);
		Name = bHasValue ? Left : Name;
		const FOptionRow* const Row = FindOption(Name);
		if (!Row)
		{
			return FString::Printf(TEXT("Unknown option \"%s\". Try --help."), *Arguments[Index]);
		}

		// 2. Its value, if it takes one.
		if (!Row->Argument && bHasValue)
		{
			return FString::Printf(TEXT("%s takes no value."), *Name);
		}
		if (Row->Argument && !bHasValue)
		{
			if (Index + 1 >= Arguments.Num())
			{
				return FString::Printf(TEXT("%s needs a value. Try --help."), *Name);
			}
			Value = Arguments[++Index];
		}

		// 3. What it does.
		if (const FString Complaint = Row->Apply(*this, Value); !Complaint.IsEmpty())
		{
			return Complaint;
		}
	}
	return CheckTogether(*this);
}

FString FDesktopOptions::GetHelp()
{
	FString Rows;
	for (const FOptionRow& Row : OptionRows)
	{
		Rows += DescribeOption(Row);
	}
	// clang-format off
	return FString(
		TEXT("Velmora UI: the chat of an AI co-developer, in a window of its own.\n")
		TEXT("\n")
		TEXT("  velmora [options]\n")
		TEXT("\n")) +
		Rows +
		TEXT("\n")
		TEXT("Without a display and with nothing to do (--prompt, --script, --dump or\n")
		TEXT("--screenshot) the program reads prompts from standard input, one a line, and\n")
		TEXT("answers each. --prompt comes before --script, --dump and --screenshot after it.\n")
		TEXT("Without --prompt and --script these two answer the prompts of a pipe first.\n")
		TEXT("\n")
		TEXT("Steps of a script:\n") +
		FScriptFile::GetHelp() +
		TEXT("NAME is #Tag (the tags are in a dump), the whole text of a widget, or the first\n")
		TEXT("line of its tooltip; it must name exactly one thing. @X%,Y% is a place in the\n")
		TEXT("window. A line that begins with # is a comment. A dialog that no step answers\n")
		TEXT("takes No or Cancel.\n")
		TEXT("\n")
		TEXT("Exit codes: 0 all went well, 1 something failed (a change, a turn, a request that\n")
		TEXT("was not understood; the last line of standard error says why), 2 a wrong option\n")
		TEXT("or a script that could not be run to its end (the message names the line).\n");
	// clang-format on
}
