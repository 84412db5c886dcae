// SPDX-License-Identifier: MIT
#include "vexil/numbers/big_unsigned.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace vexil {

namespace {

constexpr std::int32_t wordBits = 32;

constexpr std::uint32_t lowWord(std::uint64_t aValue) {
    return static_cast<std::uint32_t>(aValue);
}

/// The count of @p aCount words once the zero words at the top are dropped.
std::int32_t significantWords(const std::uint32_t* aWords, std::int32_t aCount) {
    while (aCount > 0 && aWords[aCount - 1] == 0) --aCount;
    return aCount;
}

/// Completes a result of @p aCount words with the carry out of them. The carry is stored even if it
/// is 0, where the capacity allows it, to avoid an unpredictable branch.
int finish(BigUnsigned& aOut, std::int32_t aCap, std::int32_t aCount, std::uint32_t aCarry) {
    aOut.count = aCount;
    if (aCount == aCap) return aCarry != 0 ? 1 : 0;
    aOut.words[aCount] = aCarry;
    aOut.count += aCarry != 0 ? 1 : 0;
    return 0;
}

/// aTo += a * w over the words of a; returns the carry into the word above.
std::uint32_t addMultiple(std::uint32_t* aTo, const BigUnsigned& aA, std::uint32_t aWord) {
    std::uint64_t carry = 0;
    for (std::int32_t i = 0; i < aA.count; ++i) {
        carry += std::uint64_t{aWord} * aA.words[i] + aTo[i];
        aTo[i] = lowWord(carry);
        carry >>= wordBits;
    }
    return lowWord(carry);
}

/// aFrom -= a * w over the words of a; returns the amount to be subtracted from the word above.
std::uint32_t subtractMultiple(std::uint32_t* aFrom, const BigUnsigned& aA, std::uint32_t aWord) {
    std::int64_t rest = 0; // 0 or below between the words
    std::uint32_t above = 0;
    for (std::int32_t i = 0; i < aA.count; ++i) {
        const std::uint64_t product = std::uint64_t{aWord} * aA.words[i];
        rest += std::int64_t{aFrom[i]} - lowWord(product) - above;
        aFrom[i] = static_cast<std::uint32_t>(rest);
        rest >>= wordBits;
        above = lowWord(product >> wordBits);
    }
    return static_cast<std::uint32_t>(above - rest);
}

/// Word @p aIndex of the number shifted left by @p aShift bits, 0 to 31.
std::uint32_t shiftedWord(const std::uint32_t* aWords, std::int32_t aIndex, int aShift) {
    const std::uint64_t below = aIndex > 0 ? aWords[aIndex - 1] : 0;
    return lowWord((std::uint64_t{aWords[aIndex]} << wordBits | below) << aShift >> wordBits);
}

/// Stores the quotient in aQ and returns the remainder. The number is not 0.
std::uint32_t divideByWord(const BigUnsigned& aA, BigUnsigned& aQ, std::uint32_t aWord) {
    std::int32_t count = aA.count;
    std::uint64_t rest = 0;
    if (aA.words[count - 1] < aWord) rest = aA.words[--count];
    aQ.count = count;
    for (std::int32_t i = count - 1; i >= 0; --i) {
        rest = rest << wordBits | aA.words[i];
        aQ.words[i] = lowWord(rest / aWord);
        rest %= aWord;
    }
    return lowWord(rest);
}

/// Finds one quotient word after the other. The method requires a divisor whose top bit is set, but
/// only for its estimates: these use a few words, which are shifted as they are read, so that
/// neither number has to be shifted or copied as a whole.
class LongDivision {
public:
    explicit LongDivision(const BigUnsigned& aDivisor)
        : mDivisor(aDivisor), mShift(std::countl_zero(aDivisor.words[aDivisor.count - 1])),
          mTop(shiftedWord(aDivisor.words, aDivisor.count - 1, mShift)),
          mSecond(shiftedWord(aDivisor.words, aDivisor.count - 2, mShift)) {}

