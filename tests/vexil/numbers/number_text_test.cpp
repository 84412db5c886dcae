// SPDX-License-Identifier: MIT
#include "vexil/numbers/number_text.h"

#include "vexil/numbers/six_digits.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <string_view>

using namespace vexil;

namespace {

void expectRuntimeText(double aValue) {
    char expected[64];
    const auto end =
        std::to_chars(expected, std::end(expected), aValue, std::chars_format::general, 6).ptr;
    const std::string_view expectedText(expected, static_cast<std::size_t>(end - expected));
    char actual[floatTextSize];
    const FloatText text = writeFloat(actual, aValue);
    const std::string_view actualText(actual, static_cast<std::size_t>(text.end - actual));
    ASSERT_EQ(actualText, expectedText) << std::hexfloat << aValue;
    ASSERT_EQ(text.looksLikeInteger, actualText.find_first_of(".e") == std::string_view::npos)
        << actualText;
}

TEST(FloatText, IsTheRuntimesForAnyDouble) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000 && !HasFatalFailure(); ++i) {
        const std::uint64_t bits = random();
        expectRuntimeText(std::bit_cast<double>(bits));
        expectRuntimeText(std::bit_cast<double>(bits >> 12));
    }
}

TEST(FloatText, IsTheRuntimesForSevenDigits) {
    // Every tie and, at large and small exponents, doubles next to ties.
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000 && !HasFatalFailure(); ++i) {
        const double seventhIsFive = static_cast<double>(random() % 1000000) * 10 + 5;
        const double scaled =
            seventhIsFive * std::pow(10.0, static_cast<int>(random() % 600) - 300);
        expectRuntimeText(seventhIsFive);
        expectRuntimeText(scaled);
        expectRuntimeText(std::nextafter(scaled, 0));
    }
}

TEST(FloatText, IsTheRuntimesAroundPowersOfTen) {
    for (int exponent = -330; exponent < 310; ++exponent) {
        for (const char* const digits : {"1", "9.99999", "9.999995"}) {
            const std::string text = digits + ("e" + std::to_string(exponent));
            const double value = std::strtod(text.c_str(), nullptr);
            ASSERT_NO_FATAL_FAILURE(expectRuntimeText(value));
            ASSERT_NO_FATAL_FAILURE(expectRuntimeText(std::nextafter(value, 0)));
            ASSERT_NO_FATAL_FAILURE(expectRuntimeText(std::nextafter(value, INFINITY)));
        }
    }
}

TEST(FloatText, IsTheRuntimesForSpecialValues) {
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0, Limits::denorm_min(), Limits::min(), Limits::max(),
                               Limits::infinity(), Limits::quiet_NaN()}) {
        expectRuntimeText(value);
        expectRuntimeText(-value);
    }
}

TEST(SixDigits, AreRoundedAsInExactArithmetic) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t bits = random() % (std::uint64_t{0x7FF} << 52) >> (i % 2 * 12);
        const SixDigits quick = roundToSixDigits(bits);
        const SixDigits exact = roundExactly(bits);
        ASSERT_EQ(quick.digits, exact.digits) << std::bit_cast<double>(bits);
        ASSERT_EQ(quick.exponent, exact.exponent) << std::bit_cast<double>(bits);
    }
}

TEST(IntegerText, IsTheRuntimes) {
    const auto expectText = [](std::int32_t aValue) {
        char text[integerTextSize];
        ASSERT_EQ(std::string(text, writeInteger(text, aValue)), std::to_string(aValue));
    };
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t value : {0, 1, -1, Limits::max(), Limits::min()}) expectText(value);
    for (std::int64_t power = 10; power < Limits::max(); power *= 10) {
        const auto value = static_cast<std::int32_t>(power);
        for (const std::int32_t near : {value - 1, value, -value, 1 - value}) expectText(near);
    }
    std::mt19937 random(1);
    for (int i = 0; i < 100000; ++i) expectText(static_cast<std::int32_t>(random() >> i % 32));
}

} // namespace
