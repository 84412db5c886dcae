// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// Decoding of UTF-8, with the failures of UnicodeString32::assignUtf8(). Private to the library.

namespace vexil {

/// Writes the code points of the text to @p aDest, a block that has a unit for each byte of the
/// text, and returns the position after the last one. Throws EncodingError
/// "UnicodeString32::assignUtf8(): truncated" or "UnicodeString32::assignUtf8(): invalid code".
[[nodiscard]] std::uint32_t* decodeUtf8(std::uint32_t* aDest, const std::uint8_t* aText,
                                        const std::uint8_t* aEnd);

/// Throws the failure of decodeUtf8() for a text that is not valid.
[[noreturn]] void throwUtf8Fault(const std::uint8_t* aText, const std::uint8_t* aEnd);

} // namespace vexil
