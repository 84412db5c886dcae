#pragma once

#include <bit>
#include <cstdint>

namespace vexil {

/// An unsigned integer in an array of 32-bit words that the caller owns, least significant first.
/// 0 has no words; the most significant word in use is never 0.
struct BigUnsigned {
    std::int32_t count = 0;         ///< words in use
    std::uint32_t* words = nullptr; ///< borrowed
};

// Every operation that writes a number takes the capacity of its output in words and returns 0, or
// 1 if the result would not fit or a precondition does not hold; after a 1 the output is undefined.

/// aOut = w
int bigSetWord(BigUnsigned& aOut, std::int32_t aCap, std::uint32_t aWord);
/// The same for a value of up to two words.
inline int bigSetWord64(BigUnsigned& aOut, std::int32_t aCap, std::uint64_t aValue) {
    const std::int32_t count = aValue >> 32 != 0 ? 2 : aValue != 0 ? 1 : 0;
    if (count > aCap) return 1;
    if (aCap > 0) aOut.words[0] = static_cast<std::uint32_t>(aValue);
    if (aCap > 1) aOut.words[1] = static_cast<std::uint32_t>(aValue >> 32);
    aOut.count = count;
    return 0;
}
/// aOut = a
int bigCopy(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA);
/// aOut = a + b; aOut may be either.
int bigAdd(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA, const BigUnsigned& aB);
/// aOut = a * w; aOut may be a.
int bigMultiplyWord(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                    std::uint32_t aWord);
/// aOut = a * b; aOut must be neither.
int bigMultiply(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA, const BigUnsigned& aB);
/// aOut = a * 2^k; aOut may be a.
int bigShiftLeft(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA, std::int32_t aBits);
/// aOut = w * 2^k
int bigSetShiftedWord(BigUnsigned& aOut, std::int32_t aCap, std::uint32_t aWord,
                      std::int32_t aBits);
/// aOut = a / 2^k, rounded down; aOut may be a.
int bigShiftRight(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA, std::int32_t aBits);
/// aQ = a / 2^k, and a becomes a mod 2^k.
int bigSplit(BigUnsigned& aA, BigUnsigned& aQ, std::int32_t aCapQ, std::int32_t aBits);
/// aQ = a / d, and a becomes a mod d. The capacity of a must exceed its count by one word; d must
/// not be 0 and is not changed. Knuth, The Art of Computer Programming, 4.3.1, algorithm D.
int bigDivide(BigUnsigned& aA, std::int32_t aCapA, BigUnsigned& aQ, std::int32_t aCapQ,
              const BigUnsigned& aD);

/// -1, 0 or 1 as a is below, equal to or above b.
int bigCompare(const BigUnsigned& aA, const BigUnsigned& aB);
/// -1, 0 or 1 as a is below, equal to or above 2^k; for a negative k, 1 unless a is 0.
int bigCompareWithPowerOfTwo(const BigUnsigned& aA, std::int32_t aBits);
/// a mod 2^64
inline std::uint64_t bigToWord64(const BigUnsigned& aA) {
    const std::uint64_t low = aA.count > 0 ? aA.words[0] : 0;
    return aA.count > 1 ? std::uint64_t{aA.words[1]} << 32 | low : low;
}
/// Significant bits; 0 for 0.
constexpr std::int32_t bitLength32(std::uint32_t aWord) {
    return 32 - std::countl_zero(aWord);
}
/// The same for a number of several words.
inline std::int32_t bigBitLength(const BigUnsigned& aA) {
    return aA.count == 0 ? 0 : bitLength32(aA.words[aA.count - 1]) + 32 * (aA.count - 1);
}

} // namespace vexil
