#pragma once

#include "CoreMinimal.h"
#include "Containers/Map.h"
#include "Host/Outcome.h"

namespace Velmora
{
	class FSqliteConnection;

	/** What was attached to the messages of a conversation: the place of a message in it, and its files as they were given. */
	using FAttachedFiles = TMap<int32, TArray<FString>>;

	/**
	 * How they lie in a store: attachments(key, files, checksum), by the key of their message, with which they go whoever deletes it.
	 * The table is made when it is first needed, so a store without it is whole, and earlier versions pass it by.
	 */
	namespace AttachedFiles
	{
		/** Within a transaction. */
		FOutcome Add(FSqliteConnection& Connection, int64 Key, const TArray<FString>& Files);

		/** @param Number  Of the conversation. A row that is not as it was written is none: the message is worth more than what it had. */
		FOutcome Read(FSqliteConnection& Connection, int64 Number, FAttachedFiles& OutFiles);
	}
}
