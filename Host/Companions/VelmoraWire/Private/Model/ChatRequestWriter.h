#pragma once

#include <string>

#include "Model/ModelTypes.h"

namespace Velmora
{
	/** The body of a request for chat completions. What is no UTF-8 is repaired on the way. Pure. */
	std::string WriteChatRequest(const FModelRequest& Request);
}