    /// The quotient word of weight @p aPos; subtracts its multiple of the divisor from @p aRest.
    std::uint32_t step(std::uint32_t* aRest, std::int32_t aPos) const {
        std::uint32_t quotient = estimate(aRest, aPos + mDivisor.count);
        if (quotient == 0) return 0;
        std::uint32_t& top = aRest[aPos + mDivisor.count];
        const std::uint32_t lost = subtractMultiple(aRest + aPos, mDivisor, quotient);
        const bool negative = top < lost;
        top -= lost;
        if (negative) {
            --quotient;
            top += addMultiple(aRest + aPos, mDivisor, 1);
        }
        return quotient;
    }

private:
    /// The quotient word or one more, from three words of the rest down from @p aTop and two of the
    /// divisor. The rest is below the divisor at this position, so its first word is at most mTop.
    std::uint32_t estimate(const std::uint32_t* aRest, std::int32_t aTop) const {
        const std::uint32_t first = shiftedWord(aRest, aTop, mShift);
        const std::uint32_t second = shiftedWord(aRest, aTop - 1, mShift);
        const std::uint32_t third = shiftedWord(aRest, aTop - 2, mShift);
        const std::uint64_t head = std::uint64_t{first} << wordBits | second;
        std::uint64_t quotient = first < mTop ? head / mTop : UINT32_MAX;
        std::uint64_t rest = head - quotient * mTop;
        while (rest <= UINT32_MAX && quotient * mSecond > (rest << wordBits | third)) {
            --quotient;
            rest += mTop;
        }
        return lowWord(quotient);
    }

    const BigUnsigned& mDivisor;
    int mShift;
    std::uint32_t mTop;
    std::uint32_t mSecond;
};

} // namespace

int bigSetWord(BigUnsigned& aOut, std::int32_t aCap, std::uint32_t aWord) {
    return bigSetWord64(aOut, aCap, aWord);
}

int bigCopy(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA) {
    if (aA.count <= 2) return bigSetWord64(aOut, aCap, bigToWord64(aA));
    if (aA.count > aCap) return 1;
    std::copy_n(aA.words, aA.count, aOut.words);
    aOut.count = aA.count;
    return 0;
}

int bigAdd(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA, const BigUnsigned& aB) {
    VEXIL_ASSERT(bigIsNormal(aA) && bigIsNormal(aB));
    const auto [shorter, longer] = aA.count < aB.count ? std::pair(aA, aB) : std::pair(aB, aA);
    if (longer.count > aCap) return 1;
    std::uint64_t carry = 0;
    for (std::int32_t i = 0; i < longer.count; ++i) {
        carry += longer.words[i];
        if (i < shorter.count) carry += shorter.words[i];
        aOut.words[i] = lowWord(carry);
        carry >>= wordBits;
    }
    return finish(aOut, aCap, longer.count, lowWord(carry));
}

int bigMultiplyWord(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                    std::uint32_t aWord) {
    VEXIL_ASSERT(bigIsNormal(aA));
    const std::int32_t count = aWord != 0 ? aA.count : 0;
    if (count > aCap) return 1;
    std::uint64_t carry = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        carry += std::uint64_t{aWord} * aA.words[i];
        aOut.words[i] = lowWord(carry);
        carry >>= wordBits;
    }
    return finish(aOut, aCap, count, lowWord(carry));
}

int bigMultiply(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                const BigUnsigned& aB) {
    VEXIL_ASSERT(bigIsNormal(aA) && bigIsNormal(aB));
    VEXIL_ASSERT(aOut.words != aA.words && aOut.words != aB.words);
    aOut.count = 0;
    if (aA.count == 0 || aB.count == 0) return 0;
    if (aB.count > aCap - aA.count) return 1;
    std::fill_n(aOut.words, aA.count, 0U);
    for (std::int32_t i = 0; i < aB.count; ++i) {
        aOut.words[i + aA.count] = addMultiple(aOut.words + i, aA, aB.words[i]);
    }
    aOut.count = significantWords(aOut.words, aA.count + aB.count);
    return 0;
}

