#include "Text/Checksum.h"

#include <glib.h>
#include <memory>

namespace Velmora
{
	std::string MakeChecksum(std::string_view Bytes)
	{
		const std::unique_ptr<char, decltype(&g_free)> Digits(
			g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(Bytes.data()), Bytes.size()), &g_free);
		return Digits ? Digits.get() : std::string();
	}
}
