#include "MadeStore.h"

#include "Host/HostFileNames.h"
#include "Host/Sqlite.h"
#include "Store/ConversationStore.h"
#include "Store/StoreSchema.h"

#include <cstdio>
#include <cstdlib>
#include <string>

using Velmora::FConversationMessage;
using Velmora::FConversationStore;

namespace
{
	std::string MakeConversationId(int32 ConversationNumber)
	{
		char Id[33];
		snprintf(Id, sizeof(Id), "%032X", ConversationNumber);
		return Id;
	}
}

FString FMadeStore::GetConversationId(int32 ConversationNumber)
{
	return FString(UTF8_TO_TCHAR(MakeConversationId(ConversationNumber).c_str()));
}

void FMadeStore::Fill(const FString& Database, int32 ConversationCount, int32 MessageCount, FMakeText MakeText)
{
	(void)MakeShared<FConversationStore>(HostFileNameToBytes(Database))->Load(TEXT("none")); // Makes the file.
	Velmora::FSqliteConnection Connection;
	bool bIsFilled = Velmora::StoreSchema::Open(Connection, HostFileNameToBytes(Database), Velmora::ESqliteAccess::Write,
						 FConversationStore::WorkerTimeoutMilliseconds) &&
		Connection.Execute("BEGIN");
	for (int32 Number = 0; Number < ConversationCount; ++Number)
	{
		TArray<FConversationMessage> Messages;
		for (int32 Index = 0; Index < MessageCount; ++Index)
		{
			FConversationMessage& Message = Messages.AddDefaulted_GetRef();
			Message.Role = Index % 2 == 0 ? Velmora::EConversationRole::User : Velmora::EConversationRole::Assistant;
			Message.Content = MakeText(Index);
		}
		Velmora::StoreSchema::FConversationRow Row;
		Row.Id = MakeConversationId(Number);
		Row.Updated = FDateTime::UtcNow().GetTicks() - Number;
		Row.Opening = Velmora::StoreSchema::MakeOpening(Messages);
		bIsFilled = bIsFilled && Velmora::StoreSchema::InsertConversation(Connection, Row);
		for (const FConversationMessage& Message : Messages)
		{
			bIsFilled = bIsFilled && Velmora::StoreSchema::AddMessage(Connection, Row.Number, Message);
		}
	}
	if (!bIsFilled || !Connection.Execute("COMMIT") || !Connection.Checkpoint(true))
	{
		fprintf(stderr, "The store to be measured could not be made.\n");
		exit(1);
	}
}
