#pragma once

#include <string_view>

#include "FileCache/ProjectFileCache.h"

namespace Velmora
{
	/** What the name of a file says it is for. Letter case counts for nothing. Pure. */
	EProjectFileType ClassifyProjectFile(std::string_view Name);
}
