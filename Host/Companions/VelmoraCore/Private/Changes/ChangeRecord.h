#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Changes/ProjectAccess.h"

namespace Velmora
{
	/** What stood or stands under a name, as far as undo brings it back. */
	struct FEntryState
	{
		EEntryKind Kind = EEntryKind::Absent;
		uint32_t Mode = 0;

		/** Of a file. */
		FFileTraits Traits;

		/** Of a file's bytes (HashContent). */
		std::string Hash;
		std::string LinkTarget;

		bool operator==(const FEntryState&) const = default;

		/** The same but for mode and traits. */
		bool HoldsSame(const FEntryState& Other) const
		{
			return Kind == Other.Kind && Hash == Other.Hash && LinkTarget == Other.LinkTarget;
		}
	};

	/** @param Bytes  Of a file; nothing for what is none. */
	FEntryState MakeEntryState(const FEntryInfo& Info, const std::string& Bytes);

	/** One change of one file, as it was made. */
	struct FChangeRecord
	{
		std::string Root;

		/** Which folder that was: another one may have come to stand there since. */
		FFolderIdentity RootIdentity;
		std::string Path;
		FEntryState Before;
		FEntryState After;

		/** Folders made for it, the outer ones first. */
		std::vector<std::string> MadeFolders;
		std::string TemporaryName;

		/** The other names of the same file in the project. */
		std::vector<std::string> OtherNames;
	};

	/** What was done for one message of the user. */
	struct FChangeTransaction
	{
		std::string Id;
		std::string ConversationId;

		/** Where the message stands in its conversation. */
		int MessageIndex = 0;

		/** What the message is known by (HashMessageText). Empty: by its place alone. */
		std::string MessageMark;

		/** Places of texts of the user's that changed its course. */
		std::vector<int> LaterMessages;

		/** In the order in which they were made. */
		std::vector<FChangeRecord> Records;

		/** Its former contents had to make room. */
		bool bIsDropped = false;

		/** The log says which message it belongs to. */
		bool bIsLogged = false;
	};
}
