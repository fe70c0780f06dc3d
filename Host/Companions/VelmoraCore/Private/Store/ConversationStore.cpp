#include "Store/ConversationStore.h"

namespace Velmora
{
	FConversationStore& FConversationStore::Get()
	{
		static FConversationStore Instance;
		return Instance;
	}

	void FConversationStore::Save(const FConversationMetadata& Conversation)
	{
		if (Conversation.GetMessageCount() == 0)
		{
			return;
		}
		const std::scoped_lock Lock(Mutex);
		const int32 Index = FindIndex(Conversation.Id);
		if (Index != INDEX_NONE)
		{
			Conversations.RemoveAt(Index);
		}
		Conversations.Add(Conversation);
	}

	bool FConversationStore::Load(const FString& Id, FConversationMetadata& OutConversation) const
	{
		const std::scoped_lock Lock(Mutex);
		const int32 Index = FindIndex(Id);
		if (Index == INDEX_NONE)
		{
			return false;
		}
		OutConversation = Conversations[Index];
		return true;
	}

	bool FConversationStore::Delete(const FString& Id)
	{
		const std::scoped_lock Lock(Mutex);
		const int32 Index = FindIndex(Id);
		if (Index == INDEX_NONE)
		{
			return false;
		}
		Conversations.RemoveAt(Index);
		return true;
	}

	void FConversationStore::Clear()
	{
		const std::scoped_lock Lock(Mutex);
		Conversations.Empty();
	}

	TArray<FConversationMetadata> FConversationStore::GetAll() const
	{
		const std::scoped_lock Lock(Mutex);
		TArray<FConversationMetadata> Result;
		Result.Reserve(Conversations.Num());
		for (int32 Index = Conversations.Num() - 1; Index >= 0; --Index)
		{
			Result.Add(Conversations[Index]);
		}
		return Result;
	}

	int32 FConversationStore::FindIndex(const FString& Id) const
	{
		return Conversations.IndexOfByPredicate([&Id](const FConversationMetadata& Conversation) { return Conversation.Id == Id; });
	}
}
