// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

// Encoding of code points in UTF-8, with the failures of UnicodeString32::asUtf8(). Private to the
// library.

namespace vexil {

constexpr std::uint32_t lastCode = 0x10FFFF;

constexpr bool isSurrogate(std::uint32_t aCode) {
    return (aCode & ~0x7FFU) == 0xD800;
}

/// The number of bytes that encodeUtf8() writes for less than 2^26 code points.
[[nodiscard]] std::size_t countUtf8Bytes(const std::uint32_t* aCodes, std::uint32_t aCount);

/// Writes one code point and returns the position after it. Throws EncodingError
/// "UnicodeString32::asUtf8(): reserved code" for a surrogate and
/// "UnicodeString32::asUtf8(): code out of range" above U+10FFFF.
[[nodiscard]] char* encodeUtf8(char* aDest, std::uint32_t aCode);

/// The same for @p aCount code points.
[[nodiscard]] char* encodeUtf8(char* aDest, const std::uint32_t* aCodes, std::uint32_t aCount);

} // namespace vexil
