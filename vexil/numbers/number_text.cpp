#include "vexil/numbers/number_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace vexil {

namespace {

constexpr int digitCount = 6;
constexpr std::uint32_t sixDigits = 100000; // the smallest number of so many
constexpr std::uint32_t sevenDigits = 1000000;

/// 10^0 to 10^15, exact.
constexpr double smallPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
/// 10^(16 n), the nearest double of each.
constexpr double largePowers[] = {1e0,   1e16,  1e32,  1e48,  1e64,  1e80,  1e96,
                                  1e112, 1e128, 1e144, 1e160, 1e176, 1e192, 1e208,
                                  1e224, 1e240, 1e256, 1e272, 1e288};

/// Between these, neither scaling nor its powers leave the normal doubles.
constexpr double smallestScaled = 1e-290;
constexpr double largestScaled = 1e290;

/// A number of six significant digits: digits * 10^(exponent - 5), digits from 100000 to 999999.
struct Decimal {
    std::uint32_t digits;
    int exponent;
};

/// The value, whose first digit stands at 10^aExponent, brought to six digits before the point.
double scale(double aValue, int aExponent) {
    const int power = digitCount - 1 - aExponent;
    const auto magnitude = static_cast<unsigned>(std::abs(power));
    const double large = largePowers[magnitude / 16];
    const double small = smallPowers[magnitude % 16];
    return power >= 0 ? aValue * large * small : aValue / large / small;
}

/// A lower bound of the exponent of a positive normal value's first digit, at most one too small.
int estimateExponent(double aValue) {
    const auto bits = std::bit_cast<std::uint64_t>(aValue);
    const int binaryExponent = static_cast<int>(bits >> 52) - 1023;
    return (binaryExponent * 78912 - 1300) >> 18; // log10(2) * 2^18 is 78913.2...
}

/// Rounds a value between the bounds above to six digits, if scaling tells how. The large power and
/// either step may be off by half a unit in the last place, a part of 2^-53 each; the scaled value
/// is below 2^20, so its error is below 2^-31. If it is farther than that from the middle between
/// two integers, the exact value is on the same side and rounds the same way. Ties and near ties
/// are left to the exact conversion.
bool roundToSixDigits(double aValue, Decimal& aDecimal) {
    constexpr double margin = 0x1p-31;
    int exponent = estimateExponent(aValue);
    double scaled = scale(aValue, exponent);
    if (scaled >= sevenDigits) scaled = scale(aValue, ++exponent);
    const auto whole = static_cast<std::int32_t>(scaled);
    const double fraction = scaled - whole;
    if (std::fabs(fraction - 0.5) <= margin) return false;
    aDecimal = {static_cast<std::uint32_t>(whole) + (fraction > 0.5 ? 1U : 0U), exponent};
    if (aDecimal.digits == sevenDigits) aDecimal = {sixDigits, exponent + 1};
    return true;
}

/// "00" to "99".
constexpr std::array<char, 200> makeDigitPairs() {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr auto digitPairs = makeDigitPairs();

/// Writes two digits. The value is below 100.
void putPair(char* aDest, std::uint32_t aValue) {
    std::memcpy(aDest, &digitPairs[std::size_t{2} * aValue], 2);
}

/// The digits of a Decimal, and how many of them come before its trailing zeros.
struct Digits {
    static constexpr std::size_t areaSize = 8; // copied as a whole, which needs no loop

    explicit Digits(std::uint32_t aDigits) {
        putPair(text, aDigits / 10000);
        putPair(text + 2, aDigits / 100 % 100);
        putPair(text + 4, aDigits % 100);
        while (text[count - 1] == '0') --count;
    }

    char text[areaSize + digitCount] = {};
    int count = digitCount;
};

/// "e", a sign and two or three digits.
char* putExponent(char* aDest, int aExponent) {
    *aDest++ = 'e';
    *aDest++ = aExponent < 0 ? '-' : '+';
    auto magnitude = static_cast<std::uint32_t>(std::abs(aExponent));
    if (magnitude >= 100) {
        *aDest++ = static_cast<char>('0' + magnitude / 100);
        magnitude %= 100;
    }
    putPair(aDest, magnitude);
    return aDest + 2;
}

/// Writes digits with a point behind the first @p aBefore of them, if there are more.
FloatText putWithPoint(char* aDest, const Digits& aDigits, int aBefore) {
    std::memcpy(aDest, aDigits.text, Digits::areaSize);
    if (aDigits.count <= aBefore) return {aDest + aBefore, true};
    aDest[aBefore] = '.';
    std::memcpy(aDest + aBefore + 1, aDigits.text + aBefore, Digits::areaSize);
    return {aDest + aDigits.count + 1, false};
}

FloatText putDecimal(char* aDest, const Decimal& aDecimal) {
    const Digits digits(aDecimal.digits);
    const int exponent = aDecimal.exponent;
    if (exponent < -4 || exponent >= digitCount) {
        return {putExponent(putWithPoint(aDest, digits, 1).end, exponent), false};
    }
    if (exponent >= 0) return putWithPoint(aDest, digits, exponent + 1);
    std::copy_n("0.000", 5, aDest);
    aDest += 1 - exponent;
    std::memcpy(aDest, digits.text, Digits::areaSize);
    return {aDest + digits.count, false};
}

/// The exact conversion, which defines what the quick one has to give.
FloatText putExactly(char* aDest, double aValue) {
    char* const end =
        std::to_chars(aDest, aDest + floatTextSize, aValue, std::chars_format::general, digitCount)
            .ptr;
    const bool looksLikeInteger = std::none_of(
        aDest, end, [](char aCharacter) { return aCharacter == '.' || aCharacter == 'e'; });
    return {end, looksLikeInteger};
}

/// The number of decimal digits.
int countDigits(std::uint32_t aValue) {
    static constexpr std::uint32_t powers[] = {1,      10,      100,      1000,      10000,
                                               100000, 1000000, 10000000, 100000000, 1000000000};
    const int bits = static_cast<int>(std::bit_width(aValue));
    const int atLeast = bits * 1233 >> 12; // log10(2) * 2^12 is 1233.0...
    return atLeast + (aValue >= powers[atLeast] || aValue == 0 ? 1 : 0);
}

} // namespace

char* writeInteger(char* aDest, std::int32_t aValue) {
    *aDest = '-';
    aDest += aValue < 0 ? 1 : 0;
    const std::uint32_t bits = static_cast<std::uint32_t>(aValue);
    const std::uint32_t magnitude = aValue < 0 ? 0 - bits : bits;
    // All ten digits, of which those behind the leading zeros count: without a loop, of which
    // nobody could predict the end.
    char digits[19] = {}; // ten are copied from the last digit on at the latest
    const std::uint32_t low = magnitude % 100000000;
    putPair(digits, magnitude / 100000000);
    putPair(digits + 2, low / 1000000);
    putPair(digits + 4, low / 10000 % 100);
    putPair(digits + 6, low / 100 % 100);
    putPair(digits + 8, low % 100);
    const int count = countDigits(magnitude);
    std::memcpy(aDest, digits + 10 - count, 10);
    return aDest + count;
}

FloatText writeFloat(char* aDest, double aValue) {
    const double magnitude = std::fabs(aValue);
    Decimal decimal{};
    // Zeros, what is too large or too small for the quick way, infinities and NaN.
    const bool isScaled = magnitude >= smallestScaled && magnitude <= largestScaled;
    if (!isScaled || !roundToSixDigits(magnitude, decimal)) {
        return putExactly(aDest, aValue);
    }
    *aDest = '-';
    return putDecimal(aValue < 0 ? aDest + 1 : aDest, decimal);
}

} // namespace vexil
