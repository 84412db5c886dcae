#include "vexil/json/float_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>

namespace vexil {

namespace {

constexpr int digitCount = 6;
constexpr std::uint32_t sixDigits = 100000; // the smallest number of so many
constexpr std::uint32_t sevenDigits = 1000000;

/// 10^0 to 10^22: those that a double holds exactly.
constexpr double powersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int lastPower = static_cast<int>(std::size(powersOfTen)) - 1;

/// A number of six significant digits: digits * 10^(exponent - 5), digits from 100000 to 999999.
struct Decimal {
    std::uint32_t digits;
    int exponent;
};

/// The value, whose first digit stands at 10^aExponent, brought to six digits before the point with
/// one rounding.
double scale(double aValue, int aExponent) {
    const int power = digitCount - 1 - aExponent;
    return power >= 0 ? aValue * powersOfTen[power] : aValue / powersOfTen[-power];
}

/// A lower bound of the exponent of a positive normal value's first digit, at most one too small.
int estimateExponent(double aValue) {
    const auto bits = std::bit_cast<std::uint64_t>(aValue);
    const int binaryExponent = static_cast<int>(bits >> 52) - 1023;
    return (binaryExponent * 78912 - 262) >> 18; // log10(2) * 2^18 is 78913.2...
}

/// Rounds a positive value to six digits, if one multiplication or division by an exact power of
/// ten tells how. The scaled value is below 2^20, so its error is at most 2^-34, half a unit in its
/// last place. If it is farther than that from the middle between two integers, the exact value is
/// on the same side and rounds the same way. Ties and near ties are left to the exact conversion.
bool roundToSixDigits(double aValue, Decimal& aDecimal) {
    constexpr double margin = 0x1p-33;
    int exponent = estimateExponent(aValue);
    if (exponent < digitCount - 1 - lastPower || exponent >= digitCount - 1 + lastPower)
        return false;
    double scaled = scale(aValue, exponent);
    if (scaled >= sevenDigits) scaled = scale(aValue, ++exponent);
    const auto whole = static_cast<std::int32_t>(scaled);
    const double fraction = scaled - whole;
    if (std::fabs(fraction - 0.5) <= margin) return false;
    aDecimal = {static_cast<std::uint32_t>(whole) + (fraction > 0.5 ? 1U : 0U), exponent};
    if (aDecimal.digits == sevenDigits) aDecimal = {sixDigits, exponent + 1};
    return true;
}

char* putDigits(char* aDest, const char* aDigits, int aCount) {
    return std::copy_n(aDigits, aCount, aDest);
}

/// "e", a sign and two digits.
char* putExponent(char* aDest, int aExponent) {
    *aDest++ = 'e';
    *aDest++ = aExponent < 0 ? '-' : '+';
    const int magnitude = std::abs(aExponent);
    *aDest++ = static_cast<char>('0' + magnitude / 10);
    *aDest++ = static_cast<char>('0' + magnitude % 10);
    return aDest;
}

/// Writes digits with a point behind the first @p aBefore of them, if there are more.
char* putWithPoint(char* aDest, const char* aDigits, int aCount, int aBefore) {
    aDest = putDigits(aDest, aDigits, aBefore);
    if (aCount <= aBefore) return aDest;
    *aDest++ = '.';
    return putDigits(aDest, aDigits + aBefore, aCount - aBefore);
}

char* putDecimal(char* aDest, const Decimal& aDecimal) {
    char digits[digitCount];
    std::to_chars(digits, digits + digitCount, aDecimal.digits);
    int count = digitCount;
    while (digits[count - 1] == '0') --count;
    const int exponent = aDecimal.exponent;
    if (exponent < -4 || exponent >= digitCount) {
        return putExponent(putWithPoint(aDest, digits, count, 1), exponent);
    }
    if (exponent >= 0) return putWithPoint(aDest, digits, count, exponent + 1);
    aDest = putDigits(aDest, "0.000", 1 - exponent);
    return putDigits(aDest, digits, count);
}

/// The exact conversion, which defines what the quick one has to give.
char* putExactly(char* aDest, char* aEnd, double aValue) {
    return std::to_chars(aDest, aEnd, aValue, std::chars_format::general, digitCount).ptr;
}

} // namespace

std::string_view formatFloat(double aValue, FloatArea& aArea) {
    char* const begin = aArea.data();
    const double magnitude = std::fabs(aValue);
    Decimal decimal{};
    char* end = nullptr;
    // Zeros, what is too large or too small for the quick way, infinities and NaN.
    if (!(magnitude >= 1e-17 && magnitude < 1e27) || !roundToSixDigits(magnitude, decimal)) {
        end = putExactly(begin, begin + aArea.size(), aValue);
    } else {
        *begin = '-';
        end = putDecimal(aValue < 0 ? begin + 1 : begin, decimal);
    }
    return {begin, static_cast<std::size_t>(end - begin)};
}

} // namespace vexil
