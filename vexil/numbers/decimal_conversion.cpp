// SPDX-License-Identifier: MIT
#include "vexil/numbers/decimal_conversion.h"

#include "vexil/numbers/big_unsigned.h"
#include "vexil/numbers/powers_of_five.h"
#include "vexil/numbers/scratch.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <limits>

namespace vexil {

namespace {

/// The binary exponent of the last bit of the smallest number.
constexpr std::int32_t lowestExponent(const BinaryFloatFormat& aFormat) {
    return 2 - aFormat.bias - aFormat.mantissaBits;
}

enum class Range { Inside, Below, Above };

/// The number of a text, digits * 10^exponent, unless it is out of range whatever the digits.
struct Decimal {
    const char* end = nullptr; ///< null if there is no number
    bool negative = false;
    Range range = Range::Inside;
    std::uint64_t digits = 0;
    std::int32_t exponent = 0;
};

/// A positive value as (bits + f) * 2^exponent with 0 <= f < 1.
struct Scaled {
    std::uint64_t bits;
    bool hasFraction; ///< f is not 0
    std::int32_t exponent;
};

constexpr std::int64_t maxInt32 = std::numeric_limits<std::int32_t>::max();

constexpr bool isDigit(char aChar) {
    return aChar >= '0' && aChar <= '9';
}

constexpr bool isSpace(char aChar) {
    return aChar == ' ' || (aChar >= '\t' && aChar <= '\r');
}

/// Text whose characters are read from the front.
struct Text {
    const char* next;
    const char* end;

    /// The next character; a null at the end.
    char peek() const { return next != end ? *next : '\0'; }
    bool skip(char aChar) {
        const bool isNext = peek() == aChar;
        next += isNext ? 1 : 0;
        return isNext;
    }
};

/// Whether the eight characters are digits (after Daniel Lemire's fast_float): adding 6 carries out
/// of the low half of a byte exactly if that is above 9.
constexpr bool areDigits(std::uint64_t aEight) {
    constexpr std::uint64_t highHalves = 0xF0F0F0F0F0F0F0F0;
    const std::uint64_t carried = aEight + 0x0606060606060606;
    return ((aEight & highHalves) | (carried & highHalves) >> 4) == 0x3333333333333333;
}

/// The value of eight digits, the first in the least significant byte: neighbours are combined into
/// pairs, fours and eights.
constexpr std::uint64_t valueOfDigits(std::uint64_t aEight) {
    aEight -= 0x3030303030303030;
    aEight = (aEight * 10 + (aEight >> 8)) & 0x00FF00FF00FF00FF;
    aEight = (aEight * 100 + (aEight >> 16)) & 0x0000FFFF0000FFFF;
    return (aEight * 10000 + (aEight >> 32)) & 0xFFFFFFFF;
}

static_assert(valueOfDigits(0x3938373635343332) == 23456789);
static_assert(
    [] {
        for (int position = 0; position < 64; position += 8) {
            for (std::uint64_t c = 0; c < 256; ++c) {
                const std::uint64_t five = std::uint64_t{'5'} << position;
                const std::uint64_t eight = (0x3535353535353535 ^ five) | c << position;
                if (areDigits(eight) != isDigit(static_cast<char>(c))) return false;
            }
        }
        return true;
    }(),
    "eight characters are classified as single ones are");

/// Collects the significant digits: leading zeros are none, and those beyond the limit are dropped.
/// Zeros at the end are taken like others; they cannot change the value that digits and exponent
/// have together.
struct DigitReader {
    std::int32_t limit;
    std::int32_t taken = 0;
    std::uint64_t value = 0;
    std::int64_t dropped = 0;

    /// Reads a run of digits and returns its length.
    std::int64_t read(Text& aText) {
        const char* const begin = aText.next;
        if (taken == 0) {
            while (aText.skip('0')) {
            }
        }
        takeEights(aText);
        for (; isDigit(aText.peek()) && taken < limit; ++aText.next, ++taken) {
            value = 10 * value + static_cast<std::uint64_t>(*aText.next - '0');
        }
        for (; isDigit(aText.peek()); ++aText.next) ++dropped;
        return aText.next - begin;
    }

private:
    void takeEights(Text& aText) {
        if constexpr (std::endian::native != std::endian::little) return;
        constexpr std::int32_t count = 8;
        while (aText.end - aText.next >= count && taken + count <= limit) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, aText.next, count);
            if (!areDigits(eight)) return;
            value = value * 100000000 + valueOfDigits(eight);
            taken += count;
            aText.next += count;
        }
    }
};

