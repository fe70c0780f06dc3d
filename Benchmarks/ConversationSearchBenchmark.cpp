#include "Search/SearchIndex.h"
#include "Search/SearchText.h"
#include "Support/MadeStore.h"

#include "Host/HostFileNames.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

// The search over the messages of many conversations, on the disk that holds the working folder: from a key to the newest hits, as
// one types a word, and what it costs to take everything in. VELMORA_CONVERSATIONS says how many conversations of 100 messages (10,000).

using Velmora::FSearchIndex;

namespace
{
	constexpr int32 MessageCount = 100;
	constexpr int32 WordCount = 20'000;

	/** Words as often as in texts: the n-th most frequent one in n's share. The same ones in every run. */
	class FMadeTexts
	{
	public:
		FString Make(int32 Number)
		{
			FString Text;
			while (Text.Len() < 300)
			{
				State = State * 6364136223846793005ull + 1442695040888963407ull;
				const double Share = static_cast<double>(State >> 11) / 9007199254740992.0;
				AppendWord(Text, static_cast<int32>(std::pow(static_cast<double>(WordCount), Share)));
			}
			return Text;
		}

	private:
		static void AppendWord(FString& Text, int32 Number)
		{
			const TCHAR* const Syllables[] = { TEXT("ta"), TEXT("ro"), TEXT("mi"), TEXT("ne"), TEXT("lu"), TEXT("ser"), TEXT("con"),
				TEXT("par") };
			for (uint32 Rest = static_cast<uint32>(Number) * 2654435761u >> 11; Rest > 0; Rest >>= 4)
			{
				Text += Syllables[Rest & 7];
			}
			Text += TEXT(" ");
		}

		uint64 State = 1;
	};

	/** A store of many messages, made once and gone at the end. */
	class FMadeIndex
	{
	public:
		FMadeIndex()
		{
			const char* const Wanted = getenv("VELMORA_CONVERSATIONS");
			FMadeTexts Texts;
			FMadeStore::Fill(HostFileNameFromBytes(StorePath), Wanted ? atoi(Wanted) : 10'000, MessageCount,
				[&Texts](int32 Number) { return Texts.Make(Number); });
			const auto Start = std::chrono::steady_clock::now();
			bIsGood = Index.CatchUp().IsDone();
			Seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
		}
		~FMadeIndex()
		{
			std::error_code Ignored;
			std::filesystem::remove_all(Folder, Ignored);
		}
		static FMadeIndex& Get()
		{
			static const std::unique_ptr<FMadeIndex> Made = std::make_unique<FMadeIndex>();
			return *Made;
		}

		static std::string MakeFolder()
		{
			std::string Pattern = std::filesystem::current_path() / "search-benchmark-XXXXXX";
			return mkdtemp(Pattern.data()) ? Pattern : std::string("search-benchmark");
		}

		const std::string Folder = MakeFolder();
		const std::string StorePath = Folder + "/Game.db";
		const std::string IndexPath = Folder + "/Game.search.db";
		std::atomic<bool> bStops{ false };
		FSearchIndex Index{ StorePath, IndexPath, bStops };
		double Seconds = 0.0;
		bool bIsGood = false;
	};

	/** What a key costs: the hits of what stands in the box then. */
	void FindNewest(benchmark::State& State, const TCHAR* Query)
	{
		FMadeIndex& Made = FMadeIndex::Get();
		int32 Count = 0;
		for (auto _ : State)
		{
			const TOutcome<TArray<Velmora::FConversationHit>> Hits = Made.Index.Find(Velmora::SearchText::ReadQuery(Query), 50);
			Count = Hits ? Hits->Num() : -1;
			const TOutcome<bool> CaughtUp = Made.Index.CatchUp();
			if (!CaughtUp || *CaughtUp || !Made.bIsGood)
			{
				State.SkipWithError("The index failed.");
			}
		}
		std::error_code Ignored;
		State.counters["hits"] = Count;
		State.counters["take_in_s"] = Made.Seconds;
		State.counters["index_MB"] = static_cast<double>(std::filesystem::file_size(Made.IndexPath, Ignored)) / 1e6;
		State.counters["store_MB"] = static_cast<double>(std::filesystem::file_size(Made.StorePath, Ignored)) / 1e6;
	}
}

BENCHMARK_CAPTURE(FindNewest, t, TEXT("t"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, ta, TEXT("ta"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, tar, TEXT("tar"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, taro, TEXT("taro"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, tarom, TEXT("tarom"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, taromi, TEXT("taromi"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, two_words, TEXT("taro con"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, rare_words, TEXT("taromilu serconpar"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FindNewest, nothing, TEXT("zebra"))->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
