#pragma once

#include "Containers/Map.h"
#include "CoreMinimal.h"
#include "Misc/DateTime.h"

/** One change made by the agent to a file. */
struct FFileOperation
{
	FString Path;

	/** 1 created, 2 modified, 3 deleted; everything else is no known kind. */
	uint8 Action = 0;

	/** Local time of the change. */
	FDateTime Time = FDateTime(0);
};

/** What the agent has done to files, by conversation. Game thread. */
class VELMORACORE_API FFileHistoryTracker
{
public:
	static FFileHistoryTracker& Get();

	/** Outer key: id of the conversation. Inner key: the group under which the operations were filed. */
	const TMap<FString, TMap<FString, TArray<FFileOperation>>>& GetAllFileOperations() const { return Operations; }

	/** For the agent that makes the changes. A group is what RemoveGroup takes away at once; the local agent's is the undo transaction. */
	void AddOperation(const FString& ConversationId, const FString& Group, const FFileOperation& Operation);

	/** Forgets the operations of a group, as when they were undone. */
	void RemoveGroup(const FString& ConversationId, const FString& Group);

private:
	TMap<FString, TMap<FString, TArray<FFileOperation>>> Operations;
};
