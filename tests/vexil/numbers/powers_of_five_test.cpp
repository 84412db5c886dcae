// SPDX-License-Identifier: MIT
#include "vexil/numbers/powers_of_five.h"

#include "tests/vexil/numbers/big_numbers.h"

#include <gtest/gtest.h>

using namespace vexil;

namespace {

constexpr std::int32_t cap = 380; ///< 5^5039 has 366 words

TEST(PowersOfFive, AreRepeatedMultiplications) {
    Number power({1}, cap);
    for (std::int32_t n = 0; n < 5040; ++n) {
        ASSERT_EQ(bigMultiplyWord(power.value, cap, power.value, n == 0 ? 1 : 5), 0);
        if (n > 600 && n % 61 != 0 && n % 560 != 0 && n != 5039) continue;
        for (const Words& multiplier : {Words{1}, Words{3}, Words{0xFFFFFFFF, 7}}) {
            for (const std::int32_t k : {0, n % 3 * 37}) {
                const Number factor(multiplier);
                Number expected({}, cap);
                Number actual({}, cap);
                ASSERT_EQ(bigMultiply(expected.value, cap, power.value, factor.value), 0);
                ASSERT_EQ(bigShiftLeft(expected.value, cap, expected.value, k), 0);
                const bool absent = multiplier == Words{1};
                ASSERT_EQ(powerOfFive(actual.value, cap, n, k, absent ? nullptr : &factor.value),
                          0);
                ASSERT_EQ(actual.words(), expected.words()) << "5^" << n << " * 2^" << k;
            }
        }
    }
}

TEST(PowersOfFive, RefuseWhatDoesNotFit) {
    const std::tuple<std::int32_t, std::int32_t, Words, std::int32_t> rows[] = {
        {0, 32, {1}, 2},    {13, 0, {1}, 1},      {13, 2, {1}, 2},    {28, 0, {1}, 3},
        {28, 0, {1, 1}, 5}, {580, 0, {1, 1}, 44}, {5039, 0, {1}, 366}};
    for (const auto& [n, k, multiplier, leastCap] : rows) {
        Number less({}, leastCap - 1), out({}, leastCap);
        const Number factor(multiplier);
        EXPECT_EQ(powerOfFive(less.value, leastCap - 1, n, k, &factor.value), 1) << "5^" << n;
        EXPECT_TRUE(less.intact()) << "5^" << n;
        EXPECT_EQ(powerOfFive(out.value, leastCap, n, k, &factor.value), 0) << n;
    }
    Number out({}, cap), zero({});
    EXPECT_EQ(powerOfFive(out.value, 0, 5040, 1, &zero.value), 0) << "0 times any power is 0";
    EXPECT_EQ(powerOfFive(out.value, cap, 5040, 0, nullptr), 1);
    EXPECT_EQ(powerOfFive(out.value, cap, -1, 0, nullptr), 1);
    EXPECT_EQ(powerOfFive(out.value, 1, 14, 0, nullptr), 1) << "two words";
}

} // namespace
