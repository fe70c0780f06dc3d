#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CoreMinimal.h"

namespace Velmora::JsonText
{
	/** A condensed JSON object of texts, as the contract of a tool's row has it. Bytes that are no text are replaced. Pure. */
	FString MakeObject(const std::vector<std::pair<std::string_view, std::string>>& Fields);
}
