#include "CodeIntel/CodeIntelIndexManager.h"
#include "FileCache/ProjectFileCache.h"
#include "Host/CodeIndexControl.h"
#include "Host/ProjectFileCacheControl.h"
#include "Host/ProjectFolder.h"
#include "Support/HeadlessApplication.h"
#include "Widgets/Text/STextBlock.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

// The code index of this repository, and of a made project whose files are copies of the repository's sources with names of
// their own in it. Files are written to TMPDIR, else /tmp. Times are those of the clock. One line alone: --benchmark_filter=NAME.

namespace
{
	using Velmora::CodeIntel::FCodeIndexControl;
	using Velmora::CodeIntel::FCodeIndexOptions;
	using Velmora::CodeIntel::FCodeIntelIndexManager;
	using FClock = std::chrono::steady_clock;
	using FPath = std::filesystem::path;

	double GetMillisecondsSince(FClock::time_point Start)
	{
		return std::chrono::duration<double, std::milli>(FClock::now() - Start).count();
	}

	std::string ReadWhole(const FPath& File)
	{
		std::ifstream Stream(File, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(Stream), {});
	}

	/** Gone at the end of the process. */
	const FPath& GetFolder()
	{
		struct FFolder
		{
			FPath Path = std::filesystem::temp_directory_path() / ("velmora-index-" + std::to_string(getpid()));
			FFolder() { std::filesystem::create_directories(Path); }
			~FFolder()
			{
				std::error_code Error;
				std::filesystem::remove_all(Path, Error);
			}
		};
		static const FFolder Folder;
		return Folder.Path;
	}

	const FPath& GetMadeProject()
	{
		static FPath Root;
		if (!Root.empty())
		{
			return Root;
		}
		Root = GetFolder() / "project";
		std::vector<FPath> Sources;
		for (const char* const Part : { "Source", "Host", "Tests" })
		{
			for (const auto& Entry : std::filesystem::recursive_directory_iterator(FPath(VELMORA_SOURCE_DIR) / Part))
			{
				const std::string Extension = Entry.path().extension();
				if (Extension == ".cpp" || Extension == ".h")
				{
					Sources.push_back(Entry.path());
				}
			}
		}
		std::sort(Sources.begin(), Sources.end());
		constexpr int FileCount = 20000;
		for (int Index = 0; Index < FileCount; ++Index)
		{
			const FPath& Source = Sources[static_cast<size_t>(Index) % Sources.size()];
			const FPath Place = Root / ("Module" + std::to_string(Index / 400)) / ("Area" + std::to_string(Index / 40 % 10));
			std::filesystem::create_directories(Place);
			const std::string Number = std::to_string(Index);
			std::ofstream(Place / (Source.stem().native() + Number + Source.extension().native()))
				<< ReadWhole(Source) << "\nclass FMade" << Number << " { void RunMade" << Number << "(); };\n";
		}
		return Root;
	}

	void Open(const FPath& Root)
	{
		FCodeIndexOptions Options;
		Options.ProjectFolder = UTF8_TO_TCHAR(Root.c_str());
		Options.ProjectIndexPath = UTF8_TO_TCHAR((GetFolder() / (Root.filename().native() + ".index.db")).c_str());
		FCodeIndexControl::Initialize(Options);
	}

	void OpenNew(const FPath& Root)
	{
		FCodeIndexControl::Shutdown();
		for (const char* const Ending : { "", "-wal", "-shm" })
		{
			std::filesystem::remove(GetFolder() / (Root.filename().native() + ".index.db" + Ending));
		}
		Open(Root);
	}

	void AddFigures(benchmark::State& State)
	{
		const Velmora::CodeIntel::FIndexStats Stats = FCodeIntelIndexManager::Get().GetIndexStats();
		State.counters["files"] = Stats.TotalFiles;
		State.counters["failed"] = Stats.FailedFiles;
		State.counters["symbols"] = Stats.EstimatedSymbols;
		State.counters["megabytes"] = Stats.IndexSizeMB;
	}

	void BuildRepository(benchmark::State& State)
	{
		for (auto _ : State)
		{
			OpenNew(VELMORA_SOURCE_DIR);
			const FClock::time_point Start = FClock::now();
			FCodeIntelIndexManager::Get().RebuildIndex(true);
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
		}
		AddFigures(State);
	}
	BENCHMARK(BuildRepository)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Frames of 1/60 s of real time during the build, with a text that asks for the figures as the poll of the window does. */
	void BuildMadeProjectUnderFrames(benchmark::State& State)
	{
		FHeadlessApplication Application;
		Application.Show(SNew(STextBlock)
							 .Text_Lambda(
								 []
								 {
									 const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
									 return FText::FromString(FString::Printf(TEXT("%d %d %d"), Manager.IsBuilding() ? 1 : 0,
										 Manager.GetReindexerQueueSize(), Manager.GetIndexStats().EstimatedSymbols));
								 }));
		Application.Settle();
		FPacedFrames Frames;
		for (auto _ : State)
		{
			OpenNew(GetMadeProject());
			std::atomic<bool> bIsDone = false;
			const FClock::time_point Start = FClock::now();
			std::thread Builder(
				[&bIsDone]
				{
					FCodeIntelIndexManager::Get().RebuildIndex(true);
					bIsDone = true;
				});
			while (!bIsDone)
			{
				Frames.Pump(Application);
			}
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
			Builder.join();
		}
		AddFigures(State);
		State.counters["frames"] = static_cast<double>(Frames.Count);
		State.counters["worst_frame_ms"] = Frames.WorstMilliseconds;
	}
	BENCHMARK(BuildMadeProjectUnderFrames)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	void OpenBuilt()
	{
		if (!FCodeIntelIndexManager::Get().IsIndexReady() ||
			FCodeIntelIndexManager::Get().GetIndexStats().RootPath != FString(UTF8_TO_TCHAR(GetMadeProject().c_str())))
		{
			Open(GetMadeProject());
			FCodeIntelIndexManager::Get().RebuildIndex(false);
		}
	}

