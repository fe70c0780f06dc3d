#include "Platform/InputRecorder.h"
#include "Sdl/SdlKeys.h"
#include "Sdl/TextInputGate.h"

class TextInputGate : public testing::Test
{
protected:
	void Key(const FKey& Pressed, const FModifierKeysState& Modifiers = FModifierKeysState())
	{
		Gate.OnKeyDown(Recorder, Pressed, Modifiers, false);
	}
	void KeyUp(const FKey& Released) { Gate.OnKeyUp(Recorder, Released, FModifierKeysState()); }
	void Text(const TCHAR* Typed, bool bMore = false) { Gate.OnText(Recorder, Typed, bMore); }
	void Preedit(const TCHAR* Unfinished, int32 Cursor = 0) { Gate.OnPreedit(Recorder, Unfinished, Cursor); }
	std::string Batch()
	{
		Gate.OnBatchEnd(Recorder);
		return Recorder.Take();
	}
	static FModifierKeysState Control() { return FModifierKeysState(false, false, true, false, false, false); }
	static FModifierKeysState LeftAlt() { return FModifierKeysState(false, false, false, false, true, false); }
	static FModifierKeysState ThirdLevel() { return FModifierKeysState(false, false, true, false, false, true); }

	FTextInputGate Gate;
	FInputRecorder Recorder;
};

TEST_F(TextInputGate, TypingComesThroughInOrder)
{
	Key(EKeys::A);
	Text(TEXT("a"));
	KeyUp(EKeys::A);
	Key(EKeys::B);
	Text(TEXT("b"));
	EXPECT_EQ(Batch(), "down:A text:a up:A down:B text:b");
}

TEST_F(TextInputGate, ShortcutsTypeNothing)
{
	Key(EKeys::One, Control());
	Text(TEXT("1"));
	Key(EKeys::F, LeftAlt());
	Text(TEXT("f"));
	Key(EKeys::Q, ThirdLevel());
	Text(TEXT("@"));
	EXPECT_EQ(Batch(), "down:Ctrl+One down:Alt+F down:Ctrl+Alt+Q text:@");
}

TEST_F(TextInputGate, PiecesOfOneTextAreJoined)
{
	Text(TEXT("a long committed tex"), true);
	Text(TEXT("t in two pieces"));
	EXPECT_EQ(Batch(), "text:a long committed text in two pieces");
}

TEST_F(TextInputGate, ControlCharactersAreNoText)
{
	Text(TEXT("\x01\x1B\x7F"));
	Text(TEXT("a\tb"));
	EXPECT_EQ(Batch(), "text:ab");
}

TEST_F(TextInputGate, TheWordComesBeforeTheBlankThatEndedIt)
{
	Preedit(TEXT("wor"), 3);
	EXPECT_EQ(Batch(), "preedit:wor@3");
	// The key is not the input method's, so it arrives at once; the word follows.
	Key(EKeys::SpaceBar);
	Text(TEXT(" "));
	EXPECT_EQ(Batch(), "") << "held back";
	Text(TEXT("word"));
	Preedit(TEXT(""));
	EXPECT_EQ(Batch(), "preedit:@0 text:word down:SpaceBar text: ");
}

TEST_F(TextInputGate, TheWordMayComeBehindTheEndOfThePreedit)
{
	Preedit(TEXT("wor"), 3);
	Key(EKeys::Enter);
	KeyUp(EKeys::Enter);
	Preedit(TEXT(""));
	Text(TEXT("word"));
	EXPECT_EQ(Batch(), "preedit:wor@3 preedit:@0 text:word down:Enter up:Enter");
}

TEST_F(TextInputGate, ACancelledPreeditLetsKeysGo)
{
	Preedit(TEXT("x"), 1);
	Key(EKeys::Escape);
	Preedit(TEXT(""));
	EXPECT_EQ(Batch(), "preedit:x@1 preedit:@0 down:Escape");
	Preedit(TEXT(""));
	EXPECT_EQ(Batch(), "") << "closing twice says nothing";
}

TEST_F(TextInputGate, TheNextWordBeginsWhereTheLastOneEnds)
{
	Preedit(TEXT("a"), 1);
	Text(TEXT("first"));
	Preedit(TEXT(""));
	Preedit(TEXT("b"), 1);
	EXPECT_EQ(Batch(), "preedit:a@1 preedit:@0 text:first preedit:b@1");
}

TEST_F(TextInputGate, LosingTheFocusHoldsNothingBack)
{
	Preedit(TEXT("a"), 1);
	Key(EKeys::Tab);
	Gate.Close(Recorder);
	EXPECT_EQ(Recorder.Take(), "preedit:a@1 preedit:@0 down:Tab");
}

TEST(SdlKeys, FollowTheLayoutThenThePlace)
{
	const auto Make = [](SDL_Keycode Code, SDL_Scancode Place, uint16 Modifiers = 0)
	{
		SDL_Keysym Keysym = {};
		Keysym.sym = Code;
		Keysym.scancode = Place;
		Keysym.mod = Modifiers;
		return Utf8(SdlKeys::FromKeysym(Keysym).GetFName());
	};
	EXPECT_EQ(Make(SDLK_z, SDL_SCANCODE_Y), "Z") << "a German keyboard";
	EXPECT_EQ(Make(0x441, SDL_SCANCODE_C), "C") << "a Russian keyboard";
	EXPECT_EQ(Make(SDLK_RETURN, SDL_SCANCODE_RETURN), "Enter");
	EXPECT_EQ(Make(SDLK_KP_ENTER, SDL_SCANCODE_KP_ENTER), "Enter");
	EXPECT_EQ(Make(SDLK_KP_7, SDL_SCANCODE_KP_7), "Home");
	EXPECT_EQ(Make(SDLK_KP_7, SDL_SCANCODE_KP_7, KMOD_NUM), "NumPadSeven");
	EXPECT_EQ(Make(SDLK_VOLUMEUP, SDL_SCANCODE_VOLUMEUP), "None");
}
