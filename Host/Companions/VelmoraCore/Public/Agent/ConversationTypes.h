#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"

namespace Velmora
{
	/** The life of a conversation as the agent sees it. The numbers are part of the contract. */
	enum class EConversationState : uint8
	{
		NotStarted = 0, // No conversation is running.
		Initializing = 1, // The agent prepares; it takes no message yet.
		Ready = 2, // Idle, nothing asked yet.
		Thinking = 3, // A turn runs, between tools.
		ExecutingTools = 4, // A turn runs a tool.
		AwaitingInput = 5, // A turn has ended well; the next message is awaited.
		Paused = 6, // A turn waits to be resumed or cancelled.
		Completed = 7, // The conversation has reached its end.
		Cancelled = 8, // The user has stopped the last turn.
		Error = 9 // The last turn has failed.
	};

	/** What the agent may work on. Any other number counts as General. */
	enum class EConversationMode : uint8
	{
		Advisor = 0, // Answers, changes nothing on disk.
		Code = 1,
		Assets = 2,
		General = 3
	};

	/** Who wrote a stored message. */
	enum class EConversationRole : uint8
	{
		User = 0,
		Assistant = 1,
		Tool = 2 // Traffic between the agent and its tools; not shown.
	};

	/** One stored message of a conversation. */
	struct FConversationMessage
	{
		FString Content;
		EConversationRole Role = EConversationRole::User;

		/** Meaningful for messages of the assistant only. */
		bool bHasToolCalls = false;

		bool IsUserMessage() const { return Role == EConversationRole::User; }
		bool IsAssistantMessage() const { return Role == EConversationRole::Assistant; }

		/** The message came with calls of tools, whose results follow it. */
		bool HasToolCalls() const { return bHasToolCalls; }
	};

	/**
	 * One conversation with its messages. Copyable. A current conversation is shared between the agent and
	 * its front end, both on the game thread; copies may travel anywhere.
	 */
	struct FConversationMetadata
	{
		/** Identity: 32 hexadecimal digits for conversations that the local agent opens. Stays the first field. */
		FString Id;

		/** May be written in place while the conversation is current; the agent obeys the new value. */
		EConversationMode Mode = EConversationMode::General;

		/** Local time of the last change. */
		FDateTime LastUpdated = FDateTime(0);

		/** In the order in which they were said. */
		TArray<FConversationMessage> Messages;

		const TArray<FConversationMessage>& GetMessages() const { return Messages; }
		int32 GetMessageCount() const { return Messages.Num(); }
	};
}
