#include "Store/TurnRecorder.h"

#include "Store/ConversationStore.h"

namespace Velmora
{
	FTurnRecorder::FTurnRecorder(const TSharedRef<FConversationStore>& InStore, const FString& InConversationId, bool bInIsBehind)
		: Store(InStore)
		, ConversationId(InConversationId)
		, bIsBehind(bInIsBehind)
	{
	}

	void FTurnRecorder::Record(const FConversationMessage& Message)
	{
		uint32 StartGeneration = 0;
		{
			const std::scoped_lock Lock(Mutex);
			if (bIsBehind || bIsDropped)
			{
				return;
			}
			StartGeneration = Generation;
		}
		const TOutcome<int64> Stored = Store->AppendMessage(ConversationId, Message);
		{
			const std::scoped_lock Lock(Mutex);
			bIsBehind = !Stored || Generation != StartGeneration;
			if (bIsBehind)
			{
				return;
			}
			if (!bIsDropped)
			{
				UntoldKeys.push_back(*Stored);
				return;
			}
		}
		Withdraw(*Stored);
	}

	bool FTurnRecorder::TakeStored()
	{
		const std::scoped_lock Lock(Mutex);
		if (UntoldKeys.empty())
		{
			return false;
		}
		UntoldKeys.erase(UntoldKeys.begin());
		return true;
	}

	void FTurnRecorder::Forget()
	{
		const std::scoped_lock Lock(Mutex);
		++Generation;
		bIsBehind = true;
		UntoldKeys.clear();
	}

	void FTurnRecorder::Drop()
	{
		std::vector<int64> Keys;
		{
			const std::scoped_lock Lock(Mutex);
			bIsDropped = true;
			Keys.swap(UntoldKeys);
		}
		for (const int64 Key : Keys)
		{
			Withdraw(Key);
		}
	}

	void FTurnRecorder::Withdraw(int64 Key)
	{
		// One that cannot be taken back now stays in the store: a sentence too many is better than one too few.
		(void)Store->Withdraw(ConversationId, Key);
	}
}
