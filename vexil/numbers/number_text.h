#pragma once

#include <cstddef>
#include <cstdint>

// Numbers as the writer gives them. Private to the JSON library.

namespace vexil {

/// Room that writeInteger() must find.
constexpr std::size_t integerTextSize = 16;

/// Writes the decimal text and returns the place behind it. Behind that, the room is left with
/// anything.
char* writeInteger(char* aDest, std::int32_t aValue);

/// Room that writeFloat() must find.
constexpr std::size_t floatTextSize = 32;

struct FloatText {
    char* end;             ///< the place behind the text
    bool looksLikeInteger; ///< there is no '.' and no 'e' in it
};

/// Writes the text that printf gives a double for "%g" in the C locale: six significant digits
/// without trailing zeros, the shorter of fixed and exponent notation, two exponent digits at
/// least. Behind that, the room is left with anything.
FloatText writeFloat(char* aDest, double aValue);

} // namespace vexil
