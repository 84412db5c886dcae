// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"

#include <cstdint>

namespace vexil {

/// Parameters of a binary floating-point format.
struct BinaryFloatFormat {
    std::int32_t minExponent;        ///< least binary exponent of a normal value in [0.5, 1)
    std::int32_t maxExponent;        ///< greatest binary exponent of a finite value, likewise
    std::int32_t bias;               ///< added to the exponent of a significand in [1, 2)
    std::int32_t mantissaBits;       ///< the hidden bit included
    std::int32_t maxDigits;          ///< significant decimal digits taken into account
    std::int32_t maxDecimalExponent; ///< of the first significant digit; above it: overflow
    std::int32_t minDecimalExponent; ///< digits plus decimal exponent below it: underflow
};

/// IEEE 754 binary64.
inline constexpr BinaryFloatFormat doubleFormat{-1021, 1024, 1023, 53, 17, 308, -324};

/// Converts decimal text to the nearest double, ties to even, exactly, from its first 17
/// significant digits; further digits are dropped. Called like strtod: leading white space and a
/// sign are skipped, 'e' and 'E' start an exponent. @p aEnd, if not null, receives the position one
/// past the number; without a number, it receives @p aText and the result is +0.0. The point is '.'
/// and white space the six ASCII characters, whatever the locale. The arithmetic is in integers
/// only, so that the state of the floating-point unit does not matter either.
///
/// Overflow gives an infinity and underflow to zero a zero, of the text's sign, both with errno set
/// to ERANGE; errno is otherwise left as it was. A subnormal is no error. An exponent that leaves
/// 32 bits, alone or together with the digits, is a range error by its sign, even of a zero.
[[nodiscard]] VEXIL_API double strToDouble(const char* aText, const char** aEnd);

/// The same for the text up to @p aTextEnd, which need not be terminated.
[[nodiscard]] VEXIL_API double strToDouble(const char* aText, const char* aTextEnd,
                                           const char** aEnd);

/// The same for a terminated text and a @p aFormat; only doubleFormat is supported. Stores the
/// value and returns the position that strToDouble() stores.
VEXIL_API const char* decimalToBinaryFloat(double* aResult, const char* aText,
                                           const BinaryFloatFormat& aFormat);

} // namespace vexil
