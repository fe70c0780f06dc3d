#pragma once

#include "Containers/StringView.h"
#include "Containers/UnrealString.h"

#include <string>
#include <string_view>

/**
 * File names between the file system's bytes and our UTF-16 texts. A byte that is not part of valid UTF-8 becomes the
 * lone unit U+DC80..U+DCFF and back, so every name that exists can be opened again. Other lone surrogates, which no
 * file system handed to us, become U+FFFD. Pure, any thread.
 */
CORE_API std::string HostFileNameToBytes(FStringView Name);
CORE_API FString HostFileNameFromBytes(std::string_view Bytes);
