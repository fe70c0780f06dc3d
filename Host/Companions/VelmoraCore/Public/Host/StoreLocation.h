#pragma once

#include "CoreMinimal.h"
#include "Host/Outcome.h"

namespace Velmora
{
	/** Where the library keeps what must survive the process. The texts name the files even when they do not exist. */
	struct FStoreLocation
	{
		/** The folder "Velmora" of the engine's saved folder: absolute, no '/' at the end. */
		FString Folder;

		/** Where conversations, undo and the draft are kept: Folder, unless SetStoreFolders names another. */
		FString ConversationFolder;

		/** Name of the project's own files in it: the project folder's name and a hash of its real path, fit for every file system. */
		FString ProjectName;

		/** False for a run that leaves no conversations behind. */
		bool KeepsConversations() const { return ConversationFolder.Equals(Folder, ESearchCase::CaseSensitive); }

		/** One database of conversations per project. */
		FString GetDatabasePath() const { return ConversationFolder + TEXT("/") + ProjectName + TEXT(".db"); }

		/** What the search knows of the conversations; made anew when it is missing. */
		FString GetSearchPath() const { return ConversationFolder + TEXT("/") + ProjectName + TEXT(".search.db"); }

		/** Names and pins that the user has given to conversations. */
		FString GetMarksPath() const { return ConversationFolder + TEXT("/") + ProjectName + TEXT(".names"); }

		/** Former contents of files that the agent has changed. */
		FString GetUndoFolder() const { return ConversationFolder + TEXT("/") + ProjectName + TEXT(".undo"); }

		/** What the user has allowed and refused for good in the project. */
		FString GetRulesPath() const { return Folder + TEXT("/") + ProjectName + TEXT(".rules"); }

		/** Text of the prompt that was not sent yet. */
		FString GetDraftPath() const { return ConversationFolder + TEXT("/") + ProjectName + TEXT(".draft"); }
	};

	/** For the project that is open now. Any thread. Without a project folder the project's name is "none". */
	VELMORACORE_API FStoreLocation GetStoreLocation();

	/**
	 * Keeps things elsewhere, for a run that leaves nothing behind or whose user has no folder to write to. Absolute; an empty text
	 * means the usual place. Before anything else of the library is used.
	 */
	VELMORACORE_API void SetStoreFolders(const FString& Folder, const FString& ConversationFolder);

	/**
	 * Brings what an earlier run kept for this project in another folder, since it could not write to the usual one: the conversations,
	 * which the store takes over when it is next opened, what they can undo, and the draft where there is none here; the folder goes when
	 * nothing is left in it. What cannot be brought now stays for the next time, and so does what a program is still using. Before
	 * anything else of the library is used, in the usual place.
	 */
	VELMORACORE_API FOutcome BringHome(const FString& SpareFolder);

	/**
	 * Keeps connections, keys and consents of the user's elsewhere than in the configuration folder; absolute, empty for the usual place.
	 * Before anything else of the library is used.
	 */
	VELMORACORE_API void SetConfigFolder(const FString& Folder);

	/** HOME, or the home folder of the user's record where that is not set. Absolute; empty when neither names one. Any thread. */
	VELMORACORE_API FString GetUserHomeFolder();

	/**
	 * Makes a folder and the missing ones above it, each for the user alone (mode 0700), whatever the mask. The folder itself
	 * becomes so when it is found wider. Any thread. Words are a sentence.
	 */
	VELMORACORE_API FOutcome MakePrivateFolder(const FString& Folder);
}
