#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"
#include "Model/ModelTypes.h"

#include "Agent/ConversationTypes.h"

/**
 * A stored conversation as a model is sent it. Calls and results are messages of the role Tool, as JSON; what is stored
 * may end anywhere, and what comes of it is always a request that a server accepts. All pure.
 */
namespace Velmora::Transcript
{
	/** The message that follows one of the assistant with calls. */
	FString WriteCalls(const std::vector<FModelCall>& Calls);

	/** The message with the result of one call. */
	FString WriteResult(std::string_view CallId, std::string_view Text);

	/**
	 * Every call has its result right behind it, made up where it is missing; a result without a call is left out;
	 * messages of the user or the assistant that follow each other are one.
	 */
	std::vector<FModelMessage> Read(const TArray<FConversationMessage>& Stored);

	/** Adds a message, to the last one if that is of the same role and neither has calls. */
	void Append(std::vector<FModelMessage>& Messages, FModelMessage&& Message);

	/** What has been left out of a request so that it fits. */
	struct FShortening
	{
		int Results = 0;

		/** The oldest messages, which are gone. */
		std::vector<FModelMessage> Messages;

		bool IsAny() const { return Results > 0 || !Messages.empty(); }
	};

	/** About how large the messages are in a request. In bytes. */
	size_t Measure(const std::vector<FModelMessage>& Messages);

	/**
	 * Makes the messages fit: cuts the oldest results of tools first, then leaves out the oldest messages but for the system's
	 * and what follows the last one of the user, and cuts last what the model has just asked for. A note stands where something was.
	 */
	FShortening Shorten(std::vector<FModelMessage>& Messages, size_t MaxBytes);

	/** Takes messages out, before one of the user's, and leaves the note in that one. Gives what is gone. */
	std::vector<FModelMessage> LeaveOut(std::vector<FModelMessage>& Messages, size_t First, size_t Count);

	/** Puts a summary of what Shorten has left out in the place of its note. Nothing happens where there is no note. */
	void PutSummary(std::vector<FModelMessage>& Messages, std::string_view Summary);

	/** Messages as one text for people and models, of at most that many bytes: the beginning and the end of it. */
	std::string WriteAsText(const std::vector<FModelMessage>& Messages, size_t MaxBytes);
}
