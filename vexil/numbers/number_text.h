// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

// Decimal texts of numbers, made in integers only, so that the state of the floating-point unit
// does not matter. Private to the library.

namespace vexil {

/// Minimum size of the buffer passed to writeInteger(): it may write that many bytes, whatever the
/// length of the text.
constexpr std::size_t integerTextSize = 16;

/// Writes the decimal text and returns one past its last character. The contents of the buffer
/// after that are unspecified.
[[nodiscard]] char* writeInteger(char* aDest, std::int32_t aValue);

/// Minimum size of the buffer passed to writeFloat(), likewise.
constexpr std::size_t floatTextSize = 32;

struct FloatText {
    char* end;             ///< one past the last character
    bool looksLikeInteger; ///< the text contains neither '.' nor 'e'
};

/// Writes the text that printf produces for "%g" in the C locale: six significant digits without
/// trailing zeros, the shorter of fixed and exponent notation, at least two exponent digits; "inf"
/// and "nan", with a '-' if the sign is set. The contents of the buffer after the text are
/// unspecified.
[[nodiscard]] FloatText writeFloat(char* aDest, double aValue);

} // namespace vexil
