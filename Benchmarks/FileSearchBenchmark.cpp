#include "FileCache/ProjectFileCache.h"
#include "FileSearch/FileIndexService.h"
#include "Host/ProjectFolder.h"
#include "Support/AllocationCount.h"
#include "Support/MadeProject.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <map>
#include <memory>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

// The search for project files on made projects of 100,000 and 1,000,000 files, which are really written to the disk and read
// by the project file cache. Times are processor time, each for one query. Own and peer take turns within each round.
//
// To count instructions instead, run "FileSearchBenchmark --once WHAT FILES REPEATS" under a counting tool, once with n and once
// with n + 1 repeats, and take the difference. WHAT is "copy", "search" or "score"; one repeat does all queries.

extern char** environ;

namespace
{
	using Velmora::FProjectFileCache;
	using Velmora::FProjectFileCacheEntry;
	using Velmora::UI::FFileIndexService;

	/** What people type on the way to a file: its beginning, initials, parts, folders, an extension; last what matches nothing. */
	const char* const Queries[] = { "p", "pl", "player", "PlayerInv", "plinvcomp", "invmgr.h", "source/game", "srcwidget", "settings.ini",
		"testcurve3", "zqxv" };
	constexpr int32 QueryCount = static_cast<int32>(sizeof(Queries) / sizeof(Queries[0]));
	constexpr int32 ResultLimit = 50;

	double GetThreadMilliseconds()
	{
		timespec Time = {};
		clock_gettime(CLOCK_THREAD_CPUTIME_ID, &Time);
		return static_cast<double>(Time.tv_sec) * 1.0e3 + static_cast<double>(Time.tv_nsec) * 1.0e-6;
	}

