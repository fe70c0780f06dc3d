#pragma once

#include <string>

#include "Changes/ProjectAccess.h"

/** What open files have besides their bytes. */
namespace Velmora::FileTraits
{
	/** What cannot be read is left out. */
	FFileTraits Read(int File);

	/** Gives an open file those traits and no others. Answers with what it could not get, "its owner", or nothing. */
	std::string Apply(int File, const FFileTraits& Traits);
}
