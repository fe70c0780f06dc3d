#pragma once

#include "CoreTypes.h"

#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 one character at a time: the one encoder and the one decoder for whatever is built on them. Pure, any thread.

/** Up to U+10FFFF. Surrogates are encoded as they are; who does not want them replaces them before. */
CORE_API void HostAppendUtf8(std::string& Out, char32_t Character);

/**
 * The character at the start of some bytes.
 *
 * @return Its length; 0 when it is not well-formed (overlong, a surrogate, cut off, beyond U+10FFFF) or there are no bytes.
 */
CORE_API std::size_t HostDecodeUtf8(std::string_view Bytes, char32_t& OutCharacter);
