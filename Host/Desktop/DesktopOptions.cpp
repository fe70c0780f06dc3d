#include "DesktopOptions.h"

#include "Misc/CString.h"

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
		if (Is(TEXT("--headless")) || Is(TEXT("--help")) || Is(TEXT("-h")) || Is(TEXT("--version")))
		{
			if (bHasValue)
			{
				return FString::Printf(TEXT("%s takes no value."), *Name);
			}
			bHeadless = bHeadless || Is(TEXT("--headless"));
			bShowHelp = bShowHelp || Is(TEXT("--help")) || Is(TEXT("-h"));
			bShowVersion = bShowVersion || Is(TEXT("--version"));
			continue;
		}
		const bool bKnown = Is(TEXT("--project")) || Is(TEXT("--size")) || Is(TEXT("--scale")) || Is(TEXT("--prompt")) || Is(TEXT("--dump")) || Is(TEXT("--screenshot"));
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
		else if (Is(TEXT("--dump")))
		{
			DumpFile = Value;
		}
		else
		{
			ScreenshotFile = Value;
		}
	}
	return FString();
}

FString FDesktopOptions::GetHelp()
{
	return TEXT("Velmora UI: the chat of an AI co-developer, in a window of its own.\n")
		TEXT("\n")
		TEXT("  velmora [options]\n")
		TEXT("\n")
		TEXT("  --project DIR      the project that the agent works on (default: this folder)\n")
		TEXT("  --prompt TEXT      type one prompt, send it, print the answer as Markdown on\n")
		TEXT("                     standard output and the tools on standard error, then end\n")
		TEXT("  --dump FILE        write what is on screen and in the conversation as JSON\n")
		TEXT("  --screenshot FILE  write what is on screen as a PNG picture\n")
		TEXT("  --headless         no window: the same program, painted into memory\n")
		TEXT("  --size WxH         size of the window in pixels (default 1280x800)\n")
		TEXT("  --scale F          pixels per unit, 0.5 to 4 (default: GDK_SCALE, or 1)\n")
		TEXT("  --help, --version\n")
		TEXT("\n")
		TEXT("Without a display and without --prompt, --dump or --screenshot the program\n")
		TEXT("reads prompts from standard input, one a line, and answers each.\n")
		TEXT("\n")
		TEXT("Exit codes: 0 all went well, 1 something failed, 2 a wrong option.\n");
}
