// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/numbers/big_unsigned.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vexil {

/// The exponent of the first power of five that exceeds a word.
inline constexpr std::int32_t midPowerStep = 14;

/// 5^0 to 5^13 at the index of their exponent.
extern VEXIL_API const std::array<std::uint32_t, midPowerStep> smallPowersOfFive;

/// All runs, each least significant word first: 5^(14 i) for i = 1 to 39, then 5^(560 i) for
/// i = 1 to 8.
extern VEXIL_API const std::array<std::uint32_t, 2286> powerOfFiveWords;
/// The start of the run 5^(14 i), at index i - 1; the last entry is the end of run 39.
extern VEXIL_API const std::array<std::uint16_t, 40> midPowersOfFive;
/// The start of the run 5^(560 i), at index i - 1; the last entry is the end of run 8.
extern VEXIL_API const std::array<std::uint16_t, 9> largePowersOfFive;

/// aOut = 5^n * multiplier * 2^k. A null multiplier means 1; the multiplier must not be aOut.
/// Returns 1, with aOut undefined, for n outside 0 to 5039 (unless the multiplier is 0) and if the
/// result does not fit @p aCap words, else 0. Throws std::bad_alloc, which is possible only for an
/// n of 574 or more with a multiplier of several words.
[[nodiscard]] inline int powerOfFive(BigUnsigned& aOut, std::int32_t aCap, std::int32_t aN,
                                     std::int32_t aK, const BigUnsigned* aMultiplier);

/// powerOfFive() for any arguments; the inline function handles results of one or two words.
[[nodiscard]] VEXIL_API int powerOfFiveLong(BigUnsigned& aOut, std::int32_t aCap, std::int32_t aN,
                                            std::int32_t aK, const BigUnsigned* aMultiplier);

inline int powerOfFive(BigUnsigned& aOut, std::int32_t aCap, std::int32_t aN, std::int32_t aK,
                       const BigUnsigned* aMultiplier) {
    constexpr std::uint64_t firstMid = 6103515625; // 5^14
    const bool isPlain = aMultiplier == nullptr && aK == 0;
    if (!isPlain || aN < 0 || aN >= 2 * midPowerStep) {
        return powerOfFiveLong(aOut, aCap, aN, aK, aMultiplier);
    }
    const bool hasMid = aN >= midPowerStep;
    const std::uint64_t small =
        smallPowersOfFive[static_cast<std::size_t>(hasMid ? aN - midPowerStep : aN)];
    return bigSetWord64(aOut, aCap, hasMid ? firstMid * small : small);
}

} // namespace vexil
