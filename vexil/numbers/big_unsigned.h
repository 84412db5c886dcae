// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/export.h"

#include <bit>
#include <cstdint>

namespace vexil {

/// An unsigned integer in a caller-owned array of 32-bit words, least significant word first.
/// 0 has no words; the most significant word in use is never 0.
struct BigUnsigned {
    std::int32_t count = 0;         ///< words in use
    std::uint32_t* words = nullptr; ///< borrowed
};

// Every operation that writes a number is given the capacity of its output in words, which is not
// negative, and returns 0, or 1 if the result does not fit or a stated condition does not hold.
// After a 1 the output is undefined. Numbers of bits are not negative either.

/// Whether the number has the form that every operation requires and leaves.
[[nodiscard]] inline bool bigIsNormal(const BigUnsigned& aA) {
    return aA.count == 0 || (aA.count > 0 && aA.words[aA.count - 1] != 0);
}

/// aOut = w
[[nodiscard]] VEXIL_API int bigSetWord(BigUnsigned& aOut, std::int32_t aCap, std::uint32_t aWord);
/// The same for a value of up to two words.
[[nodiscard]] inline int bigSetWord64(BigUnsigned& aOut, std::int32_t aCap, std::uint64_t aValue) {
    VEXIL_ASSERT(aCap >= 0);
    const std::int32_t count = aValue >> 32 != 0 ? 2 : aValue != 0 ? 1 : 0;
    if (count > aCap) return 1;
    if (aCap > 0) aOut.words[0] = static_cast<std::uint32_t>(aValue);
    if (aCap > 1) aOut.words[1] = static_cast<std::uint32_t>(aValue >> 32);
    aOut.count = count;
    return 0;
}
/// aOut = a
[[nodiscard]] VEXIL_API int bigCopy(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA);
/// aOut = a + b; aOut may be either.
[[nodiscard]] VEXIL_API int bigAdd(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                                   const BigUnsigned& aB);
/// aOut = a * w; aOut may be a.
[[nodiscard]] VEXIL_API int bigMultiplyWord(BigUnsigned& aOut, std::int32_t aCap,
                                            const BigUnsigned& aA, std::uint32_t aWord);
/// aOut = a * b; aOut must be neither.
[[nodiscard]] VEXIL_API int bigMultiply(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                                        const BigUnsigned& aB);
/// aOut = a * 2^k; aOut may be a.
[[nodiscard]] inline int bigShiftLeft(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                                      std::int32_t aBits);
/// aOut = w * 2^k
[[nodiscard]] VEXIL_API int bigSetShiftedWord(BigUnsigned& aOut, std::int32_t aCap,
                                              std::uint32_t aWord, std::int32_t aBits);
/// aOut = a / 2^k, rounded down; aOut may be a.
[[nodiscard]] VEXIL_API int bigShiftRight(BigUnsigned& aOut, std::int32_t aCap,
                                          const BigUnsigned& aA, std::int32_t aBits);
/// aQ = a / 2^k, and a becomes a mod 2^k.
[[nodiscard]] VEXIL_API int bigSplit(BigUnsigned& aA, BigUnsigned& aQ, std::int32_t aCapQ,
                                     std::int32_t aBits);
/// aQ = a / d, and a becomes a mod d. Conditions: d is not 0, and the capacity of a exceeds its
/// count by one word. d is not changed and must not be a. Knuth, The Art of Computer Programming,
/// 4.3.1, algorithm D.
[[nodiscard]] inline int bigDivide(BigUnsigned& aA, std::int32_t aCapA, BigUnsigned& aQ,
                                   std::int32_t aCapQ, const BigUnsigned& aD);

/// -1, 0 or 1 as a is below, equal to or above b.
[[nodiscard]] VEXIL_API int bigCompare(const BigUnsigned& aA, const BigUnsigned& aB);
/// -1, 0 or 1 as a is below, equal to or above 2^k. For a negative k, -1 if a is 0, else 1.
[[nodiscard]] VEXIL_API int bigCompareWithPowerOfTwo(const BigUnsigned& aA, std::int32_t aBits);
/// a mod 2^64
[[nodiscard]] inline std::uint64_t bigToWord64(const BigUnsigned& aA) {
    const std::uint64_t low = aA.count > 0 ? aA.words[0] : 0;
    return aA.count > 1 ? std::uint64_t{aA.words[1]} << 32 | low : low;
}
/// Number of significant bits; 0 for 0.
[[nodiscard]] constexpr std::int32_t bitLength32(std::uint32_t aWord) {
    return 32 - std::countl_zero(aWord);
}
/// The same for a number of several words.
[[nodiscard]] inline std::int32_t bigBitLength(const BigUnsigned& aA) {
    return aA.count == 0 ? 0 : bitLength32(aA.words[aA.count - 1]) + 32 * (aA.count - 1);
}

// Numbers of one or two words are handled in 64 bits, inline: most decimal texts need no others.
// These are the general operations; they have the same results for any number of words.

/// bigShiftLeft() for any number of words.
[[nodiscard]] VEXIL_API int bigShiftLeftLong(BigUnsigned& aOut, std::int32_t aCap,
                                             const BigUnsigned& aA, std::int32_t aBits);
/// bigDivide() for any number of words.
[[nodiscard]] VEXIL_API int bigDivideLong(BigUnsigned& aA, std::int32_t aCapA, BigUnsigned& aQ,
                                          std::int32_t aCapQ, const BigUnsigned& aD);

inline int bigShiftLeft(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                        std::int32_t aBits) {
    VEXIL_ASSERT(aBits >= 0);
    const std::int32_t skip = aBits / 32;
    const int shift = aBits % 32;
    if (aA.count == 0 || aA.count > 2 || skip > aCap - 3) {
        return bigShiftLeftLong(aOut, aCap, aA, aBits);
    }
    const std::uint64_t value = bigToWord64(aA);
    aOut.words[0] = 0;
    aOut.words[1] = 0;
    for (std::int32_t i = 2; i < skip; ++i) aOut.words[i] = 0;
    aOut.words[skip] = static_cast<std::uint32_t>(value << shift);
    aOut.words[skip + 1] = static_cast<std::uint32_t>(value << shift >> 32);
    aOut.words[skip + 2] = static_cast<std::uint32_t>(value >> 32 << shift >> 32);
    aOut.count = (static_cast<std::int32_t>(std::bit_width(value)) + aBits + 31) / 32;
    return 0;
}

inline int bigDivide(BigUnsigned& aA, std::int32_t aCapA, BigUnsigned& aQ, std::int32_t aCapQ,
                     const BigUnsigned& aD) {
    const bool isShort = aA.count <= 2 && aD.count <= 2;
    if (!isShort || aD.count == 0 || aA.count >= aCapA) {
        return bigDivideLong(aA, aCapA, aQ, aCapQ, aD);
    }
    const std::uint64_t dividend = bigToWord64(aA);
    const std::uint64_t divisor = bigToWord64(aD);
    if (bigSetWord64(aQ, aCapQ, dividend / divisor) != 0) return 1;
    return bigSetWord64(aA, aCapA, dividend % divisor);
}

} // namespace vexil
