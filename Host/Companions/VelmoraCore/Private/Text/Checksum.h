#pragma once

#include <string>
#include <string_view>

namespace Velmora
{
	/** SHA-256 of the bytes, as 64 small hex digits: nobody can write another text that has the same. */
	std::string MakeChecksum(std::string_view Bytes);
}
