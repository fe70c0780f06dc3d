#pragma once

#include <string>
#include <string_view>

/**
 * Changes inside the bytes of a text file that leave everything else as it is: byte order mark, encoding (UTF-8 or
 * anything that holds ASCII, UTF-16 with its mark) and line ends. Texts that come in are UTF-8 with line feeds.
 * All pure.
 */
namespace Velmora::TextPassage
{
	/** NULs, and no mark of UTF-16 that would explain them. */
	bool IsBinary(std::string_view Bytes);

	/**
	 * Replaces the one place where Old stands. A line feed in it stands for whatever line end the file has.
	 *
	 * @param OutCount  In how many places it stands; only with one of them anything is replaced.
	 */
	bool Replace(std::string_view Bytes, std::string_view Old, std::string_view New, size_t& OutCount, std::string& OutBytes);

	/** Adds whole lines at the end. */
	std::string Append(std::string_view Bytes, std::string_view Text);

	/** Another text in the place of the old one, with the old one's mark, encoding and line ends. */
	std::string Rewrite(std::string_view OldBytes, std::string_view Text);
}
