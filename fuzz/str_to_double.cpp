// SPDX-License-Identifier: MIT

// The conversion agrees with the runtime's wherever their contracts agree.
#include "fuzz/require.h"
#include "vexil/numbers/decimal_conversion.h"

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

bool isDigit(char aChar) {
    return aChar >= '0' && aChar <= '9';
}

/// A number in a text, and the same number without the digits after the 17th.
struct Number {
    std::size_t length = 0; ///< of the text including the number; 0: there is no number
    std::string text;       ///< for the runtime
    bool isZero = true;
    std::int64_t exponent = 0; ///< as written, not above 10 billion
};

/// Takes the digits from @p aPos on; those after the 17th significant one become zeros.
std::size_t takeDigits(const std::string& aText, std::size_t aPos, int& aTaken, Number& aNumber) {
    for (; isDigit(aText[aPos]); ++aPos) {
        if (aText[aPos] != '0' || aTaken > 0) ++aTaken;
        if (aText[aPos] != '0') aNumber.isZero = false;
        aNumber.text += aTaken > 17 ? '0' : aText[aPos];
    }
    return aPos;
}

/// Takes an exponent if there is a complete one.
std::size_t takeExponent(const std::string& aText, std::size_t aPos, Number& aNumber) {
    if (aText[aPos] != 'e' && aText[aPos] != 'E') return aPos;
    std::size_t pos = aPos + 1;
    const bool isNegative = aText[pos] == '-';
    if (isNegative || aText[pos] == '+') ++pos;
    if (!isDigit(aText[pos])) return aPos;
    for (; isDigit(aText[pos]); ++pos) {
        const std::int64_t next = 10 * aNumber.exponent + (aText[pos] - '0');
        aNumber.exponent = std::min<std::int64_t>(next, 10'000'000'000);
    }
    if (isNegative) aNumber.exponent = -aNumber.exponent;
    aNumber.text.append(aText, aPos, pos - aPos);
    return pos;
}

Number findNumber(const std::string& aText) {
    std::size_t pos = 0;
    while (aText[pos] == ' ' || (aText[pos] >= '\t' && aText[pos] <= '\r')) ++pos;
    Number number;
    if (aText[pos] == '-' || aText[pos] == '+') number.text += aText[pos++];
    int taken = 0;
    const std::size_t begin = pos;
    pos = takeDigits(aText, begin, taken, number);
    bool hasDigits = pos != begin;
    if (aText[pos] == '.') {
        number.text += '.';
        const std::size_t fraction = pos + 1;
        const std::size_t end = takeDigits(aText, fraction, taken, number);
        hasDigits = hasDigits || end != fraction;
        pos = end;
    }
    if (hasDigits) number.length = takeExponent(aText, pos, number);
    return number;
}

/// Differs from the runtime by design: an exponent beyond 32 bits is a range error even of a zero.
double expectedValue(const Number& aNumber) {
    if (aNumber.isZero && aNumber.exponent > std::numeric_limits<std::int32_t>::max()) {
        return std::copysign(std::numeric_limits<double>::infinity(),
                             aNumber.text.front() == '-' ? -1.0 : 1.0);
    }
    return std::strtod(aNumber.text.c_str(), nullptr);
}

void checkNumber(const Number& aNumber, double aValue, bool aIsRangeError) {
    const double expected = expectedValue(aNumber);
    require(std::bit_cast<std::uint64_t>(aValue) == std::bit_cast<std::uint64_t>(expected),
            "the value is the runtime's");
    const bool isBeyond = aNumber.exponent > std::numeric_limits<std::int32_t>::max() ||
                          aNumber.exponent < std::numeric_limits<std::int32_t>::min();
    const bool isRangeError = aNumber.isZero ? isBeyond : expected == 0.0 || std::isinf(expected);
    require(aIsRangeError == isRangeError, "infinities and lost values alone are range errors");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    std::string text(aData, aData + aSize);
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    const Number number = findNumber(text);

    errno = 0;
    const char* end = nullptr;
    const double value = vexil::strToDouble(text.c_str(), &end);
    const int error = errno;
    const char* boundedEnd = nullptr;
    const double bounded = vexil::strToDouble(text.data(), text.data() + text.size(), &boundedEnd);
    require(std::bit_cast<std::uint64_t>(bounded) == std::bit_cast<std::uint64_t>(value) &&
                boundedEnd == end,
            "text without a terminator is converted equally");
    require(end == text.c_str() + number.length, "the end is that of the number");
    require(error == 0 || error == ERANGE, "no other error is set");
    if (number.length == 0) {
        require(std::bit_cast<std::uint64_t>(value) == 0 && error == 0, "no number gives zero");
        return 0;
    }
    // The number of digits of a zero matters only for exponents at the limit of 32 bits.
    constexpr std::int64_t clearOfTheLimit = 2'147'000'000;
    const bool isAtTheLimit =
        std::abs(number.exponent) > clearOfTheLimit && std::abs(number.exponent) <= 2'147'483'648;
    if (number.isZero && isAtTheLimit) return 0;
    checkNumber(number, value, error == ERANGE);
    return 0;
}
