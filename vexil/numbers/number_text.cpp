// SPDX-License-Identifier: MIT
#include "vexil/numbers/number_text.h"

#include "vexil/numbers/six_digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace vexil {

namespace {

constexpr int digitCount = 6;

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

/// Six digits as text.
struct DigitText {
    static constexpr std::size_t copySize = 8; ///< a copy of fixed size needs no loop

    explicit DigitText(std::uint32_t aDigits) {
        putPair(text, aDigits / 10000);
        putPair(text + 2, aDigits / 100 % 100);
        putPair(text + 4, aDigits % 100);
        while (text[count - 1] == '0') --count;
    }

    char text[copySize + digitCount] = {};
    int count = digitCount; ///< without trailing zeros
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

/// Writes digits with a point after the first @p aBefore of them if more follow.
FloatText putWithPoint(char* aDest, const DigitText& aDigits, int aBefore) {
    std::memcpy(aDest, aDigits.text, DigitText::copySize);
    if (aDigits.count <= aBefore) return {aDest + aBefore, true};
    aDest[aBefore] = '.';
    std::memcpy(aDest + aBefore + 1, aDigits.text + aBefore, DigitText::copySize);
    return {aDest + aDigits.count + 1, false};
}

FloatText putSixDigits(char* aDest, const SixDigits& aNumber) {
    const DigitText digits(aNumber.digits);
    const int exponent = aNumber.exponent;
    if (exponent < -4 || exponent >= digitCount) {
        return {putExponent(putWithPoint(aDest, digits, 1).end, exponent), false};
    }
    if (exponent >= 0) return putWithPoint(aDest, digits, exponent + 1);
    std::copy_n("0.000", 5, aDest);
    aDest += 1 - exponent;
    std::memcpy(aDest, digits.text, DigitText::copySize);
    return {aDest + digits.count, false};
}

/// Writes a text that is not a number with a point or an exponent.
FloatText putWord(char* aDest, std::string_view aText) {
    return {std::copy(aText.begin(), aText.end(), aDest), true};
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
    // All ten digits are made, and those after the leading zeros copied: a loop over the digits
    // would end at an unpredictable point.
    char digits[19] = {}; // ten are copied, at the latest from the last digit on
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
    constexpr std::uint64_t signBit = std::uint64_t{1} << 63;
    constexpr std::uint64_t infinity = std::uint64_t{0x7FF} << 52;
    const auto bits = std::bit_cast<std::uint64_t>(aValue);
    const std::uint64_t magnitude = bits & ~signBit;
    *aDest = '-';
    aDest += bits != magnitude ? 1 : 0;
    if (magnitude == 0) return putWord(aDest, "0");
    if (magnitude >= infinity) return putWord(aDest, magnitude == infinity ? "inf" : "nan");
    return putSixDigits(aDest, roundToSixDigits(magnitude));
}

} // namespace vexil
