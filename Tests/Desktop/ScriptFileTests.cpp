#include "ScriptFile.h"
#include "Support/Base/Printers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
	FString FromUtf8(const std::string& Text)
	{
		return FString(FUTF8ToTCHAR(Text.c_str(), static_cast<int32>(Text.size())));
	}

	/** The error of a script of one line, or an empty text and the step. */
	std::string ParseLine(const std::string& Line, FScriptStep& OutStep)
	{
		TArray<FScriptStep> Steps;
		int32 ErrorLine = 0;
		const std::string Error = Utf8(FScriptFile::Parse({ FromUtf8(Line) }, Steps, ErrorLine));
		EXPECT_EQ(ErrorLine, Error.empty() ? 0 : 1) << Line;
		if (Steps.Num() == 1)
		{
			OutStep = Steps[0];
		}
		return Error;
	}
}

TEST(ScriptFile, ReadsEveryStep)
{
	struct FCase
	{
		const char* Line;
		EScriptVerb Verb;
		const char* Text;
		double X;
		double Y;
	};
	const FCase Cases[] = {
		{ "type  find \"x\" ", EScriptVerb::Type, " find \"x\" ", 0, 0 },
		{ "type a\\nb\\tc\\\\d", EScriptVerb::Type, "a\nb\tc\\d", 0, 0 },
		{ "click #SendButton", EScriptVerb::Click, "#SendButton", 0, 0 },
		{ "right-click #InputTextBox", EScriptVerb::RightClick, "#InputTextBox", 0, 0 },
		{ "  click Copy code to clipboard  ", EScriptVerb::Click, "Copy code to clipboard", 0, 0 },
		{ "move New", EScriptVerb::Move, "New", 0, 0 },
		{ "drag #InputTextBox -20 5.5", EScriptVerb::Drag, "#InputTextBox", -20, 5.5 },
		{ "drag two words 3 4", EScriptVerb::Drag, "two words", 3, 4 },
		{ "scroll #MessageList -3", EScriptVerb::Scroll, "#MessageList", -3, 0 },
		{ "wait idle 2.5", EScriptVerb::WaitIdle, "", 2.5, 0 },
		{ "wait state paused 10", EScriptVerb::WaitState, "paused", 10, 0 },
		{ "tick 30", EScriptVerb::Tick, "", 30, 0 },
		{ "resize 700 500", EScriptVerb::Resize, "", 700, 500 },
		{ "answer Yes All", EScriptVerb::Answer, "Yes All", 0, 0 },
		{ "answer file out/a b.md", EScriptVerb::AnswerFile, "out/a b.md", 0, 0 },
		{ "update Checking", EScriptVerb::Update, "Checking", -1, 0 },
		{ "update Downloading 40", EScriptVerb::Update, "Downloading", 40, 0 },
		{ "dump a file.json", EScriptVerb::Dump, "a file.json", 0, 0 },
		{ "screenshot x.png", EScriptVerb::Screenshot, "x.png", 0, 0 },
		{ "close-tab", EScriptVerb::CloseTab, "", 0, 0 },
		{ "open-tab", EScriptVerb::OpenTab, "", 0, 0 },
		{ "quit", EScriptVerb::Quit, "", 0, 0 },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Line);
		FScriptStep Step;
		EXPECT_EQ(ParseLine(Case.Line, Step), "");
		EXPECT_EQ(static_cast<int>(Step.Verb), static_cast<int>(Case.Verb));
		EXPECT_EQ(Utf8(Step.Text), Case.Text);
		EXPECT_EQ(Step.X, Case.X);
		EXPECT_EQ(Step.Y, Case.Y);
	}
}

TEST(ScriptFile, TellsWhatIsWrong)
{
	const std::vector<std::pair<std::string, std::string>> Cases = {
		{ "jump", "There is no step \"jump\". Try --help." },
		{ "Click New", "There is no step \"Click\". Try --help." },
		{ "clicks", "There is no step \"clicks\". Try --help." },
		{ "wait", "There is no step \"wait\". Try --help." },
		{ "click", "This step is written \"click NAME\"." },
		{ "answer", "This step is written \"answer BUTTON\"." },
		{ "type", "This step is written \"type TEXT\"." },
		{ "type C:\\dir", "This step is written \"type TEXT\"." },
		{ "key CTRL+", "This step is written \"key CHORD\"." },
		{ "key FOO+A", "This step is written \"key CHORD\"." },
		{ "drag #A 1", "This step is written \"drag NAME X Y\"." },
		{ "scroll 5", "This step is written \"scroll NAME N\"." },
		{ "wait idle soon", "This step is written \"wait idle SECONDS\"." },
		{ "wait idle -1", "This step is written \"wait idle SECONDS\"." },
		{ "tick 1.5", "This step is written \"tick N\"." },
		{ "resize 0 10", "This step is written \"resize W H\"." },
		{ "resize 99999 10", "This step is written \"resize W H\"." },
		{ "quit now", "This step is written \"quit\"." },
	};
	for (const auto& [Line, Error] : Cases)
	{
		FScriptStep Step;
		EXPECT_EQ(ParseLine(Line, Step), Error) << Line;
	}
	FScriptStep Step;
	EXPECT_EQ(ParseLine("wait state Asleep 1", Step)
				  .find("This step is written \"wait state NAME SECONDS\"; NAME is one of NotStarted, Initializing, Ready,"),
		0u);
}

TEST(ScriptFile, SkipsCommentsAndCountsLines)
{
	TArray<FScriptStep> Steps;
	int32 ErrorLine = 0;
	const FString Error =
		FScriptFile::Parse({ TEXT("# first"), TEXT(""), TEXT("tick 1"), TEXT("  #second"), TEXT("oops now") }, Steps, ErrorLine);
	EXPECT_EQ(Utf8(Error), "There is no step \"oops\". Try --help.");
	EXPECT_EQ(ErrorLine, 5);
	ASSERT_EQ(Steps.Num(), 1);
	EXPECT_EQ(Steps[0].Line, 3);
}

TEST(ScriptFile, ReadsChords)
{
	struct FCase
	{
		const char* Chord;
		const char* Key;
		bool bControl;
		bool bShift;
		bool bAlt;
	};
	const FCase Cases[] = {
		{ "CTRL+ENTER", "Enter", true, false, false },
		{ "ctrl+shift+left", "Left", true, true, false },
		{ "Esc", "Escape", false, false, false },
		{ "RETURN", "Enter", false, false, false },
		{ "alt+F4", "F4", false, false, true },
		{ "control+a", "A", true, false, false },
		{ "7", "Seven", false, false, false },
		{ "PgDn", "PageDown", false, false, false },
		{ "SPACE", "SpaceBar", false, false, false },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Chord);
		FKey Key;
		FModifierKeysState Modifiers;
		ASSERT_TRUE(FScriptFile::ParseChord(FromUtf8(Case.Chord), Key, Modifiers));
		EXPECT_EQ(Utf8(Key.GetFName().ToString()), Case.Key);
		EXPECT_EQ(Modifiers.IsControlDown(), Case.bControl);
		EXPECT_EQ(Modifiers.IsShiftDown(), Case.bShift);
		EXPECT_EQ(Modifiers.IsAltDown(), Case.bAlt);
	}
	for (const char* Chord : { "", "+", "CTRL", "NoSuchKey", "ENTER+CTRL" })
	{
		FKey Key;
		FModifierKeysState Modifiers;
		EXPECT_FALSE(FScriptFile::ParseChord(FromUtf8(Chord), Key, Modifiers)) << Chord;
	}
}
