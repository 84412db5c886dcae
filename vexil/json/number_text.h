#pragma once

#include <array>
#include <string_view>

// Private to the JSON library.

namespace vexil {

/// Room for the text of any double.
using FloatArea = std::array<char, 32>;

/// The text that printf gives a double for "%g" in the C locale: six significant digits without
/// trailing zeros, the shorter of fixed and exponent notation, two exponent digits at least. It
/// lies in @p aArea.
std::string_view formatFloat(double aValue, FloatArea& aArea);

} // namespace vexil
