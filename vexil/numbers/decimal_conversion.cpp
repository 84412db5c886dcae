#include "vexil/numbers/decimal_conversion.h"

#include "vexil/numbers/big_unsigned.h"
#include "vexil/numbers/powers_of_five.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <limits>

namespace vexil {

namespace {

// 864 bits: the widest dividend, for 17 digits at the smallest normal numbers, fills 26 words, and
// the division needs one more. The operations below therefore never refuse.
constexpr std::int32_t scratchWords = 27;

/// A big integer with its words; not initialised, as every operation sets what it writes.
struct Scratch {
    std::uint32_t words[scratchWords];
    BigUnsigned number{0, words};
};

/// Of the last bit of the smallest number.
constexpr std::int32_t lowestExponent(const BinaryFloatFormat& aFormat) {
    return 2 - aFormat.bias - aFormat.mantissaBits;
}

enum class Range { Inside, Below, Above };

/// What a text says: digits * 10^exponent, or that it is out of range whatever the digits.
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

const char* skipDigits(const char* aText) {
    while (isDigit(*aText)) ++aText;
    return aText;
}

/// Collects the significant digits: leading zeros are none, and those beyond the limit are dropped.
/// Zeros at the end are taken like others; they cannot change the value that digits and exponent
/// have together.
struct DigitReader {
    std::int32_t limit;
    std::int32_t taken = 0;
    std::uint64_t value = 0;
    std::int64_t dropped = 0;

    /// Reads a run of digits and returns its end.
    const char* read(const char* aText) {
        if (taken == 0) {
            while (*aText == '0') ++aText;
        }
        for (; isDigit(*aText) && taken < limit; ++aText, ++taken) {
            value = 10 * value + static_cast<std::uint64_t>(*aText - '0');
        }
        const char* const end = skipDigits(aText);
        dropped += end - aText;
        return end;
    }
};

/// Reads the exponent, if there is one, and moves @p aText behind it. Every value of more than 31
/// bits, whichever its sign, comes out as one of 32.
std::int64_t scanExponent(const char*& aText) {
    if (*aText != 'e' && *aText != 'E') return 0;
    const char* pos = aText + 1;
    const bool negative = *pos == '-';
    if (negative || *pos == '+') ++pos;
    if (!isDigit(*pos)) return 0;
    std::int64_t value = 0;
    for (; isDigit(*pos); ++pos) value = std::min(10 * value + (*pos - '0'), maxInt32 + 1);
    aText = pos;
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

Decimal scanDecimal(const char* aText, const BinaryFloatFormat& aFormat) {
    while (isSpace(*aText)) ++aText;
    Decimal decimal;
    decimal.negative = *aText == '-';
    if (*aText == '-' || *aText == '+') ++aText;

    DigitReader reader{aFormat.maxDigits};
    const char* pos = reader.read(aText);
    bool anyDigit = pos != aText;
    std::int64_t fractionDigits = 0;
    if (*pos == '.') {
        const char* const fraction = pos + 1;
        pos = reader.read(fraction);
        fractionDigits = pos - fraction;
        anyDigit = anyDigit || fractionDigits != 0;
    }
    if (!anyDigit) return decimal;

    const std::int64_t written = scanExponent(pos);
    const std::int64_t exponent = written - fractionDigits;
    decimal.end = pos;
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
    Scratch product;
    powerOfFive(product.number, scratchWords, aE, 0, &aN);
    const std::int32_t drop = bigBitLength(product.number) - 64;
    if (drop <= 0) return {bigToWord64(product.number), false, aE};
    Scratch top;
    bigSplit(product.number, top.number, scratchWords, drop);
    return {bigToWord64(top.number), product.number.count != 0, aE + drop};
}

/// n * 10^e for e < 0: the quotient n * 2^shift / 5^-e.
///
/// It has one bit or two below the last that the result keeps. That bit and whether anything is
/// left of the division tell on which side of the middle the value lies, as comparing twice the
/// remainder of a shorter quotient with the divisor would. Below the normal numbers the result
/// keeps the bits down to the lowest exponent only, and the quotient ends one bit further on.
Scaled divideByPowerOfTen(const BigUnsigned& aN, std::int32_t aE,
                          const BinaryFloatFormat& aFormat) {
    Scratch divisor;
    Scratch rest;
    Scratch quotient;
    powerOfFive(divisor.number, scratchWords, -aE, 0, nullptr);
    const std::int32_t wanted = bigBitLength(divisor.number) - bigBitLength(aN);
    const std::int32_t shift =
        std::min(wanted + aFormat.mantissaBits + 1, aE - lowestExponent(aFormat) + 1);
    bigShiftLeft(rest.number, scratchWords, aN, shift);
    bigDivide(rest.number, scratchWords, quotient.number, scratchWords, divisor.number);
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
    bigSetWord64(digits.number, scratchWords, aDecimal.digits);
    return roundToNearest(aDecimal.exponent < 0
                              ? divideByPowerOfTen(digits.number, aDecimal.exponent, aFormat)
                              : multiplyByPowerOfTen(digits.number, aDecimal.exponent),
                          aFormat);
}

} // namespace

double strToDouble(const char* aText, const char** aEnd) {
    double result = 0;
    const char* const end = decimalToBinaryFloat(&result, aText, doubleFormat);
    if (aEnd != nullptr) *aEnd = end;
    return result;
}

const char* decimalToBinaryFloat(double* aResult, const char* aText,
                                 const BinaryFloatFormat& aFormat) {
    const Decimal decimal = scanDecimal(aText, aFormat);
    *aResult = 0;
    if (decimal.end == nullptr) return aText;
    const std::int32_t infinityExponent = aFormat.maxExponent - aFormat.minExponent + 2;
    const std::uint64_t infinity = static_cast<std::uint64_t>(infinityExponent)
                                   << (aFormat.mantissaBits - 1);
    std::uint64_t bits = decimal.range == Range::Above ? infinity : 0;
    if (decimal.digits != 0) bits = std::min(convert(decimal, aFormat), infinity);
    const bool nonZero = decimal.digits != 0 || decimal.range != Range::Inside;
    if (nonZero && (bits == 0 || bits == infinity)) errno = ERANGE;
    if (decimal.negative) bits |= std::uint64_t{1} << 63;
    *aResult = std::bit_cast<double>(bits);
    return decimal.end;
}

} // namespace vexil
