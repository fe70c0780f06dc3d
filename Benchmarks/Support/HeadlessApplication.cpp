#include "HeadlessApplication.h"

#include "Containers/StringConv.h"
#include "Host/HostClock.h"
#include "Host/HostInput.h"
#include "Host/HostPaths.h"
#include "Style/VelmoraUIStyles.h"
#include "Support/Base/PinnedFonts.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <malloc.h>
#include <thread>
#include <unistd.h>

namespace
{
	/** Nothing that is measured touches what the user keeps. */
	void UseTemporarySavedFolder()
	{
		static std::string Pattern = std::filesystem::temp_directory_path() / "velmora-benchmark-XXXXXX";
		if (mkdtemp(Pattern.data()))
		{
			FHostPaths::SetEngineSavedDir(UTF8_TO_TCHAR(Pattern.c_str()));
			atexit(
				[]
				{
					std::error_code Ignored;
					std::filesystem::remove_all(Pattern, Ignored);
				});
		}
	}

	void SetUpProcessOnce()
	{
		static const bool bIsDone = []
		{
			UsePinnedFonts();
			UseTemporarySavedFolder();
			return true;
		}();
		(void)bIsDone;
	}

	const FVector2D MiddleOfWindow(640.0, 400.0);
}

FHeadlessApplication::FHeadlessApplication()
{
	SetUpProcessOnce();
	FHostSessionOptions Options;
	Options.HomeFolder = UTF8_TO_TCHAR(VELMORA_SOURCE_DIR);
	Options.Plugin.VersionName = TEXT("benchmark");
	Options.StartTime = FDateTime(2026, 1, 31, 12, 0, 0);
	Session = MakeUnique<FHostSession>(Options);
	static const bool bHasStyles = (FVelmoraUIStyles::Initialize(), true);
	(void)bHasStyles;
	PumpFrame();
}

FHeadlessApplication::~FHeadlessApplication() = default;

void FHeadlessApplication::Show(const TSharedRef<SWidget>& Widget)
{
	App().SetRootContent(Widget);
}

void FHeadlessApplication::PumpFrame(double Seconds)
{
	FHostClock::Advance(Seconds);
	App().Tick();
}

void FHeadlessApplication::Settle()
{
	constexpr int32 Frames = 40;
	for (int32 Frame = 0; Frame < Frames; ++Frame)
	{
		PumpFrame();
	}
}

void FHeadlessApplication::Wheel(float Notches)
{
	App().GetMessageHandler().OnMouseWheel(FVector2D(0.0, Notches), MiddleOfWindow, FModifierKeysState());
}

void FHeadlessApplication::Click(const FVector2D& Position)
{
	HostInput::Click(Position);
}

void FHeadlessApplication::PressKey(const FKey& Key)
{
	HostInput::PressKey(Key);
}

void FHeadlessApplication::PressControlKey(const FKey& Key)
{
	HostInput::PressKey(Key, FModifierKeysState(false, false, true, false, false, false));
}

void FHeadlessApplication::Type(FStringView Text)
{
	App().GetMessageHandler().OnTextInput(Text);
}

double FHeadlessApplication::GetThreadSeconds()
{
	timespec Time = {};
	clock_gettime(CLOCK_THREAD_CPUTIME_ID, &Time);
	return static_cast<double>(Time.tv_sec) + static_cast<double>(Time.tv_nsec) * 1.0e-9;
}

double FHeadlessApplication::GetResidentBytes()
{
	malloc_trim(0);
	long Total = 0;
	long Resident = 0;
	if (FILE* File = std::fopen("/proc/self/statm", "r"))
	{
		if (std::fscanf(File, "%ld %ld", &Total, &Resident) != 2)
		{
			Resident = 0;
		}
		std::fclose(File);
	}
	return static_cast<double>(Resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void FPacedFrames::Pump(FHeadlessApplication& Application)
{
	using FClock = std::chrono::steady_clock;
	const FClock::time_point Start = FClock::now();
	Application.PumpFrame();
	WorstMilliseconds = std::max(WorstMilliseconds, std::chrono::duration<double, std::milli>(FClock::now() - Start).count());
	++Count;
	std::this_thread::sleep_until(Start + std::chrono::microseconds(16667));
}