	/** Brings the cache to rest on a made project. The last one is kept. False when the cache does not list all of it. */
	bool UseProject(int32 FileCount)
	{
		static std::unique_ptr<FMadeProject> Project;
		static int32 Current = 0;
		if (Current != FileCount)
		{
			Project.reset();
			Project = std::make_unique<FMadeProject>(FileCount);
			Current = FileCount;
			Velmora::SetProjectFolder(UTF8_TO_TCHAR(Project->GetRoot().c_str()));
			FProjectFileCache::Get().RefreshCache();
			while (FProjectFileCache::Get().IsIndexing())
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(5));
			}
		}
		return FProjectFileCache::Get().GetFileCount() >= FileCount;
	}

	/** The least that a search can cost: a fresh snapshot, and its end. */
	void CopyAndDrop()
	{
		TArray<FProjectFileCacheEntry> Records;
		FProjectFileCache::Get().GetCachedFiles(Records);
		benchmark::DoNotOptimize(Records.GetData());
	}

	std::vector<FString> GetQueries()
	{
		return std::vector<FString>(std::begin(Queries), std::end(Queries));
	}

	std::vector<FString> GetPaths()
	{
		TArray<FProjectFileCacheEntry> Records;
		FProjectFileCache::Get().GetCachedFiles(Records);
		std::vector<FString> Paths;
		for (const FProjectFileCacheEntry& Record : Records)
		{
			if (!Record.bIsDirectory)
			{
				Paths.push_back(Record.Path);
			}
		}
		return Paths;
	}

	/** A whole search beside a bare copy and drop of the same records. */
	void WholeSearch(benchmark::State& State)
	{
		if (!UseProject(static_cast<int32>(State.range(0))))
		{
			State.SkipWithError("The file cache does not list that many files.");
			return;
		}
		const std::vector<FString> Texts = GetQueries();
		std::vector<double> Search(Texts.size());
		double CopyTotal = 0.0;
		double SearchTotal = 0.0;
		int32 Results = 0;
		for (auto _ : State)
		{
			double Round = 0.0;
			for (size_t Index = 0; Index < Texts.size(); ++Index)
			{
				const double Start = GetThreadMilliseconds();
				CopyAndDrop();
				const double Middle = GetThreadMilliseconds();
				Results = FFileIndexService::Get().SearchFiles(Texts[Index], ResultLimit).Num();
				const double End = GetThreadMilliseconds();
				CopyTotal += Middle - Start;
				Search[Index] += End - Middle;
				Round += End - Middle;
			}
			SearchTotal += Round;
			State.SetIterationTime(Round * 1.0e-3 / QueryCount);
		}
		const double Rounds = static_cast<double>(State.iterations());
		const double Copy = CopyTotal / Rounds / QueryCount;
		State.counters["copy_ms"] = Copy;
		State.counters["search_ms"] = SearchTotal / Rounds / QueryCount;
		State.counters["ratio"] = SearchTotal / CopyTotal;
		State.counters["least_ratio"] = *std::min_element(Search.begin(), Search.end()) / Rounds / Copy;
		State.counters["worst_ratio"] = *std::max_element(Search.begin(), Search.end()) / Rounds / Copy;
		benchmark::DoNotOptimize(Results);
	}
	BENCHMARK(WholeSearch)->Arg(100000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK(WholeSearch)->Arg(1000000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** The score of each path, and the heap blocks that took. */
	void ScoreCalls(benchmark::State& State)
	{
		if (!UseProject(static_cast<int32>(State.range(0))))
		{
			State.SkipWithError("The file cache does not list that many files.");
			return;
		}
		const std::vector<FString> Texts = GetQueries();
		const std::vector<FString> Paths = GetPaths();
		uint64 Allocations = 0;
		double Total = 0.0;
		int64 Matches = 0;
		for (auto _ : State)
		{
			const uint64 Before = GetAllocationCount();
			const double Start = GetThreadMilliseconds();
			for (const FString& Query : Texts)
			{
				for (const FString& Path : Paths)
				{
					Matches += FFileIndexService::CalculateFuzzyScore(Path, Query) > 0 ? 1 : 0;
				}
			}
			const double Round = GetThreadMilliseconds() - Start;
			Allocations += GetAllocationCount() - Before;
			Total += Round;
			State.SetIterationTime(Round * 1.0e-3 / QueryCount);
		}
		const double Passes = static_cast<double>(State.iterations()) * QueryCount;
		State.counters["score_ms"] = Total / Passes;
		State.counters["ns_a_call"] = Total * 1.0e6 / Passes / static_cast<double>(Paths.size());
		State.counters["matches"] = static_cast<double>(Matches) / Passes;
		State.counters["allocations"] = static_cast<double>(Allocations);
	}
	BENCHMARK(ScoreCalls)->Arg(100000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK(ScoreCalls)->Arg(1000000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Processor time of all threads of a program that reads the list and writes what it finds. Negative when it fails. */
	double RunPeer(const std::vector<std::string>& Arguments, const std::string& ListFile)
	{
		std::vector<char*> Pointers;
		for (const std::string& Argument : Arguments)
		{
			Pointers.push_back(const_cast<char*>(Argument.c_str()));
		}
		Pointers.push_back(nullptr);
		posix_spawn_file_actions_t Actions;
		posix_spawn_file_actions_init(&Actions);
		posix_spawn_file_actions_addopen(&Actions, STDIN_FILENO, ListFile.c_str(), O_RDONLY, 0);
		posix_spawn_file_actions_addopen(&Actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
		pid_t Child = 0;
		const int Error = posix_spawnp(&Child, Pointers[0], &Actions, nullptr, Pointers.data(), environ);
		posix_spawn_file_actions_destroy(&Actions);
		int Status = 0;
		rusage Usage = {};
		if (Error != 0 || wait4(Child, &Status, 0, &Usage) != Child || !WIFEXITED(Status) || WEXITSTATUS(Status) > 1)
		{
			return -1.0;
		}
		const auto ToMilliseconds = [](const timeval& Time)
		{ return static_cast<double>(Time.tv_sec) * 1.0e3 + static_cast<double>(Time.tv_usec) * 1.0e-3; };
		return ToMilliseconds(Usage.ru_utime) + ToMilliseconds(Usage.ru_stime);
	}

	/**
	 * A whole search beside a program that is given the same paths and the same queries. Its time holds the reading of the list,
	 * as ours holds the snapshot; what that takes is seen in "peer_floor_ms", the query that matches nothing.
	 */
	void BesidePeer(benchmark::State& State, const char* Program, const char* QueryOption)
	{
		if (!UseProject(static_cast<int32>(State.range(0))))
		{
			State.SkipWithError("The file cache does not list that many files.");
			return;
		}
		const std::string ListFile = (std::filesystem::temp_directory_path() / ("velmora-paths-" + std::to_string(getpid()))).native();
		std::FILE* const List = std::fopen(ListFile.c_str(), "w");
		for (const FString& Path : GetPaths())
		{
			std::fprintf(List, "%s\n", TCHAR_TO_UTF8(*Path));
		}
		std::fclose(List);

		const std::vector<FString> Texts = GetQueries();
		double PeerTotal = 0.0;
		double PeerFloor = 0.0;
		double OwnTotal = 0.0;
		double ScoreTotal = 0.0;
		const std::vector<FString> Paths = GetPaths();
		for (auto _ : State)
		{
			double Round = 0.0;
			for (size_t Index = 0; Index < Texts.size(); ++Index)
			{
				const double Peer = RunPeer({ Program, QueryOption + std::string(Queries[Index]) }, ListFile);
				if (Peer < 0.0)
				{
					State.SkipWithError("The program does not run.");
					break;
				}
				PeerTotal += Peer;
				PeerFloor += Index + 1 == Texts.size() ? Peer : 0.0;
				const double Start = GetThreadMilliseconds();
				benchmark::DoNotOptimize(FFileIndexService::Get().SearchFiles(Texts[Index], ResultLimit));
				const double Middle = GetThreadMilliseconds();
				for (const FString& Path : Paths)
				{
					benchmark::DoNotOptimize(FFileIndexService::CalculateFuzzyScore(Path, Texts[Index]));
				}
				ScoreTotal += GetThreadMilliseconds() - Middle;
				Round += Middle - Start;
			}
			OwnTotal += Round;
			State.SetIterationTime(Round * 1.0e-3 / QueryCount);
		}
		unlink(ListFile.c_str());
		const double Passes = static_cast<double>(State.iterations()) * QueryCount;
		State.counters["peer_ms"] = PeerTotal / Passes;
		State.counters["peer_floor_ms"] = PeerFloor / static_cast<double>(State.iterations());
		State.counters["search_ms"] = OwnTotal / Passes;
		State.counters["score_ms"] = ScoreTotal / Passes;
		State.counters["ratio"] = OwnTotal / PeerTotal;
	}

	void RegisterPeer(const char* Name, const char* Program, const char* QueryOption)
	{
		if (std::system((std::string("command -v ") + Program + " >/dev/null 2>&1").c_str()) != 0)
		{
			std::fprintf(stderr, "%s is not installed and left out.\n", Program);
			return;
		}
		benchmark::RegisterBenchmark(Name, BesidePeer, Program, QueryOption)
			->Arg(100000)
			->Iterations(3)
			->UseManualTime()
			->Unit(benchmark::kMillisecond);
	}

	int RunOnce(const std::string& What, int32 FileCount, int32 Repeats)
	{
		if (!UseProject(FileCount))
		{
			std::fprintf(stderr, "The file cache does not list that many files.\n");
			return 1;
		}
		const std::vector<FString> Texts = GetQueries();
		const std::vector<FString> Paths = GetPaths();
		int64 Found = 0;
		for (int32 Repeat = 0; Repeat < Repeats; ++Repeat)
		{
			for (const FString& Query : Texts)
			{
				if (What == "copy")
				{
					CopyAndDrop();
				}
				else if (What == "search")
				{
					Found += FFileIndexService::Get().SearchFiles(Query, ResultLimit).Num();
				}
				else
				{
					for (const FString& Path : Paths)
					{
						Found += FFileIndexService::CalculateFuzzyScore(Path, Query) > 0 ? 1 : 0;
					}
				}
			}
		}
		std::printf("%d files, %lld found\n", FProjectFileCache::Get().GetFileCount(), Found);
		return 0;
	}
}

int main(int ArgumentCount, char** Arguments)
{
	if (ArgumentCount == 5 && std::string(Arguments[1]) == "--once")
	{
		return RunOnce(Arguments[2], std::atoi(Arguments[3]), std::atoi(Arguments[4]));
	}
	RegisterPeer("BesideFzf", "fzf", "--filter=");
	RegisterPeer("BesideFzy", "fzy", "--show-matches=");
	benchmark::Initialize(&ArgumentCount, Arguments);
	benchmark::RunSpecifiedBenchmarks();
	return 0;
}
