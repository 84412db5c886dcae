// SPDX-License-Identifier: MIT
#include "vexil/numbers/six_digits.h"

#include "vexil/assert.h"
#include "vexil/numbers/big_unsigned.h"
#include "vexil/numbers/powers_of_five.h"
#include "vexil/numbers/scratch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

namespace vexil {

namespace {

constexpr int digitCount = 6;
constexpr std::uint32_t sevenDigits = 1000000; ///< the least number with so many digits

/// A positive number, significand * 2^(exponent - 63). The top bit of the significand is set.
struct BinaryNumber {
    std::uint64_t significand;
    int exponent;
};

BinaryNumber decompose(std::uint64_t aBits) {
    VEXIL_ASSERT(aBits != 0 && aBits < std::uint64_t{0x7FF} << 52);
    const int exponent = static_cast<int>(aBits >> 52) - 1023;
    const std::uint64_t fraction = aBits << 12 >> 1;
    if (exponent > -1023) return {fraction | std::uint64_t{1} << 63, exponent};
    const int zeros = std::countl_zero(fraction);
    return {fraction << zeros, exponent + 1 - zeros};
}

// Binary exponents of the least bit of a double and of a power of two no double reaches.
constexpr int leastExponent = -1074;
constexpr int exponentLimit = 1024;

/// The exponent of the first decimal digit of 2^aExponent. That of a value from there to the next
/// power of two is the same or one greater.
constexpr int decimalExponentOf(int aExponent) {
    return (aExponent * 1262611) >> 22; // log10(2) * 2^22 is 1262611.06...
}

// Powers of ten that bring the first digit of a double to the sixth or seventh place before the
// point.
constexpr int leastPower = digitCount - 1 - decimalExponentOf(exponentLimit - 1);
constexpr int greatestPower = digitCount - 1 - decimalExponentOf(leastExponent);

/// floor(log2(10^p)), the binary exponent of a power of ten.
constexpr int binaryExponentOf(int aPower) {
    return (aPower * 1741647) >> 19; // log2(10) * 2^19 is 1741647.2...
}

/// A positive number as four words, most significant first; the top bit of the first is set.
using FourWords = std::array<std::uint32_t, 4>;

/// The first four words after the leading zeros of a number, which are fewer than 32.
constexpr FourWords normalize(const std::array<std::uint32_t, 5>& aNumber) {
    const int shift = std::countl_zero(aNumber[0]);
    FourWords result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        const std::uint64_t pair = std::uint64_t{aNumber[i]} << 32 | aNumber[i + 1];
        result[i] = static_cast<std::uint32_t>(pair << shift >> 32);
    }
    return result;
}

/// Multiplies by 10, up to a power of two.
constexpr FourWords timesTen(const FourWords& aNumber) {
    std::array<std::uint32_t, 5> product{};
    std::uint64_t carry = 0;
    for (std::size_t i = aNumber.size(); i > 0; --i, carry >>= 32) {
        carry += std::uint64_t{aNumber[i - 1]} * 10;
        product[i] = static_cast<std::uint32_t>(carry);
    }
    product[0] = static_cast<std::uint32_t>(carry);
    return normalize(product);
}

/// Divides by 10, up to a power of two.
constexpr FourWords dividedByTen(const FourWords& aNumber) {
    std::array<std::uint32_t, 5> quotient{};
    std::uint64_t rest = 0;
    for (std::size_t i = 0; i < quotient.size(); ++i) {
        rest = rest << 32 | (i < aNumber.size() ? aNumber[i] : 0);
        quotient[i] = static_cast<std::uint32_t>(rest / 10);
        rest %= 10;
    }
    return normalize(quotient);
}

using PowerTable = std::array<std::uint64_t, greatestPower - leastPower + 1>;

/// The top 64 bits of each power of ten, at index power - leastPower. Each step drops less than
/// 2^-124 of the number, which over all steps stays far below the 64 bits: an entry is less than
/// one unit and a thousandth below the true value.
constexpr PowerTable makePowersOfTen() {
    PowerTable table{};
    const auto enter = [&table](int aPower, const FourWords& aNumber) {
        table[static_cast<std::size_t>(aPower - leastPower)] =
            std::uint64_t{aNumber[0]} << 32 | aNumber[1];
    };
    constexpr FourWords one{0x80000000};
    FourWords number = one;
    for (int power = 0; power <= greatestPower; ++power, number = timesTen(number)) {
        enter(power, number);
    }
    number = one;
    for (int power = 0; power >= leastPower; --power, number = dividedByTen(number)) {
        enter(power, number);
    }
    return table;
}

constexpr PowerTable powersOfTen = makePowersOfTen();

constexpr std::uint64_t powerOfTen(int aPower) {
    return powersOfTen[static_cast<std::size_t>(aPower - leastPower)];
}

static_assert(powerOfTen(0) == 0x8000000000000000 && powerOfTen(27) == 0xCECB8F27F4200F3A);
static_assert(powerOfTen(-1) == 0xCCCCCCCCCCCCCCCC && powerOfTen(-2) == 0xA3D70A3D70A3D70A);

// 10^x is at most 2^b if its binary exponent is below b, as it is no power of two itself, except 1.
static_assert(
    [] {
        for (int b = leastExponent; b < exponentLimit; ++b) {
            const int x = decimalExponentOf(b);
            const bool isAtMost = x == 0 ? b >= 0 : binaryExponentOf(x) < b;
            const bool isNextAbove = x == -1 ? b < 0 : binaryExponentOf(x + 1) >= b;
            if (!isAtMost || !isNextAbove) return false;
        }
        return true;
    }(),
    "the estimate of the decimal exponent is exact for powers of two");

/// The upper 64 bits of the product, or up to 2 less.
constexpr std::uint64_t multiplyHigh(std::uint64_t aA, std::uint64_t aB) {
    constexpr std::uint64_t low = 0xFFFFFFFF;
    return (aA >> 32) * (aB >> 32) + ((aA >> 32) * (aB & low) >> 32) +
           ((aA & low) * (aB >> 32) >> 32);
}

/// Rounds a quotient by its least bit and by the comparison of its remainder with one half.
std::uint64_t roundHalfToEven(std::uint64_t aQuotient, int aComparison) {
    const bool isUp = aComparison > 0 || (aComparison == 0 && aQuotient % 2 != 0);
    return aQuotient + (isUp ? 1 : 0);
}

/// The nearest integer to n * 2^aShift * 10^aPower, for a power that is not negative.
std::uint64_t multiplyAndRound(const BigUnsigned& aN, int aShift, int aPower) {
    Scratch product;
    Scratch quotient;
    requireFit(powerOfFive(product.number, scratchWords, aPower, 0, &aN));
    const int drop = -(aShift + aPower);
    if (drop <= 0) return bigToWord64(product.number) << -drop;
    requireFit(bigSplit(product.number, quotient.number, scratchWords, drop));
    return roundHalfToEven(bigToWord64(quotient.number),
                           bigCompareWithPowerOfTwo(product.number, drop - 1));
}

/// The nearest integer to n * 2^aShift / 10^aPower.
std::uint64_t divideAndRound(const BigUnsigned& aN, int aShift, int aPower) {
    Scratch rest;
    Scratch divisor;
    Scratch quotient;
    const int shift = aShift - aPower;
    requireFit(bigShiftLeft(rest.number, scratchWords, aN, std::max(shift, 0)));
    requireFit(powerOfFive(divisor.number, scratchWords, aPower, std::max(-shift, 0), nullptr));
    requireFit(bigDivide(rest.number, scratchWords, quotient.number, scratchWords, divisor.number));
    requireFit(bigShiftLeft(rest.number, scratchWords, rest.number, 1));
    return roundHalfToEven(bigToWord64(quotient.number), bigCompare(rest.number, divisor.number));
}

} // namespace

