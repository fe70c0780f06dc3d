#include "FrameLog.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostFileNames.h"

#include <chrono>
#include <iomanip>

bool FFrameLog::Open(const FString& Path)
{
	File.open(HostFileNameToBytes(Path), std::ios::out | std::ios::trunc);
	File << std::fixed << std::setprecision(6);
	return File.good();
}

void FFrameLog::NoteFrame()
{
	if (!File.is_open())
	{
		return;
	}
	const FHostFrameStats& Stats = FSlateApplication::Get().GetFrameStats();
	const std::chrono::duration<double> Now = std::chrono::system_clock::now().time_since_epoch();
	File << Now.count() << ' ' << Stats.LastFrameSeconds * 1000.0 << ' ' << static_cast<int64>(Stats.LastPaintedPixels) << std::endl;
}
