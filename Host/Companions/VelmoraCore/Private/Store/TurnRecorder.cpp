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
		int64 Key = 0;
		FString Problem;
		const bool bIsStored = Store->AppendMessage(ConversationId, Message, Key, Problem) == EStoreResult::Done;
		{
			const std::scoped_lock Lock(Mutex);
			bIsBehind = !bIsStored || Generation != StartGeneration;
			if (bIsBehind)
			{
				return;
			}
			if (!bIsDropped)
			{
				UntoldKeys.push_back(Key);
				return;
			}
		}
		Store->Withdraw(ConversationId, Key, Problem);
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
		FString Problem;
		for (const int64 Key : Keys)
		{
			Store->Withdraw(ConversationId, Key, Problem);
		}
	}
}