/// Reads the exponent if there is one; 0 otherwise, with nothing read. A value of more than 31 bits
/// becomes one of 32, of the same sign.
std::int64_t scanExponent(Text& aText) {
    Text text = aText;
    if (!text.skip('e') && !text.skip('E')) return 0;
    const bool negative = text.skip('-');
    if (!negative) text.skip('+');
    if (!isDigit(text.peek())) return 0;
    std::int64_t value = 0;
    for (; isDigit(text.peek()); ++text.next) {
        value = std::min(10 * value + (*text.next - '0'), maxInt32 + 1);
    }
    aText = text;
    return negative ? -value : value;
}

/// Sets the digits and their exponent, or the range, when the last digit read has that exponent.
void setDigits(Decimal& aDecimal, const DigitReader& aReader, std::int64_t aExponent,
               const BinaryFloatFormat& aFormat) {
    if (aReader.value == 0) return;
    // The value is below 10^top and not below a tenth of it. One test decides, before any big
    // integer is touched, as dropping digits does not move the first.
    const std::int64_t exponent = aExponent + aReader.dropped;
    const std::int64_t top = exponent + aReader.taken;
    if (top - 1 > aFormat.maxDecimalExponent) {
        aDecimal.range = Range::Above;
    } else if (top < aFormat.minDecimalExponent) {
        aDecimal.range = Range::Below;
    } else {
        aDecimal.digits = aReader.value;
        aDecimal.exponent = static_cast<std::int32_t>(exponent);
    }
}

Decimal scanDecimal(Text aText, const BinaryFloatFormat& aFormat) {
    while (isSpace(aText.peek())) ++aText.next;
    Decimal decimal;
    decimal.negative = aText.skip('-');
    if (!decimal.negative) aText.skip('+');

    DigitReader reader{aFormat.maxDigits};
    bool anyDigit = reader.read(aText) != 0;
    std::int64_t fractionDigits = 0;
    if (aText.skip('.')) {
        fractionDigits = reader.read(aText);
        anyDigit = anyDigit || fractionDigits != 0;
    }
    if (!anyDigit) return decimal;

    const std::int64_t written = scanExponent(aText);
    const std::int64_t exponent = written - fractionDigits;
    decimal.end = aText.next;
    if (written > maxInt32) {
        decimal.range = Range::Above;
    } else if (written < -maxInt32 || exponent < std::numeric_limits<std::int32_t>::min()) {
        decimal.range = Range::Below;
    } else {
        setDigits(decimal, reader, exponent, aFormat);
    }
    return decimal;
}

/// n * 10^e for e >= 0: the product n * 5^e, its upper 64 bits.
Scaled multiplyByPowerOfTen(const BigUnsigned& aN, std::int32_t aE) {
    if (aE == 0) return {bigToWord64(aN), false, 0};
    Scratch product;
    requireFit(powerOfFive(product.number, scratchWords, aE, 0, &aN));
    const std::int32_t drop = bigBitLength(product.number) - 64;
    if (drop <= 0) return {bigToWord64(product.number), false, aE};
    Scratch top;
    requireFit(bigSplit(product.number, top.number, scratchWords, drop));
    return {bigToWord64(top.number), product.number.count != 0, aE + drop};
}

/// n * 10^e for e < 0: the quotient n * 2^shift / 5^-e.
///
/// It has one bit or two below the last that the result keeps. These bits and whether the division
/// leaves a remainder show on which side of the middle the value lies, as comparing twice the
/// remainder of a shorter quotient with the divisor would. Below the normal numbers the result
/// keeps the bits down to the lowest exponent only, and the quotient ends one bit further on.
Scaled divideByPowerOfTen(const BigUnsigned& aN, std::int32_t aE,
                          const BinaryFloatFormat& aFormat) {
    Scratch divisor;
    Scratch rest;
    Scratch quotient;
    requireFit(powerOfFive(divisor.number, scratchWords, -aE, 0, nullptr));
    const std::int32_t wanted = bigBitLength(divisor.number) - bigBitLength(aN);
    const std::int32_t shift =
        std::min(wanted + aFormat.mantissaBits + 1, aE - lowestExponent(aFormat) + 1);
    requireFit(bigShiftLeft(rest.number, scratchWords, aN, shift));
    requireFit(bigDivide(rest.number, scratchWords, quotient.number, scratchWords, divisor.number));
    return {bigToWord64(quotient.number), rest.number.count != 0, aE - shift};
}