int bigShiftLeftLong(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA,
                     std::int32_t aBits) {
    VEXIL_ASSERT(bigIsNormal(aA) && aBits >= 0);
    const std::int32_t skip = aA.count != 0 ? aBits / wordBits : 0;
    const int shift = aBits % wordBits;
    const std::int32_t count = aA.count;
    if (count > aCap - skip) return 1;
    const std::uint64_t top = count != 0 ? aA.words[count - 1] : 0;
    // Downwards, as the numbers may share their words.
    for (std::int32_t i = count - 1; i >= 0; --i) {
        aOut.words[i + skip] = shiftedWord(aA.words, i, shift);
    }
    std::fill_n(aOut.words, skip, 0U);
    return finish(aOut, aCap, count + skip, lowWord(top << shift >> wordBits));
}

int bigSetShiftedWord(BigUnsigned& aOut, std::int32_t aCap, std::uint32_t aWord,
                      std::int32_t aBits) {
    return bigShiftLeft(aOut, aCap, BigUnsigned{aWord != 0 ? 1 : 0, &aWord}, aBits);
}

int bigShiftRight(BigUnsigned& aOut, std::int32_t aCap, const BigUnsigned& aA, std::int32_t aBits) {
    VEXIL_ASSERT(bigIsNormal(aA) && aBits >= 0);
    const std::int32_t skip = aBits / wordBits;
    const int shift = aBits % wordBits;
    const std::int32_t count = std::max(aA.count - skip, 0);
    if (count > aCap) return 1;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint64_t above = i + 1 < count ? aA.words[skip + i + 1] : 0;
        aOut.words[i] = lowWord((above << wordBits | aA.words[skip + i]) >> shift);
    }
    aOut.count = significantWords(aOut.words, count);
    return 0;
}

int bigSplit(BigUnsigned& aA, BigUnsigned& aQ, std::int32_t aCapQ, std::int32_t aBits) {
    VEXIL_ASSERT(aQ.words != aA.words);
    if (bigShiftRight(aQ, aCapQ, aA, aBits) != 0) return 1;
    const std::int32_t whole = aBits / wordBits;
    if (aA.count <= whole) return 0;
    aA.words[whole] &= (std::uint32_t{1} << aBits % wordBits) - 1;
    aA.count = significantWords(aA.words, whole + 1);
    return 0;
}

int bigDivideLong(BigUnsigned& aA, std::int32_t aCapA, BigUnsigned& aQ, std::int32_t aCapQ,
                  const BigUnsigned& aD) {
    VEXIL_ASSERT(bigIsNormal(aA) && bigIsNormal(aD) && aA.words != aD.words);
    if (aD.count == 0 || aA.count >= aCapA) return 1;
    aQ.count = 0;
    const std::int32_t extra = aA.count - aD.count;
    if (extra < 0) return 0;
    if (extra == 0 && aA.words[aA.count - 1] < aD.words[aD.count - 1]) return 0;
    if (extra >= aCapQ) return 1;
    if (aD.count == 1) return bigSetWord(aA, aCapA, divideByWord(aA, aQ, aD.words[0]));
    const LongDivision division(aD);
    aA.words[aA.count] = 0; // the word that the first step has above the top
    for (std::int32_t i = extra; i >= 0; --i) aQ.words[i] = division.step(aA.words, i);
    aQ.count = significantWords(aQ.words, extra + 1);
    aA.count = significantWords(aA.words, aD.count);
    return 0;
}

int bigCompare(const BigUnsigned& aA, const BigUnsigned& aB) {
    VEXIL_ASSERT(bigIsNormal(aA) && bigIsNormal(aB));
    if (aA.count != aB.count) return aA.count < aB.count ? -1 : 1;
    for (std::int32_t i = aA.count - 1; i >= 0; --i) {
        if (aA.words[i] != aB.words[i]) return aA.words[i] < aB.words[i] ? -1 : 1;
    }
    return 0;
}

int bigCompareWithPowerOfTwo(const BigUnsigned& aA, std::int32_t aBits) {
    VEXIL_ASSERT(bigIsNormal(aA));
    if (aA.count == 0) return -1;
    const std::int32_t highest = bigBitLength(aA) - 1;
    if (highest != aBits) return highest < aBits ? -1 : 1;
    const std::int32_t last = aA.count - 1;
    const bool power = std::has_single_bit(aA.words[last]) && significantWords(aA.words, last) == 0;
    return power ? 0 : 1;
}

} // namespace vexil
