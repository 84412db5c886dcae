#pragma once

#include <cstdint>

namespace vexil {

/// An unsigned integer in an array of 32-bit words that the caller owns, least significant first.
/// 0 has no words; the most significant word in use is never 0.
struct BigUnsigned {
    std::int32_t count = 0; ///< words in use
    std::uint32_t* words = nullptr;
};

// Every operation that writes a number takes the capacity of its output in words and returns 0, or
// 1 if the result would not fit or a precondition does not hold; after a 1 the output is undefined.

/// aOut = w
int bigSetWord(BigUnsigned& aOut, std::int32_t aCap, std::uint32_t aWord);
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
/// not be 0 and is not changed. Knuth, The Art of Computer Programming, 4.3.1, algorithm D. May
/// throw std::bad_alloc.
int bigDivide(BigUnsigned& aA, std::int32_t aCapA, BigUnsigned& aQ, std::int32_t aCapQ,
              const BigUnsigned& aD);

/// -1, 0 or 1 as a is below, equal to or above b.
int bigCompare(const BigUnsigned& aA, const BigUnsigned& aB);
/// -1, 0 or 1 as a is below, equal to or above 2^k; for a negative k, 1 unless a is 0.
int bigCompareWithPowerOfTwo(const BigUnsigned& aA, std::int32_t aBits);
/// Significant bits; 0 for 0.
std::int32_t bigBitLength(const BigUnsigned& aA);
std::int32_t bitLength32(std::uint32_t aWord);

} // namespace vexil
