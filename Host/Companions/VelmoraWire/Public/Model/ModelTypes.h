#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "CoreMinimal.h"
#include "Http/HttpRequest.h"

namespace Velmora
{
	enum class EModelRole
	{
		System,
		User,
		Assistant,
		Tool
	};

	/** A tool that a model wants to be run. */
	struct FModelCall
	{
		std::string Id;
		std::string Name;

		/** JSON text as the model gave it; it may be no object, or no JSON at all. "{}" when it gave none. */
		std::string Arguments;

		/** The arguments were larger than allowed and are not here: the call cannot be run. */
		bool bIsTooLarge = false;
	};

	/** One message of a conversation as a model sees it. */
	struct FModelMessage
	{
		EModelRole Role = EModelRole::User;
		std::string Text;

		/** Of the assistant only. */
		std::vector<FModelCall> Calls;

		/** Of a tool's result only: the call that it answers. */
		std::string CallId;
	};

	/** What a model is told about a tool. */
	struct FModelTool
	{
		std::string Name;
		std::string Description;

		/** JSON schema of the arguments: an object. */
		std::string Parameters;
	};

	/** One request to a model. */
	struct FModelRequest
	{
		std::string Model;
		std::vector<FModelMessage> Messages;
		std::vector<FModelTool> Tools;

		/** Further members of the request (temperature and the like), a JSON object; what the request sets itself is passed over. */
		std::string Options;

		/** Some servers refuse what they do not know; then these are asked for no more. */
		bool bAsksForUsage = true;
	};

	/** Where a model is and how it is reached. */
	struct FModelServer
	{
		/** "http://127.0.0.1:8080/v1" */
		std::string BaseUrl;

		/** Empty when the server needs none. */
		std::string Key;
		std::string CaFile;
		std::string Proxy;
		FHttpLimits Limits;
	};

	/** Negative where the server says nothing. */
	struct FModelUsage
	{
		int64_t PromptTokens = -1;
		int64_t CompletionTokens = -1;
		int64_t CachedTokens = -1;
		int64_t ReasoningTokens = -1;
	};

	/** Why a model ended its answer. */
	enum class EModelFinish
	{
		Missing, // It did not end it.
		Stop,
		Calls,
		Length, // No room was left.
		Filtered // The server held it back.
	};

	enum class EModelFault
	{
		None,
		Cancelled,
		BadAddress,
		Unreachable, // No connection.
		NotTrusted,
		Refused, // 401, 403: the key.
		NotFound, // 404: the address or the model.
		Redirected,
		RateLimited, // 429
		Overloaded, // 5xx and the like: another try may help.
		ContextFull, // The conversation is longer than the model can take.
		NoTools, // The model cannot use tools.
		NoUsage, // The server does not know the wish for figures.
		BadRequest, // Any other refusal.
		NoModelServer, // It speaks something else: a web page, for one.
		BadAnswer, // It speaks the protocol, and breaks it.
		Silent,
		CutShort,
		TooLarge
	};

	/** What went wrong. The text never holds the key. */
	struct FModelProblem
	{
		EModelFault Fault = EModelFault::None;

		/** The server's own words, or the library's; one line, bounded; may be empty. */
		std::string Detail;
		int Status = 0;

		/** Negative when the server says nothing. */
		double RetryAfterSeconds = -1.0;

		/** Of the model, where a refusal names it; else 0. */
		int64_t ContextTokens = 0;

		explicit operator bool() const { return Fault != EModelFault::None; }
	};

	/** One answer of a model, whole or as far as it came. All text is UTF-8. */
	struct FModelReply
	{
		std::string Text;

		/** What it thought before; not part of the answer. */
		std::string Thinking;
		std::vector<FModelCall> Calls;

		/** How many calls beyond the limit were left out. */
		int DroppedCalls = 0;
		EModelFinish Finish = EModelFinish::Missing;
		FModelUsage Usage;

		/** As the server names it. */
		std::string Model;
		FModelProblem Problem;

		double FirstByteSeconds = -1.0;
		double Seconds = 0.0;
		uint64_t ReceivedBytes = 0;
	};

	/** One model that a server offers. */
	struct FModelInfo
	{
		std::string Id;

		/** How many tokens a conversation may have; 0 when the server does not say. */
		int64_t ContextTokens = 0;
	};

	/** The model of that name in a list, or null. Some servers list a name with the tag that it has when none is given. Pure. */
	VELMORAWIRE_API const FModelInfo* FindModel(const std::vector<FModelInfo>& Models, std::string_view Name);
}
