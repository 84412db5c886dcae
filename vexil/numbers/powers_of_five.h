#pragma once

#include "vexil/numbers/big_unsigned.h"

#include <array>
#include <cstdint>

namespace vexil {

/// 5^1 to 5^13 at the index of their exponent; index 0 is not used.
extern const std::array<std::uint32_t, 14> smallPowersOfFive;

/// All runs, each least significant word first: 5^(14 i) for i = 1 to 39, then 5^(560 i) for
/// i = 1 to 8.
extern const std::array<std::uint32_t, 2286> powerOfFiveWords;
/// Where run i of 5^(14 i) starts, at index i - 1; the last entry is the end of run 39.
extern const std::array<std::uint16_t, 40> midPowersOfFive;
/// Where run i of 5^(560 i) starts, at index i - 1; the last entry is the end of run 8.
extern const std::array<std::uint16_t, 9> largePowersOfFive;

/// aOut = 5^n * multiplier * 2^k; a null multiplier means 1, and it must not be aOut. Returns 1,
/// with aOut undefined, for n outside 0 to 5039 (unless the multiplier is 0) and if the result does
/// not fit @p aCap words, else 0. May throw std::bad_alloc for n of 574 or more with a multiplier
/// of several words.
int powerOfFive(BigUnsigned& aOut, std::int32_t aCap, std::int32_t aN, std::int32_t aK,
                const BigUnsigned* aMultiplier);

} // namespace vexil
