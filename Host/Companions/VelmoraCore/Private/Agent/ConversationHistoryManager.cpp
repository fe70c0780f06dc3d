#include "Agent/ConversationHistoryManager.h"

#include "Store/ConversationStore.h"

namespace Velmora
{
	void FConversationHistoryManager::Initialize(const FString& Path)
	{
		bReadsDefaultStore = Path.IsEmpty();
	}

	TArray<FConversationMetadata> FConversationHistoryManager::GetConversationSummaries() const
	{
		return bReadsDefaultStore ? FConversationStore::Get().GetAll() : TArray<FConversationMetadata>();
	}
}
