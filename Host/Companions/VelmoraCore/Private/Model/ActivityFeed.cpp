#include "Model/ActivityFeed.h"

#include "Async/Async.h"
#include "HAL/PlatformTime.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	// What AgentActivity.h shows; game thread.
	void TakeActivity();

	FActivityFeed& FActivityFeed::Get()
	{
		static FActivityFeed Feed;
		return Feed;
	}

	uint32 FActivityFeed::Open(FAgentActivityEntry&& Entry)
	{
		Entry.StartedAt = FDateTime::Now();
		const std::scoped_lock Lock(Mutex);
		Entry.Id = ++LastId;
		FItem Item;
		Item.Id = Entry.Id;
		Item.OpenedAt = FPlatformTime::Seconds();
		Item.Opened = MakeShared<FAgentActivityEntry>(MoveTemp(Entry));
		Items.push_back(std::move(Item));
		Announce();
		return LastId;
	}

	FActivityFeed::FItem& FActivityFeed::FindItem(uint32 Id)
	{
		// Several rows are seldom under way at once, so the last item is nearly always the one.
		for (auto Item = Items.rbegin(); Item != Items.rend(); ++Item)
		{
			if (Item->Id == Id && !Item->Fill)
			{
				return *Item;
			}
		}
		Items.emplace_back().Id = Id;
		return Items.back();
	}

	void FActivityFeed::AddPiece(uint32 Id, bool bIsThinking, std::string_view Bytes)
	{
		const std::scoped_lock Lock(Mutex);
		FItem& Item = FindItem(Id);
		std::string& Text = bIsThinking ? Item.Thinking : Item.Text;
		Text += Bytes;
		// While nobody takes it only the end is of interest. Twice the bound, so that not every piece moves it.
		constexpr size_t MaxBytes = static_cast<size_t>(FAgentActivity::MaxTextLength) * 2;
		if (Text.size() > 2 * MaxBytes)
		{
			Text.erase(0, Text.size() - MaxBytes);
		}
		++Item.Pieces;
		++TurnTokens;
		Announce();
	}

	void FActivityFeed::Close(uint32 Id, std::function<void(FAgentActivityEntry&)> Fill)
	{
		const std::scoped_lock Lock(Mutex);
		FItem& Item = FindItem(Id);
		Item.Fill = std::move(Fill);
		Item.ClosedAt = FPlatformTime::Seconds();
		Announce();
	}

	void FActivityFeed::AddNote(EAgentActivityKind Kind, std::string_view Sentence)
	{
		FAgentActivityEntry Entry;
		Entry.Kind = Kind;
		Entry.Title = Utf8Text::ToString(Sentence);
		Entry.bIsDone = Entry.bSuccess = true;
		Open(MoveTemp(Entry));
	}

	uint32 FActivityFeed::BeginTurn(std::string_view Agent)
	{
		const std::scoped_lock Lock(Mutex);
		RunningTurn = ++LastTurn;
		TurnStart = FPlatformTime::Seconds();
		TurnTokens = 0;
		TurnAgent = Agent;
		return RunningTurn;
	}

	void FActivityFeed::EndTurn(uint32 Turn)
	{
		// One that was stopped may come to its end after the next has begun.
		const std::scoped_lock Lock(Mutex);
		RunningTurn = RunningTurn == Turn ? 0 : RunningTurn;
		Announce();
	}

	void FActivityFeed::CountTokens(int64 Pieces, int64 Tokens)
	{
		const std::scoped_lock Lock(Mutex);
		TurnTokens += Tokens - Pieces;
	}

	FAgentTurnStatus FActivityFeed::GetTurnStatus()
	{
		const std::scoped_lock Lock(Mutex);
		FAgentTurnStatus Status;
		Status.bIsRunning = RunningTurn != 0;
		Status.Seconds = Status.bIsRunning ? FPlatformTime::Seconds() - TurnStart : 0.0;
		Status.Tokens = TurnTokens;
		Status.Agent = Utf8Text::ToString(TurnAgent);
		return Status;
	}

	std::vector<FActivityFeed::FItem> FActivityFeed::Take()
	{
		const std::scoped_lock Lock(Mutex);
		bIsAnnounced = false;
		return std::exchange(Items, std::vector<FItem>());
	}

	void FActivityFeed::Announce()
	{
		if (!bIsAnnounced)
		{
			bIsAnnounced = true;
			AsyncTask(ENamedThreads::GameThread, [] { TakeActivity(); });
		}
	}
}
