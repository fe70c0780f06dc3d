#pragma once

#include <string_view>

#include "Http/HttpRequest.h"
#include "Model/ModelTypes.h"

namespace Velmora::ModelFaults
{
	/** What a server says of a refusal; each may be empty. */
	struct FWords
	{
		std::string_view Text;
		std::string_view Type;
		std::string_view Code;
	};

	/** What a refusal means. The status is 200 for one that comes in the middle of a stream. Pure. */
	EModelFault FromRefusal(int Status, const FWords& Words);

	/** What the end of an exchange without a whole answer means. Pure. */
	EModelFault FromEnd(EHttpEnd End);

	/** The figure in "maximum context length is 8192 tokens", or 0. Pure. */
	int64_t FindContextTokens(std::string_view Text);
}
