#pragma once

#include <string_view>
#include <utility>
#include <vector>

/** What lines of code are to a reader, whatever the language. All pure. */
namespace Velmora::CodeLines
{
	/** A definition is shown up to here. */
	constexpr int MaxDefinitionLines = 40;

	bool IsComment(std::string_view Line);

	/** Where to show a definition that starts at Line (from 1): first and last line, the comment above included. */
	std::pair<int, int> MeasureDefinition(const std::vector<std::string_view>& Lines, int Line);
}
