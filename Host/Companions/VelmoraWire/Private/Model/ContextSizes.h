#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <rapidjson/document.h>

#include "Http/HttpRequest.h"

/** How many tokens a conversation with a model may have, in the words of each server. All pure; 0 is "not told". */
namespace Velmora::ContextSizes
{
	/** A figure that no server can mean is none. */
	int64_t Check(int64_t Tokens);

	/** Of one model of a list: each server has a name of its own for it. */
	int64_t FindInModel(const rapidjson::Value& Model);

	/** What common servers are asked beside their list, at the same scheme, host and port: address and body. None of another form. */
	std::vector<FHttpRequest> MakeRequests(std::string_view BaseUrl, std::string_view Model);

	/** Of an answer to one of those but for lists. Any bytes. */
	int64_t Read(std::string_view Body);
}
