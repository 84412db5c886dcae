// SPDX-License-Identifier: MIT

// The conversions give the same results in whatever state the floating-point unit is.
#include "tests/vexil/numbers/floating_point_states.h"

#include "vexil/numbers/decimal_conversion.h"
#include "vexil/numbers/number_text.h"
#include "vexil/platform/platform.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

using namespace vexil;

namespace {

constexpr std::size_t numberCount = 20000;

std::string formatWithRuntime(double aValue, int aPrecision) {
    char text[64];
    const auto end =
        std::to_chars(text, std::end(text), aValue, std::chars_format::general, aPrecision);
    return {text, end.ptr};
}

/// Half of the numbers have few digits, half are any doubles, subnormal ones included.
std::vector<double> makeNumbers() {
    std::mt19937_64 random(1);
    std::vector<double> numbers{94.06065, 1e-310, 5e-324, 1234565, 0.1, 1e23};
    while (numbers.size() < numberCount) {
        numbers.push_back(static_cast<double>(random() % 1000000000) / 100000);
        const auto any = std::bit_cast<double>(random());
        if (std::isfinite(any)) numbers.push_back(any);
        numbers.push_back(std::bit_cast<double>(random() >> 12));
    }
    return numbers;
}

struct State {
    const char* name;
    bool (*enter)();
};

class NumbersInFloatingPointState : public testing::TestWithParam<State> {
protected:
    ~NumbersInFloatingPointState() override { platform::resetFloatingPoint(); }
};

TEST_P(NumbersInFloatingPointState, AreWrittenAsInTheDefaultState) {
    const auto numbers = makeNumbers();
    std::vector<std::string> expected;
    for (const double number : numbers) expected.push_back(formatWithRuntime(number, 6));
    std::vector<std::string> actual(expected.size(), std::string(floatTextSize, '.'));

    if (!GetParam().enter()) GTEST_SKIP() << "not available here";
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        char* const text = actual[i].data();
        actual[i].resize(static_cast<std::size_t>(writeFloat(text, numbers[i]).end - text));
    }
    platform::resetFloatingPoint();

    EXPECT_EQ(actual, expected);
}

TEST_P(NumbersInFloatingPointState, AreReadAsInTheDefaultState) {
    const auto numbers = makeNumbers();
    std::vector<std::string> texts;
    std::vector<std::uint64_t> expected;
    for (const double number : numbers) {
        texts.push_back(formatWithRuntime(number, 17));
        expected.push_back(std::bit_cast<std::uint64_t>(number));
    }
    std::vector<std::uint64_t> actual(expected.size());

    if (!GetParam().enter()) GTEST_SKIP() << "not available here";
    for (std::size_t i = 0; i < texts.size(); ++i) {
        actual[i] = std::bit_cast<std::uint64_t>(strToDouble(texts[i].c_str(), nullptr));
    }
    platform::resetFloatingPoint();

    EXPECT_EQ(actual, expected);
}

INSTANTIATE_TEST_SUITE_P(States, NumbersInFloatingPointState,
                         testing::Values(State{"Default", [] { return true; }},
                                         State{"SinglePrecision", enterSinglePrecision},
                                         State{"FlushToZero", flushToZero},
                                         State{"RoundUpward", roundTo<FE_UPWARD>},
                                         State{"RoundDownward", roundTo<FE_DOWNWARD>},
                                         State{"RoundTowardZero", roundTo<FE_TOWARDZERO>},
                                         State{"TrapsEnabled", enableTraps}),
                         [](const auto& aRow) { return std::string(aRow.param.name); });

} // namespace
