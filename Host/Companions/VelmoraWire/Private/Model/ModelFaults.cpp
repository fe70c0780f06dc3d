#include "Model/ModelFaults.h"

#include <algorithm>
#include <string>

namespace Velmora::ModelFaults
{
	namespace
	{
		/** A word that stands in what a server says, and what it means whatever the status is. The first row that fits counts. */
		struct FWordRow
		{
			std::string_view Word;
			EModelFault Fault;
		};

		// clang-format off
		constexpr FWordRow CodeRows[] = {
			{ "exceed_context_size",     EModelFault::ContextFull },
			{ "context_length_exceeded", EModelFault::ContextFull },
			{ "insufficient_quota",      EModelFault::BadRequest },
			{ "rate_limit",              EModelFault::RateLimited },
			{ "overloaded",              EModelFault::Overloaded },
			{ "authentication",          EModelFault::Refused },
			{ "invalid_api_key",         EModelFault::Refused },
			{ "model_not_found",         EModelFault::NotFound },
		};

		constexpr FWordRow TextRows[] = {
			{ "stream_options",          EModelFault::NoUsage },
			{ "maximum context length",  EModelFault::ContextFull },
			{ "available context size",  EModelFault::ContextFull },
			{ "context length exceeded", EModelFault::ContextFull },
			{ "context length of only",  EModelFault::ContextFull },
			{ "context window",          EModelFault::ContextFull },
			{ "context limit",           EModelFault::ContextFull },
			{ "prompt is too long",      EModelFault::ContextFull },
			{ "maximum prompt length",   EModelFault::ContextFull },
			{ "number of tokens allowed", EModelFault::ContextFull },
			{ "`max_new_tokens` must be", EModelFault::ContextFull },
			{ "does not support tool",   EModelFault::NoTools },
			{ "support tool use",        EModelFault::NoTools },
			{ "does not support function", EModelFault::NoTools },
			{ "tool calling is not",     EModelFault::NoTools },
			{ "tool calling` is not",    EModelFault::NoTools },
			{ "function calling is not", EModelFault::NoTools },
			{ "'tools' is not supported", EModelFault::NoTools },
			{ "tools param requires",    EModelFault::NoTools },
			{ "tool choice requires",    EModelFault::NoTools },
			{ "parse error",             EModelFault::BadRequest },
		};
		// clang-format on

		std::string ToLower(std::string_view Text)
		{
			std::string Lower(Text);
			std::transform(Lower.begin(), Lower.end(), Lower.begin(),
				[](char Byte) { return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte; });
			return Lower;
		}

		EModelFault FromStatus(int Status)
		{
			switch (Status)
			{
			case 401:
			case 402:
			case 403:
			case 407:
				return EModelFault::Refused;
			case 404:
			case 405:
				return EModelFault::NotFound;
			case 413:
				return EModelFault::ContextFull;
			case 429:
				return EModelFault::RateLimited;
			case 408:
			case 425:
				return EModelFault::Overloaded;
			default:
				return Status >= 500 ? EModelFault::Overloaded : EModelFault::BadRequest;
			}
		}
	}

	EModelFault FromRefusal(int Status, const FWords& Words)
	{
		for (const std::string_view Source : { Words.Code, Words.Type })
		{
			const std::string Lower = ToLower(Source);
			for (const FWordRow& Row : CodeRows)
			{
				if (Lower.find(Row.Word) != std::string::npos)
				{
					// A request that is larger than all that a minute may have does not fit in the next one either.
					return Status == 413 && Row.Fault == EModelFault::RateLimited ? EModelFault::ContextFull : Row.Fault;
				}
			}
		}
		const std::string Text = ToLower(Words.Text);
		for (const FWordRow& Row : TextRows)
		{
			if (Text.find(Row.Word) != std::string::npos)
			{
				return Row.Fault;
			}
		}
		// In the middle of a stream the status was sent long ago; some put it into the code.
		const int InnerStatus = Words.Code.size() == 3 ? std::atoi(std::string(Words.Code).c_str()) : 0;
		if (Status < 400 && InnerStatus < 400)
		{
			return ToLower(Words.Type).find("server_error") != std::string::npos ? EModelFault::Overloaded : EModelFault::BadAnswer;
		}
		return FromStatus(Status >= 400 ? Status : InnerStatus);
	}

	EModelFault FromEnd(EHttpEnd End)
	{
		switch (End)
		{
		case EHttpEnd::Complete:
		case EHttpEnd::Stopped:
			return EModelFault::None;
		case EHttpEnd::Cancelled:
			return EModelFault::Cancelled;
		case EHttpEnd::BadRequest:
			return EModelFault::BadAddress;
		case EHttpEnd::NotResolved:
		case EHttpEnd::NotConnected:
			return EModelFault::Unreachable;
		case EHttpEnd::NotTrusted:
			return EModelFault::NotTrusted;
		case EHttpEnd::FirstByteTimeout:
		case EHttpEnd::Silence:
		case EHttpEnd::TotalTimeout:
			return EModelFault::Silent;
		case EHttpEnd::CutShort:
			return EModelFault::CutShort;
		case EHttpEnd::TooLarge:
			return EModelFault::TooLarge;
		case EHttpEnd::Compressed:
		case EHttpEnd::Failed:
			return EModelFault::NoModelServer;
		}
		return EModelFault::NoModelServer;
	}

	int64_t FindContextTokens(std::string_view Text)
	{
		const std::string Lower = ToLower(Text);
		for (const std::string_view Word : { "maximum context length is ", "available context size (", "context length of only ",
				 "context window of ", "maximum prompt length is ", "tokens allowed (", "`max_new_tokens` must be <= ", "tokens > " })
		{
			const size_t Found = Lower.find(Word);
			if (Found == std::string::npos)
			{
				continue;
			}
			int64_t Value = 0;
			for (size_t Index = Found + Word.size(); Index < Lower.size() && Value < 1000000000; ++Index)
			{
				if (Lower[Index] < '0' || Lower[Index] > '9')
				{
					break;
				}
				Value = Value * 10 + (Lower[Index] - '0');
			}
			return Value;
		}
		return 0;
	}
}
