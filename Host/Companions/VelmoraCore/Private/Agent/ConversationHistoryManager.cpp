#include "Agent/ConversationHistoryManager.h"

#include "Host/AgentSeam.h"
#include "Host/HostFileNames.h"
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

	namespace
	{
		TArray<FConversationMetadata> ReadSummaries(const std::string& Path, bool bIsDefaultStore)
		{
			TArray<FConversationMetadata> Summaries;
			if (Path.empty() || !FConversationStore::ReadSummaries(Path, Summaries).Is(EOutcome::Damaged))
			{
				return Summaries;
			}
			// The agent's side of the library repairs its store; another folder is only looked at.
			if (bIsDefaultStore)
			{
				FConversationStore::GetDefault()->Check();
				Summaries.Empty();
				(void)FConversationStore::ReadSummaries(Path, Summaries); // What there is.
			}
			return Summaries;
		}
	}

	TArray<FConversationMetadata> FConversationHistoryManager::GetConversationSummaries() const
	{
		const auto ReadUsual = [this] { return ReadSummaries(HostFileNameToBytes(DatabasePath), bIsDefaultStore); };
		const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get();
		return Seam ? Seam->ReadSummaries(ReadUsual) : ReadUsual();
	}
}
