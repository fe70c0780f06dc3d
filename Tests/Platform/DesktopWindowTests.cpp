#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostClock.h"
#include "Host/HostTasks.h"
#include "Host/Platform.h"
#include "Platform/InputRecorder.h"
#include "Rendering/DrawElements.h"
#include "Support/Base/TempFolder.h"
#include "Support/Base/VirtualDisplay.h"

#include <SDL.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <chrono>

/** Runs in a display of its own; skipped, and said so, where Xvfb is not installed. */
class DesktopWindow : public testing::Test
{
protected:
	virtual void SetUp() override
	{
		if (!IsInstalled("Xvfb"))
		{
			GTEST_SKIP() << "Xvfb is not installed (package xvfb)";
		}
		FHostTasks::SetGameThread();
		FHostClock::UseRealTime();
		Display = std::make_unique<FVirtualDisplay>();
		ASSERT_NE(Display->GetName(), "");
		setenv("DISPLAY", Display->GetName().c_str(), 1);
		unsetenv("WAYLAND_DISPLAY");
		FHostWindowOptions Options;
		Options.Title = TEXT("Test \u00E4");
		Options.PixelSize = FIntPoint(300, 200);
		FString Error;
		Window = FHostPlatform::CreateDesktopWindow(Options, Error);
		ASSERT_TRUE(Window.IsValid()) << Utf8(Error);
	}
	virtual void TearDown() override
	{
		Window.Reset();
		Display.reset();
		FHostPlatform::SetProblemHandler(nullptr);
	}
	void Paint(const FColor& Color, const FSlateRect& Damage)
	{
		const FIntPoint Size = Window->GetPixelSize();
		FSlateWindowElementList Elements(FVector2D(Size.X, Size.Y), 1.0f);
		Elements.AddBox(FSlateRect(0, 0, static_cast<float>(Size.X), static_cast<float>(Size.Y)), Color);
		Window->PaintAndPresent(Elements, Damage);
	}
	/** Pumps until an event has come. */
	bool PumpUntil(const std::string& Word)
	{
		for (int Try = 0; Try < 300 && !Recorder.Has(Word); ++Try)
		{
			Window->PumpEvents(Recorder, 0.01);
		}
		return Recorder.Has(Word);
	}
	void Settle()
	{
		for (int Try = 0; Try < 20; ++Try)
		{
			Window->PumpEvents(Recorder, 0.01);
		}
	}

	std::unique_ptr<FVirtualDisplay> Display;
	TSharedPtr<IHostWindow> Window;
	FInputRecorder Recorder;
};

TEST_F(DesktopWindow, PaintsTheDamageOnly)
{
	Settle();
	EXPECT_FALSE(Window->IsHeadless());
	EXPECT_TRUE(Window->IsVisible());
	EXPECT_EQ(Window->GetPixelSize(), FIntPoint(300, 200));
	Paint(FColor(10, 20, 30, 255), FSlateRect(0, 0, 1, 1));
	EXPECT_EQ(Window->GetPixel(299, 199), FColor(10, 20, 30, 255)) << "the first picture is painted whole";
	Paint(FColor(200, 0, 0, 255), FSlateRect(10, 10, 20, 20));
	EXPECT_EQ(Window->GetPixel(10, 10), FColor(200, 0, 0, 255));
	EXPECT_EQ(Window->GetPixel(20, 20), FColor(10, 20, 30, 255));
	const FTempFolder Folder;
	EXPECT_TRUE(Window->SaveScreenshot(Folder.At(TEXT("shot.png"))));
}

TEST_F(DesktopWindow, FollowsItsSize)
{
	for (const FIntPoint& Size : { FIntPoint(1, 1), FIntPoint(640, 480), FIntPoint(4000, 3000) })
	{
		Settle();
		Recorder.Take();
		Window->Resize(Size);
		EXPECT_TRUE(PumpUntil("resized"));
		Settle();
		EXPECT_EQ(Window->GetPixelSize(), Size);
		Paint(FColor(1, 2, 3, 255), FSlateRect(0, 0, 1, 1));
		EXPECT_EQ(Window->GetPixel(Size.X - 1, Size.Y - 1), FColor(1, 2, 3, 255));
	}
}

TEST_F(DesktopWindow, WhatIsDroppedIsTypedOrComplainedAbout)
{
	std::string Problem;
	FHostPlatform::SetProblemHandler([&Problem](const FString& Sentence) { Problem += Utf8(Sentence); });
	const auto Drop = [this](SDL_EventType Type, const char* Text)
	{
		SDL_Event Event = {};
		Event.type = Type;
		Event.drop.file = SDL_strdup(Text);
		SDL_PushEvent(&Event);
	};
	Settle();
	Recorder.Take();
	Drop(SDL_DROPFILE, "/p/a.cpp");
	Settle();
	EXPECT_FALSE(Recorder.Has("text:/p/a.cpp"));
	EXPECT_NE(Problem.find("click into the prompt"), std::string::npos);

	Problem.clear();
	Window->SetTextInput(true, FSlateRect(0, 0, 1, 10));
	Recorder.Take();
	Drop(SDL_DROPFILE, "/p/b \xC3\xA4.cpp");
	Drop(SDL_DROPTEXT, "some-words");
	Settle();
	EXPECT_EQ(Recorder.Take(), "text:/p/b \xC3\xA4.cpp some-words ");
	EXPECT_EQ(Problem, "");
}

TEST_F(DesktopWindow, WakesFromAnotherThread)
{
	Settle();
	std::thread Waker(
		[this]
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(50));
			Window->Wake();
		});
	const auto Begin = std::chrono::steady_clock::now();
	Window->PumpEvents(Recorder, 20.0);
	EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - Begin).count(), 10.0);
	Waker.join();
}

