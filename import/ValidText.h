#pragma once

#include <string>
#include <string_view>

namespace Velmar {

/// Text that XML 1.0 can hold: UTF-8 without the characters that it forbids.

/// Whether `text` is UTF-8 of characters that XML 1.0 allows.
bool isValidText(std::string_view text);

/// The number of bytes at the start of `text` that `isValidText` accepts. A character that is cut off by the end of
/// `text` isn't counted.
std::size_t countValidBytes(std::string_view text);

/// `text` as valid text: bytes that aren't UTF-8 are read as Windows-1252, characters that XML 1.0 forbids become
/// U+FFFD.
std::string toValidText(std::string_view text);

} // namespace Velmar
