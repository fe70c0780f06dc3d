#include "Agent/ConversationHistoryManager.h"
#include "Store/ConversationStore.h"
#include "Support/MadeStore.h"

#include "Host/HostFileNames.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// The conversation store on the disk that holds the working folder: run it where the user's data would lie, not in memory.

using Velmora::FConversationMessage;
using Velmora::FConversationMetadata;
using Velmora::FConversationStore;

namespace
{
	constexpr int32 MessageLength = 300;

	class FBenchmarkFolder
	{
	public:
		FBenchmarkFolder()
		{
			std::string Pattern = std::filesystem::current_path() / "store-benchmark-XXXXXX";
			Path = mkdtemp(Pattern.data()) ? Pattern : std::string("store-benchmark");
		}
		~FBenchmarkFolder()
		{
			std::error_code Ignored;
			std::filesystem::remove_all(Path, Ignored);
		}
		FString GetDatabase() const { return HostFileNameFromBytes(Path + "/Game.db"); }

	private:
		std::string Path;
	};

	FConversationMessage MakeMessage(int32 Number)
	{
		FConversationMessage Message;
		Message.Role = Number % 2 == 0 ? Velmora::EConversationRole::User : Velmora::EConversationRole::Assistant;
		while (Message.Content.Len() < MessageLength)
		{
			Message.Content += TEXT("find the place where the number is used ");
			Message.Content.AppendInt(Number);
		}
		Message.Content = Message.Content.Left(MessageLength);
		return Message;
	}

	void Fill(const FString& Database, int32 ConversationCount, int32 MessageCount)
	{
		FMadeStore::Fill(Database, ConversationCount, MessageCount, [](int32 Number) { return MakeMessage(Number).Content; });
	}

	void Report(benchmark::State& State, std::vector<double>& Milliseconds)
	{
		std::sort(Milliseconds.begin(), Milliseconds.end());
		State.counters["median_ms"] = Milliseconds[Milliseconds.size() / 2];
		State.counters["p95_ms"] = Milliseconds[Milliseconds.size() * 95 / 100];
		State.counters["worst_ms"] = Milliseconds.back();
	}

