// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/numbers/big_unsigned.h"

#include <cstdint>

// Working storage of the conversions between decimal text and doubles. Private to the library.

namespace vexil {

/// Capacity of every big integer of a conversion. 27 words are 864 bits: the widest dividend, for
/// 17 digits at the smallest normal numbers, fills 26 words, and the division needs one more.
constexpr std::int32_t scratchWords = 27;

/// A big integer with its words. The words are not initialized, as every operation sets those that
/// it uses.
struct Scratch {
    std::uint32_t words[scratchWords];
    BigUnsigned number{0, words};
};

/// Takes the result of an operation on big integers whose capacities are known to suffice.
inline void requireFit([[maybe_unused]] int aResult) {
    VEXIL_ASSERT(aResult == 0);
}

} // namespace vexil