/// The bits of the nearest value of the format, ties to even: 0 if that is zero, and at least those
/// of an infinity if it is too large. A value with a fraction has a bit to drop.
std::uint64_t roundToNearest(const Scaled& aValue, const BinaryFloatFormat& aFormat) {
    const std::int32_t lowest = lowestExponent(aFormat);
    const std::int32_t drop =
        std::max(static_cast<std::int32_t>(std::bit_width(aValue.bits)) - aFormat.mantissaBits,
                 lowest - aValue.exponent);
    std::uint64_t mantissa = 0;
    if (drop <= 0) {
        mantissa = aValue.bits << -drop;
    } else {
        mantissa = aValue.bits >> drop;
        const std::uint64_t dropped = aValue.bits - (mantissa << drop);
        const std::uint64_t half = std::uint64_t{1} << (drop - 1);
        const bool upFromTie = aValue.hasFraction || mantissa % 2 != 0;
        mantissa += dropped + (upFromTie ? 1 : 0) > half ? 1 : 0;
    }
    // The mantissa's top bit, where it has one, and a carry out of it count the exponent on.
    const auto exponent = static_cast<std::uint64_t>(aValue.exponent + drop - lowest);
    return (exponent << (aFormat.mantissaBits - 1)) + mantissa;
}

/// The bits of digits * 10^exponent as roundToNearest() gives them.
std::uint64_t convert(const Decimal& aDecimal, const BinaryFloatFormat& aFormat) {
    Scratch digits;
    requireFit(bigSetWord64(digits.number, scratchWords, aDecimal.digits));
    return roundToNearest(aDecimal.exponent < 0
                              ? divideByPowerOfTen(digits.number, aDecimal.exponent, aFormat)
                              : multiplyByPowerOfTen(digits.number, aDecimal.exponent),
                          aFormat);
}

/// The end of the text, or a position in it up to which every number at its start is read.
const char* findEnd(const char* aText) {
    constexpr std::size_t usualSize = 64;
    // memchr() reads no further than the terminator.
    const void* const end = std::memchr(aText, 0, usualSize);
    if (end != nullptr) return static_cast<const char*>(end);
    return aText + std::strspn(aText, " \t\n\v\f\r+-.0123456789eE");
}

/// Converts the number at the front of the text and returns the position after it, or null if there
/// is none.
const char* convertText(double& aResult, Text aText, const BinaryFloatFormat& aFormat) {
    const Decimal decimal = scanDecimal(aText, aFormat);
    const std::int32_t infinityExponent = aFormat.maxExponent - aFormat.minExponent + 2;
    const std::uint64_t infinity = static_cast<std::uint64_t>(infinityExponent)
                                   << (aFormat.mantissaBits - 1);
    std::uint64_t bits = decimal.range == Range::Above ? infinity : 0;
    if (decimal.digits != 0) bits = std::min(convert(decimal, aFormat), infinity);
    const bool nonZero = decimal.digits != 0 || decimal.range != Range::Inside;
    if (nonZero && (bits == 0 || bits == infinity)) errno = ERANGE;
    if (decimal.negative && decimal.end != nullptr) bits |= std::uint64_t{1} << 63;
    aResult = std::bit_cast<double>(bits);
    return decimal.end;
}

} // namespace

double strToDouble(const char* aText, const char** aEnd) {
    return strToDouble(aText, findEnd(aText), aEnd);
}

double strToDouble(const char* aText, const char* aTextEnd, const char** aEnd) {
    double result = 0;
    const char* const end = convertText(result, {aText, aTextEnd}, doubleFormat);
    if (aEnd != nullptr) *aEnd = end != nullptr ? end : aText;
    return result;
}

const char* decimalToBinaryFloat(double* aResult, const char* aText,
                                 const BinaryFloatFormat& aFormat) {
    const char* const end = convertText(*aResult, {aText, findEnd(aText)}, aFormat);
    return end != nullptr ? end : aText;
}

} // namespace vexil
