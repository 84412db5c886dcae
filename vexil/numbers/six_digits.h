// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// Rounding of a double to six significant decimal digits, in integers only, so that the state of
// the floating-point unit does not matter. Private to the library.

namespace vexil {

/// The number digits * 10^(exponent - 5).
struct SixDigits {
    std::uint32_t digits; ///< 100000 to 999999
    int exponent;         ///< of the first digit
};

/// Rounds the positive finite double with the bits @p aBits to nearest, ties to even.
[[nodiscard]] SixDigits roundToSixDigits(std::uint64_t aBits);

/// The same in exact arithmetic: the definition of roundToSixDigits(), which uses it for the few
/// values that its own precision does not decide.
[[nodiscard]] SixDigits roundExactly(std::uint64_t aBits);

} // namespace vexil
