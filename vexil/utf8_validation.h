// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// Validation of UTF-8 without decoding it. Private to the library.

namespace vexil {

/// Whether the bytes are what UnicodeString32::assignUtf8() accepts: complete, shortest forms of
/// code points up to U+10FFFF without surrogates. Lengths are not limited.
[[nodiscard]] bool isValidUtf8(const std::uint8_t* aText, const std::uint8_t* aEnd);

} // namespace vexil
