#include "Agent/ConversationHistoryManager.h"

#include "Host/StoreLocation.h"
#include "Store/ConversationStore.h"

namespace Velmora
{
	void FConversationHistoryManager::Initialize(const FString& Path)
	{
		const FStoreLocation Location = GetStoreLocation();
		bIsDefaultStore = Path.IsEmpty();
		DatabasePath = bIsDefaultStore ? Location.GetDatabasePath() : Path / (Location.ProjectName + TEXT(".db"));
	}

	TArray<FConversationMetadata> FConversationHistoryManager::GetConversationSummaries() const
	{
		TArray<FConversationMetadata> Summaries;
		bool bIsDamaged = false;
		if (DatabasePath.IsEmpty() || FConversationStore::ReadSummaries(DatabasePath, Summaries, bIsDamaged) || !bIsDamaged)
		{
			return Summaries;
		}
		// The agent's side of the library repairs its store; another folder is only looked at.
		if (bIsDefaultStore)
		{
			FConversationStore::GetDefault()->Check();
			Summaries.Empty();
			FConversationStore::ReadSummaries(DatabasePath, Summaries, bIsDamaged);
		}
		return Summaries;
	}
}