	/** Names that stand once, thousands of times and not at all, beginnings of names, and names with a scope. */
	void Lookup(benchmark::State& State)
	{
		OpenBuilt();
		double Worst = 0.0;
		double WorstOwn = 0.0;
		int64 Index = 0;
		for (auto _ : State)
		{
			const std::string Number = std::to_string(Index * 7919 % 20000);
			const std::string Names[] = { "FMade" + Number, "Run", "FNobody" + Number, "FMade" + Number.substr(0, 1),
				"FMade" + Number + "::RunMade" + Number, "S", "FCodeIndex::Run", "FNobody::Run" };
			const FClock::time_point Start = FClock::now();
			const double OwnStart = FHeadlessApplication::GetThreadSeconds();
			const auto Found = FCodeIndexControl::FindSymbol(Names[static_cast<size_t>(Index) % std::size(Names)], 50);
			const double Milliseconds = GetMillisecondsSince(Start);
			WorstOwn = std::max(WorstOwn, (FHeadlessApplication::GetThreadSeconds() - OwnStart) * 1.0e3);
			benchmark::DoNotOptimize(Found.Symbols.data());
			State.SetIterationTime(Milliseconds * 1.0e-3);
			Worst = std::max(Worst, Milliseconds);
			++Index;
		}
		State.counters["worst_ms"] = Worst;
		State.counters["worst_own_ms"] = WorstOwn;
	}
	BENCHMARK(Lookup)->Iterations(4000)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** From the end of a save until a lookup finds what was written, in the project of 20,000 files. */
	void SeeSavedFile(benchmark::State& State)
	{
		OpenBuilt();
		Velmora::SetProjectFolder(UTF8_TO_TCHAR(GetMadeProject().c_str()));
		Velmora::FProjectFileCache::Get().RefreshCache();
		while (Velmora::FProjectFileCache::Get().IsIndexing() || FCodeIntelIndexManager::Get().GetReindexerQueueSize() > 0)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(1));
		}
		std::this_thread::sleep_for(std::chrono::seconds(2));
		double Worst = 0.0;
		int Round = 0;
		for (auto _ : State)
		{
			const std::string Name = "FSaved" + std::to_string(++Round);
			std::ofstream(GetMadeProject() / "Module7/Area3/Saved.cpp") << "class " << Name << " { };\n";
			const FClock::time_point Start = FClock::now();
			while (!FCodeIndexControl::FindSymbol(Name, 1).bIsExact && GetMillisecondsSince(Start) < 30000.0)
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(1));
			}
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
			Worst = std::max(Worst, GetMillisecondsSince(Start));
		}
		State.counters["worst_ms"] = Worst;
		Velmora::FProjectFileCacheControl::Shutdown();
	}
	BENCHMARK(SeeSavedFile)->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);

	void CompareUnchanged(benchmark::State& State)
	{
		OpenBuilt();
		FHeadlessApplication Application;
		for (auto _ : State)
		{
			bool bIsDone = false;
			const FClock::time_point Start = FClock::now();
			FCodeIntelIndexManager::Get().ReconcileFileChangesAsync([&bIsDone](int32, int32) { bIsDone = true; });
			while (!bIsDone)
			{
				Application.PumpFrame();
				std::this_thread::sleep_for(std::chrono::milliseconds(1));
			}
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
		}
	}
	BENCHMARK(CompareUnchanged)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** The end of the program in the middle of a build, at several moments of it. */
	void QuitDuringBuild(benchmark::State& State)
	{
		double Worst = 0.0;
		int Part = 0;
		for (auto _ : State)
		{
			OpenNew(GetMadeProject());
			std::thread Builder([] { FCodeIntelIndexManager::Get().RebuildIndex(true); });
			std::this_thread::sleep_for(std::chrono::milliseconds(100 + 1500 * Part++));
			const FClock::time_point Start = FClock::now();
			FCodeIndexControl::Shutdown();
			State.SetIterationTime(GetMillisecondsSince(Start) * 1.0e-3);
			Worst = std::max(Worst, GetMillisecondsSince(Start));
			Builder.join();
		}
		State.counters["worst_ms"] = Worst;
	}
	BENCHMARK(QuitDuringBuild)->Iterations(6)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK_MAIN();
