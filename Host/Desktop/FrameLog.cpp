#include "FrameLog.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostFileNames.h"

#include <chrono>
#include <iomanip>

bool FFrameLog::Open(const FString& Path)
{
	File.open(HostFileNameToBytes(Path), std::ios::out | std::ios::trunc);
	// Microseconds: a frame takes few of them, and the time of day many digits.
	File << std::fixed << std::setprecision(6);
	return File.good();
}

void FFrameLog::NoteFrame()
{
	if (!File.is_open())
	{
		return;
	}
	// Flushed line by line: who measures reads along, and a killed run keeps what it has seen.
	const FHostFrameStats& Stats = FSlateApplication::Get().GetFrameStats();
	const std::chrono::duration<double> Now = std::chrono::system_clock::now().time_since_epoch();
	File << Now.count() << ' ' << Stats.LastFrameSeconds * 1000.0 << ' ' << static_cast<int64>(Stats.LastPaintedPixels) << std::endl;
}
