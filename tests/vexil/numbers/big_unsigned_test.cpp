// SPDX-License-Identifier: MIT
#include "tests/table.h"
#include "tests/vexil/numbers/big_numbers.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using namespace vexil;
using testing::PrintToString;

namespace {

constexpr std::uint32_t ones = 0xFFFFFFFF;
constexpr std::uint32_t high = 0x80000000;

using Op = int (*)(BigUnsigned& aA, BigUnsigned& aQ, std::int32_t aCap, BigUnsigned& aB);
const auto bits = [](auto& b) { return static_cast<std::int32_t>(bigToWord64(b)); };
const Op add = [](auto& a, auto& q, auto c, auto& b) { return bigAdd(q, c, a, b); };
const Op multiply = [](auto& a, auto& q, auto c, auto& b) {
    return b.count == 1 ? bigMultiplyWord(q, c, a, b.words[0]) : bigMultiply(q, c, a, b);
};
const Op shiftLeft = [](auto& a, auto& q, auto c, auto& b) {
    return bigShiftLeft(q, c, a, bits(b));
};
const Op split = [](auto& a, auto& q, auto c, auto& b) { return bigSplit(a, q, c, bits(b)); };
const Op divide = [](auto& a, auto& q, auto c, auto& b) {
    return bigDivide(a, a.count + 1, q, c, b);
};

const Op compare = [](auto& a, auto& q, auto c, auto& b) {
    return bigSetWord(q, c, 1U + static_cast<std::uint32_t>(bigCompareWithPowerOfTwo(a, bits(b))));
};
const std::map<std::string, Op> operations{{"compare", compare},   {"add", add},
                                           {"multiply", multiply}, {"shift", shiftLeft},
                                           {"split", split},       {"divide", divide}};

class BigUnsignedResults : public TableTest {};

TEST_P(BigUnsignedResults, FitTheirCapacityOrAreRefused) {
    const Columns& row = GetParam().columns;
    const Op operation = operations.at(row[0]);
    const std::int32_t cap = std::stoi(row[3]);
    Number a(numbersOf<std::uint32_t>(row[1], 16), 1), b(numbersOf<std::uint32_t>(row[2], 16)),
        result({}, cap);
    if (cap > 0) {
        Number less({}, cap - 1);
        EXPECT_EQ(operation(a.value, less.value, cap - 1, b.value), 1);
        EXPECT_TRUE(less.intact());
    }
    EXPECT_EQ(operation(a.value, result.value, cap, b.value), 0);
    EXPECT_TRUE(result.intact() && a.intact());
    EXPECT_EQ(result.words(), numbersOf<std::uint32_t>(row[4], 16));
    const Number rest(numbersOf<std::uint32_t>(row[5], 16));
    EXPECT_EQ(a.words(), rest.words());
    EXPECT_EQ(bigCompare(a.value, rest.value), 0);
}

INSTANTIATE_TABLE(BigUnsignedResults, "big_unsigned.txt", 6);

TEST(BigUnsigned, RefusesDivisionByZeroAndWithoutSpareWord) {
    Number five({5}, 1);
    EXPECT_EQ(bigDivide(five.value, 2, five.value, 2, Number({}).value), 1) << "by 0";
    EXPECT_EQ(bigDivide(five.value, 1, five.value, 2, Number({2}).value), 1) << "no spare word";
}

TEST(BigUnsigned, SetsAShiftedWordIfItFits) {
    Number result({}, 3);
    EXPECT_EQ(bigSetShiftedWord(result.value, 3, high + 1, 33), 0);
    EXPECT_EQ(result.words(), (Words{0, 2, 1}));
    EXPECT_EQ(bigSetShiftedWord(result.value, 3, 0, 33), 0);
    EXPECT_EQ(result.words(), Words{});
    EXPECT_EQ(bigSetShiftedWord(result.value, 2, high + 1, 33), 1);
    EXPECT_TRUE(result.intact());
}

TEST(BigUnsigned, QuotientAndRemainderMakeTheDividend) {
    std::mt19937 engine(1);
    const auto random = [&engine] { return static_cast<std::uint32_t>(engine()); };
    const auto randomWords = [&random](std::size_t aMaxCount) {
        constexpr std::uint32_t critical[] = {0, 1, high - 1, high, ones - 1, ones};
        Words words(1 + random() % aMaxCount);
        for (auto& word : words) word = random() % 3 == 0 ? random() : critical[random() % 6];
        words.back() |= 1;
        return words;
    };
    for (int i = 0; i < 20000; ++i) {
        const Words dividend = randomWords(7);
        const Number d(randomWords(4));
        Number rest(dividend, 1), q({}, 7), sum({}, 12);
        ASSERT_EQ(bigDivide(rest.value, 8, q.value, 7, d.value), 0);
        ASSERT_EQ(bigMultiply(sum.value, 12, d.value, q.value), 0);
        ASSERT_EQ(bigAdd(sum.value, 12, sum.value, rest.value), 0);
        ASSERT_EQ(sum.words(), dividend) << "by " << PrintToString(d.words());
        ASSERT_EQ(bigCompare(rest.value, d.value), -1) << "by " << PrintToString(d.words());
    }
}

TEST(BigUnsigned, ShortNumbersHaveTheResultsOfLongOnes) {
    std::mt19937_64 engine(1);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t dividend = engine() >> engine() % 64;
        const std::uint64_t divisor = (engine() >> engine() % 64) | 1;
        const auto distance = static_cast<std::int32_t>(engine() % 200);
        Number a({}, 3), rest({}, 3), b({}, 3), q({}, 3), shifted({}, 9);
        Number expectedRest({}, 3), expectedQ({}, 3), expectedShifted({}, 9);
        ASSERT_EQ(bigSetWord64(rest.value, 3, dividend) + bigSetWord64(a.value, 3, dividend) +
                      bigSetWord64(expectedRest.value, 3, dividend) +
                      bigSetWord64(b.value, 3, divisor),
                  0);
        ASSERT_EQ(bigDivide(rest.value, 3, q.value, 2, b.value), 0);
        ASSERT_EQ(bigDivideLong(expectedRest.value, 3, expectedQ.value, 2, b.value), 0);
        ASSERT_EQ(rest.words(), expectedRest.words()) << dividend << " mod " << divisor;
        ASSERT_EQ(q.words(), expectedQ.words()) << dividend << " / " << divisor;
        ASSERT_EQ(bigShiftLeft(shifted.value, 9, a.value, distance), 0);
        ASSERT_EQ(bigShiftLeftLong(expectedShifted.value, 9, a.value, distance), 0);
        ASSERT_EQ(shifted.words(), expectedShifted.words()) << dividend << " << " << distance;
        ASSERT_TRUE(shifted.intact() && rest.intact() && q.intact());
    }
}

} // namespace
