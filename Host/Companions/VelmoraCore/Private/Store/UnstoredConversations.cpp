#include "Store/UnstoredConversations.h"

#include "Store/ConversationStore.h"

namespace Velmora
{
	void FUnstoredConversations::Add(const TSharedRef<FConversationStore>& Store, const TSharedRef<FConversationMetadata>& Conversation,
		int32 StoredCount, const FAttachedFiles& Attached)
	{
		Waiting.Add({ Store, Conversation, StoredCount, Attached });
	}

	int32 FUnstoredConversations::Find(const FString& Id) const
	{
		return Waiting.IndexOfByPredicate([&Id](const FWaiting& One) { return One.Conversation->Id == Id; });
	}

	bool FUnstoredConversations::Has(const FString& Id) const
	{
		return Find(Id) != INDEX_NONE;
	}

	TSharedPtr<FConversationMetadata> FUnstoredConversations::Take(const FString& Id, int32& OutStoredCount, FAttachedFiles& OutAttached)
	{
		const int32 Index = Find(Id);
		if (Index == INDEX_NONE)
		{
			return nullptr;
		}
		const TSharedPtr<FConversationMetadata> Taken = Waiting[Index].Conversation;
		OutStoredCount = Waiting[Index].StoredCount;
		OutAttached = MoveTemp(Waiting[Index].Attached);
		Waiting.RemoveAt(Index);
		return Taken;
	}

	void FUnstoredConversations::Remove(const FString& Id)
	{
		Waiting.RemoveAll([&Id](const FWaiting& One) { return One.Conversation->Id == Id; });
	}

	FOutcome FUnstoredConversations::Store(int32 TimeoutMilliseconds)
	{
		while (Waiting.Num() > 0)
		{
			const FWaiting& First = Waiting[0];
			if (FOutcome Stored = First.Store->Append(*First.Conversation, First.StoredCount, TimeoutMilliseconds, First.Attached); !Stored)
			{
				return Stored;
			}
			Waiting.RemoveAt(0);
		}
		return FOutcome::Done();
	}

	TArray<FConversationMetadata> FUnstoredConversations::GetAll() const
	{
		TArray<FConversationMetadata> All;
		for (int32 Index = Waiting.Num() - 1; Index >= 0; --Index)
		{
			All.Add(*Waiting[Index].Conversation);
		}
		return All;
	}

	int32 FUnstoredConversations::CountMessages() const
	{
		int32 Count = 0;
		for (const FWaiting& One : Waiting)
		{
			Count += One.Conversation->Messages.Num() - One.StoredCount;
		}
		return Count;
	}
}