	template <typename FWork>
	void Measure(benchmark::State& State, std::vector<double>& Milliseconds, const FWork& Work)
	{
		const auto Start = std::chrono::steady_clock::now();
		if (!Work())
		{
			State.SkipWithError("The store failed.");
		}
		Milliseconds.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - Start).count());
	}

	/** As the user's message is committed, at the end of a conversation in a store of many. */
	void CommitMessage(benchmark::State& State)
	{
		const FBenchmarkFolder Folder;
		Fill(Folder.GetDatabase(), 1000, 4);
		const TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(HostFileNameToBytes(Folder.GetDatabase()));
		Store->Check(); // As an agent has it done when it starts.
		FConversationMetadata Conversation;
		Conversation.Id = TEXT("measured");
		std::vector<double> Milliseconds;
		for (auto _ : State)
		{
			Conversation.Messages.Add(MakeMessage(Conversation.Messages.Num()));
			Measure(State, Milliseconds, [&] { return Store->Append(Conversation, Conversation.Messages.Num() - 1).IsDone(); });
		}
		Report(State, Milliseconds);
	}

	/** The same on a worker, which also moves the log into the main file now and then. */
	void CommitAnswer(benchmark::State& State)
	{
		const FBenchmarkFolder Folder;
		Fill(Folder.GetDatabase(), 1000, 4);
		const TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(HostFileNameToBytes(Folder.GetDatabase()));
		Store->Check();
		std::vector<double> Milliseconds;
		for (auto _ : State)
		{
			const FConversationMessage Message = MakeMessage(static_cast<int32>(Milliseconds.size()));
			Measure(State, Milliseconds, [&] { return Store->AppendMessage(FMadeStore::GetConversationId(5), Message).IsDone(); });
		}
		Report(State, Milliseconds);
	}

	void OpenToSummaries(benchmark::State& State)
	{
		const FBenchmarkFolder Folder;
		Fill(Folder.GetDatabase(), 10'000, 4);
		const std::string Database = HostFileNameToBytes(Folder.GetDatabase());
		std::vector<double> Milliseconds;
		for (auto _ : State)
		{
			Measure(State, Milliseconds,
				[&]
				{
					TArray<FConversationMetadata> Summaries;
					return FConversationStore::ReadSummaries(Database, Summaries) && Summaries.Num() == 10'000;
				});
		}
		Report(State, Milliseconds);
	}

	/** What the first message after the start waits for. */
	void OpenAndCommit(benchmark::State& State)
	{
		const FBenchmarkFolder Folder;
		Fill(Folder.GetDatabase(), 10'000, 4);
		std::vector<double> Milliseconds;
		for (auto _ : State)
		{
			FConversationMetadata Conversation;
			Conversation.Id.AppendInt(static_cast<int32>(Milliseconds.size()));
			Conversation.Messages.Add(MakeMessage(0));
			const TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(HostFileNameToBytes(Folder.GetDatabase()));
			Measure(State, Milliseconds, [&] { return Store->Append(Conversation, 0).IsDone(); });
		}
		Report(State, Milliseconds);
	}

	void LoadLongConversation(benchmark::State& State)
	{
		const FBenchmarkFolder Folder;
		Fill(Folder.GetDatabase(), 1, 10'000);
		const TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(HostFileNameToBytes(Folder.GetDatabase()));
		std::vector<double> Milliseconds;
		for (auto _ : State)
		{
			Measure(State, Milliseconds,
				[&]
				{
					const TOutcome<FConversationMetadata> Loaded = Store->Load(FMadeStore::GetConversationId(0));
					return Loaded && Loaded->Messages.Num() == 10'000;
				});
		}
		Report(State, Milliseconds);
	}

	/** The check of the whole file on a worker, once in the life of a process. */
	void CheckWholeStore(benchmark::State& State)
	{
		const FBenchmarkFolder Folder;
		Fill(Folder.GetDatabase(), 10'000, 4);
		std::vector<double> Milliseconds;
		for (auto _ : State)
		{
			const TSharedRef<FConversationStore> Store = MakeShared<FConversationStore>(HostFileNameToBytes(Folder.GetDatabase()));
			Measure(State, Milliseconds,
				[&]
				{
					Store->Check();
					return true;
				});
		}
		Report(State, Milliseconds);
	}

	BENCHMARK(CommitMessage)->Iterations(1000)->Unit(benchmark::kMillisecond);
	BENCHMARK(CommitAnswer)->Iterations(2000)->Unit(benchmark::kMillisecond);
	BENCHMARK(OpenToSummaries)->Iterations(20)->Unit(benchmark::kMillisecond);
	BENCHMARK(OpenAndCommit)->Iterations(50)->Unit(benchmark::kMillisecond);
	BENCHMARK(LoadLongConversation)->Iterations(20)->Unit(benchmark::kMillisecond);
	BENCHMARK(CheckWholeStore)->Iterations(5)->Unit(benchmark::kMillisecond);
}

/** "--fill DATABASE COUNT" adds one conversation of so many messages to a store, for measuring the program with it. */
int main(int ArgumentCount, char** Arguments)
{
	if (ArgumentCount == 4 && std::string(Arguments[1]) == "--fill")
	{
		FMadeStore::Fill(UTF8_TO_TCHAR(Arguments[2]), 1, std::atoi(Arguments[3]),
			[](int32 Number)
			{ return FString::Printf(TEXT("Message %d, long enough to fill more than one line of a narrow window."), Number); });
		return 0;
	}
	benchmark::Initialize(&ArgumentCount, Arguments);
	if (benchmark::ReportUnrecognizedArguments(ArgumentCount, Arguments))
	{
		return 1;
	}
	benchmark::RunSpecifiedBenchmarks();
	return 0;
}