TEST_F(DesktopWindow, TakesKeysAndMouse)
{
	if (!IsInstalled("xdotool"))
	{
		GTEST_SKIP() << "xdotool is not installed";
	}
	Window->SetTextInput(true, FSlateRect(0, 0, 10, 10));
	Settle();
	// Without a window manager nobody gives the focus.
	const std::string Find = "id=$(xdotool search --name '^Test' | tail -1); ";
	ASSERT_EQ(std::system((Find + "xdotool windowfocus --sync $id").c_str()), 0);
	ASSERT_TRUE(PumpUntil("active"));
	Recorder.Take();
	ASSERT_EQ(std::system("xdotool key a key shift+b key ctrl+Return key Left"), 0);
	ASSERT_TRUE(PumpUntil("down:Left"));
	EXPECT_TRUE(Recorder.Has("text:a"));
	EXPECT_TRUE(Recorder.Has("down:Shift+B"));
	EXPECT_TRUE(Recorder.Has("text:B"));
	EXPECT_TRUE(Recorder.Has("down:Ctrl+Enter"));
	Recorder.Take();
	ASSERT_EQ(std::system((Find + "xdotool mousemove --window $id 30 40 click 1 click 4").c_str()), 0);
	ASSERT_TRUE(PumpUntil("wheel:0,1")) << Recorder.Take();
	EXPECT_TRUE(Recorder.Has("press:LeftMouseButton@30,40"));
	EXPECT_TRUE(Recorder.Has("release:LeftMouseButton"));
}

TEST_F(DesktopWindow, ClipboardKeepsWhatItIsGiven)
{
	TArray<FString> Problems;
	FHostPlatform::SetProblemHandler([&Problems](const FString& Sentence) { Problems.Add(Sentence); });
	FString Pasted;
	FPlatformApplicationMisc::ClipboardPaste(Pasted);
	EXPECT_EQ(Utf8(Pasted), "");
	EXPECT_EQ(Problems.Num(), 0) << "an empty clipboard is no problem";
	FPlatformApplicationMisc::ClipboardCopy(TEXT("\u00E4 \U0001F600\nx"));
	FPlatformApplicationMisc::ClipboardPaste(Pasted);
	EXPECT_EQ(Utf8(Pasted), "\u00E4 \U0001F600\nx");
	// More than the server takes in one request: told, kept within the program, and the connection lives.
	const FString Large = FString::ChrN(20 * 1000 * 1000, TEXT('x'));
	FPlatformApplicationMisc::ClipboardCopy(*Large);
	EXPECT_EQ(Problems.Num(), 1);
	FPlatformApplicationMisc::ClipboardPaste(Pasted);
	EXPECT_EQ(Pasted.Len(), Large.Len());
	Settle();
}

using DesktopWindowDeathTest = DesktopWindow;

TEST_F(DesktopWindowDeathTest, ALostDisplayEndsInOrder)
{
	// The child process runs this test from its begin, with a display of its own to lose.
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	EXPECT_EXIT(
		{
			FHostPlatform::SetDisplayLostHandler([] { std::fputs("saved\n", stderr); });
			Display->Stop();
			for (int Try = 0; Try < 300; ++Try)
			{
				Window->PumpEvents(Recorder, 0.01);
			}
		},
		testing::ExitedWithCode(1), "saved.*connection to the display was lost");
}

TEST(NoDisplay, IsSaidInASentence)
{
	for (const char* Name : { "", ":4711" })
	{
		setenv("DISPLAY", Name, 1);
		unsetenv("WAYLAND_DISPLAY");
		FString Error;
		EXPECT_FALSE(FHostPlatform::CreateDesktopWindow(FHostWindowOptions(), Error).IsValid());
		EXPECT_TRUE(Error.Contains(TEXT("no display"))) << Utf8(Error);
	}
}

TEST_F(DesktopWindow, OpensWhereItWasAndFitsTheMonitor)
{
	const FTempFolder Folder;
	const auto Open = [&](const FIntPoint& Size, const FString& Place)
	{
		Window.Reset();
		FHostWindowOptions Options;
		Options.Title = TEXT("Placed");
		Options.PixelSize = Size;
		Options.PlacePath = Place;
		Options.bFitsMonitor = true;
		FString Error;
		Window = FHostPlatform::CreateDesktopWindow(Options, Error);
		EXPECT_TRUE(Window.IsValid()) << Utf8(Error);
		Settle();
	};
	// Larger than any monitor, and one that was made smaller by hand.
	Open(FIntPoint(9000, 8000), Folder.At(TEXT("place")));
	EXPECT_LT(Window->GetPixelSize().X, 9000);
	EXPECT_LT(Window->GetPixelSize().Y, 8000);
	Window->Resize(FIntPoint(411, 322));
	Settle();
	Open(FIntPoint(300, 200), Folder.At(TEXT("place")));
	EXPECT_EQ(Window->GetPixelSize(), FIntPoint(411, 322));
	// A monitor that is gone, and what is no place at all.
	for (const char* Text : { "90000 90000 400 300 0\n", "nonsense", "0 0 -5 300 0\n", "" })
	{
		Folder.Write("bad", Text);
		Open(FIntPoint(300, 200), Folder.At(TEXT("bad")));
		EXPECT_EQ(Window->GetPixelSize(), FIntPoint(300, 200)) << Text;
	}
}

TEST_F(DesktopWindow, ASelectionIsThePrimaryOne)
{
	Settle();
	FHostPlatform::SetPrimarySelection(TEXT("chosen \u00E4"));
	char* const Text = SDL_GetPrimarySelectionText();
	EXPECT_STREQ(Text, "chosen \xC3\xA4");
	SDL_free(Text);
}
