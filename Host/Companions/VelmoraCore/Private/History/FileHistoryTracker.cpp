#include "History/FileHistoryTracker.h"

FFileHistoryTracker& FFileHistoryTracker::Get()
{
	static FFileHistoryTracker Instance;
	return Instance;
}

void FFileHistoryTracker::AddOperation(const FString& ConversationId, const FString& Group, const FFileOperation& Operation)
{
	Operations.FindOrAdd(ConversationId).FindOrAdd(Group).Add(Operation);
}

void FFileHistoryTracker::RemoveGroup(const FString& ConversationId, const FString& Group)
{
	if (TMap<FString, TArray<FFileOperation>>* const Groups = Operations.Find(ConversationId))
	{
		Groups->Remove(Group);
		if (Groups->Num() == 0)
		{
			Operations.Remove(ConversationId);
		}
	}
}
