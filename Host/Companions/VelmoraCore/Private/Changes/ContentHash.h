#pragma once

#include <string>
#include <string_view>

namespace Velmora
{
	/** SHA-256 (FIPS 180-4) of the bytes as 64 lower-case hexadecimal digits. Pure. */
	std::string HashContent(std::string_view Bytes);
}
