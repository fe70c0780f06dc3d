#include "FileCache/ProjectFileCache.h"
#include "Host/ProjectFileCacheControl.h"
#include "Host/ProjectFolder.h"
#include "Support/HeadlessApplication.h"
#include "Support/MadeProject.h"
#include "Widgets/Text/STextBlock.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// The project file cache on made projects, which are really written to the disk (to TMPDIR, else /tmp) and read before, so
// that the system holds them in memory. Times are those of the clock. One line alone: --benchmark_filter=NAME.

namespace
{
	using Velmora::FProjectFileCache;
	using Velmora::FProjectFileCacheControl;
	using Velmora::FProjectFileCacheEntry;
	using FClock = std::chrono::steady_clock;

	double GetMillisecondsSince(FClock::time_point Start)
	{
		return std::chrono::duration<double, std::milli>(FClock::now() - Start).count();
	}

	FMadeProject& GetProject(int64 FileCount)
	{
		static std::unique_ptr<FMadeProject> Project;
		static int64 Current = 0;
		if (Current != FileCount)
		{
			Project.reset();
			Project = std::make_unique<FMadeProject>(static_cast<int>(FileCount));
			Current = FileCount;
		}
		return *Project;
	}

	void WaitForScan()
	{
		while (FProjectFileCache::Get().IsIndexing())
		{
			std::this_thread::sleep_for(std::chrono::microseconds(200));
		}
	}

	void Open(const std::filesystem::path& Folder)
	{
		Velmora::SetProjectFolder(UTF8_TO_TCHAR(Folder.c_str()));
		FProjectFileCache::Get().RefreshCache();
	}

	/** Leaves the cache empty, so that the next scan finds everything new. */
	void OpenNothing()
	{
		Open("/nonexistent");
		WaitForScan();
	}

	/** Bytes of the heap in use, once the thread of the cache has let go of what it needs no more. */
	double GetHeapBytes()
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(200));
		const struct mallinfo2 Info = mallinfo2();
		return static_cast<double>(Info.uordblks + Info.hblkhd);
	}

	void OpenWhole(int64 FileCount)
	{
		Open(GetProject(FileCount).GetRoot());
		WaitForScan();
	}

	void Scan(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		double Memory = 0.0;
		for (auto _ : State)
		{
			OpenNothing();
			const double Before = GetHeapBytes();
			const FClock::time_point Start = FClock::now();
			Open(GetProject(State.range(0)).GetRoot());
			WaitForScan();
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
			Memory = GetHeapBytes() - Before;
		}
		State.counters["entries"] = FProjectFileCache::Get().GetFileCount();
		State.counters["bytes_an_entry"] = Memory / FProjectFileCache::Get().GetFileCount();
	}
	BENCHMARK(Scan)->Arg(10000)->Arg(100000)->Arg(1000000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Frames of 1/60 s of real time while scans run, with a text that asks for the state of the cache as the dropdown does. */
	void FramesDuringScan(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		FHeadlessApplication Application;
		Application.Show(SNew(STextBlock)
							 .Text_Lambda(
								 []
								 {
									 FProjectFileCache& Cache = FProjectFileCache::Get();
									 return FText::FromString(FString::Printf(
										 TEXT("%d %d %d"), Cache.IsReady() ? 1 : 0, Cache.IsIndexing() ? 1 : 0, Cache.GetFileCount()));
								 }));
		Application.Settle();
		double WorstRequest = 0.0;
		FPacedFrames Frames;
		for (auto _ : State)
		{
			OpenNothing();
			const FClock::time_point Start = FClock::now();
			Open(GetProject(State.range(0)).GetRoot());
			WorstRequest = std::max(WorstRequest, GetMillisecondsSince(Start));
			while (FProjectFileCache::Get().IsIndexing())
			{
				Frames.Pump(Application);
			}
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
		}
		State.counters["frames"] = static_cast<double>(Frames.Count);
		State.counters["worst_frame_ms"] = Frames.WorstMilliseconds;
		State.counters["worst_request_ms"] = WorstRequest;
	}
	BENCHMARK(FramesDuringScan)->Arg(100000)->Arg(1000000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** A fresh copy of the list and its end. */
	void CopyAndDrop(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		for (auto _ : State)
		{
			TArray<FProjectFileCacheEntry> Records;
			FProjectFileCache::Get().GetCachedFiles(Records);
			benchmark::DoNotOptimize(Records.GetData());
		}
	}
	BENCHMARK(CopyAndDrop)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

	/** The same into an array that is kept. */
	void CopyAgain(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		TArray<FProjectFileCacheEntry> Records;
		for (auto _ : State)
		{
			FProjectFileCache::Get().GetCachedFiles(Records);
			benchmark::DoNotOptimize(Records.GetData());
		}
	}
	BENCHMARK(CopyAgain)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

	/** A refresh that finds nothing new, some seconds after the last change. */
	void RefreshUnchanged(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		std::this_thread::sleep_for(std::chrono::seconds(3));
		FProjectFileCache::Get().RefreshCache();
		WaitForScan();
		for (auto _ : State)
		{
			const FClock::time_point Start = FClock::now();
			FProjectFileCache::Get().RefreshCache();
			WaitForScan();
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
		}
	}
	BENCHMARK(RefreshUnchanged)->Arg(100000)->Arg(1000000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** From the last write of many files in new folders until all of them are in the list. */
	void SeeNewFiles(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		const std::filesystem::path Place = GetProject(State.range(0)).GetRoot() / "Checkout";
		for (auto _ : State)
		{
			const int32 Before = FProjectFileCache::Get().GetFileCount();
			int32 Made = 1;
			for (int64 Index = 0; Index < State.range(1); ++Index)
			{
				const std::filesystem::path Folder = Place / ("Area" + std::to_string(Index / 20));
				Made += std::filesystem::create_directories(Folder) ? 2 : 1;
				std::ofstream(Folder / ("File" + std::to_string(Index) + ".cpp")) << 'x';
			}
			const FClock::time_point Start = FClock::now();
			while (FProjectFileCache::Get().GetFileCount() < Before + Made)
			{
				std::this_thread::sleep_for(std::chrono::microseconds(200));
			}
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
			std::filesystem::remove_all(Place);
			while (FProjectFileCache::Get().GetFileCount() > Before)
			{
				std::this_thread::sleep_for(std::chrono::microseconds(200));
			}
		}
	}
	BENCHMARK(SeeNewFiles)
		->Args({ 100000, 1 })
		->Args({ 100000, 5000 })
		->Args({ 1000000, 5000 })
		->Iterations(5)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);

	/** The end of the program in the middle of a scan. */
	void QuitDuringScan(benchmark::State& State)
	{
		OpenWhole(State.range(0));
		double Worst = 0.0;
		int Part = 0;
		for (auto _ : State)
		{
			OpenNothing();
			Open(GetProject(State.range(0)).GetRoot());
			std::this_thread::sleep_for(std::chrono::milliseconds(20 + 60 * (Part++ % 5)));
			const FClock::time_point Start = FClock::now();
			FProjectFileCacheControl::Shutdown();
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
			Worst = std::max(Worst, GetMillisecondsSince(Start));
		}
		State.counters["worst_ms"] = Worst;
	}
	BENCHMARK(QuitDuringScan)->Arg(100000)->Arg(1000000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK_MAIN();