SixDigits roundExactly(std::uint64_t aBits) {
    const BinaryNumber value = decompose(aBits);
    const int zeros = std::countr_zero(value.significand);
    Scratch significand;
    requireFit(bigSetWord64(significand.number, scratchWords, value.significand >> zeros));
    const int shift = value.exponent - 63 + zeros;
    for (int exponent = decimalExponentOf(value.exponent);; ++exponent) {
        const int power = digitCount - 1 - exponent;
        const std::uint64_t digits = power >= 0 ? multiplyAndRound(significand.number, shift, power)
                                                : divideAndRound(significand.number, shift, -power);
        VEXIL_ASSERT(digits >= sevenDigits / 10);
        if (digits < sevenDigits) return {static_cast<std::uint32_t>(digits), exponent};
    }
}

SixDigits roundToSixDigits(std::uint64_t aBits) {
    const BinaryNumber value = decompose(aBits);
    int exponent = decimalExponentOf(value.exponent);
    const int power = digitCount - 1 - exponent;
    const std::uint64_t product = multiplyHigh(value.significand, powerOfTen(power));
    const int fractionBits = 62 - value.exponent - binaryExponentOf(power);
    const auto whole = static_cast<std::uint32_t>(product >> fractionBits);
    const bool isSeven = whole >= sevenDigits;
    exponent += isSeven ? 1 : 0;
    const std::uint32_t unit = isSeven ? 10 : 1;
    std::uint32_t digits = isSeven ? whole / 10 : whole;
    const std::uint64_t rest = product - (std::uint64_t{digits * unit} << fractionBits);
    const std::uint64_t half = std::uint64_t{unit} << (fractionBits - 1);
    // The product is too small by less than 5 units: 1 for its fraction, 2 for multiplyHigh() and
    // little more than 1 for the power of ten.
    if (half - rest < 5) return roundExactly(aBits);
    digits += rest > half ? 1 : 0;
    if (digits == sevenDigits) return {sevenDigits / 10, exponent + 1};
    return {digits, exponent};
}

} // namespace vexil
