#include "tests/vexil/json/big_numbers.h"

#include <gtest/gtest.h>

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

struct Row {
    Op operation;
    Words a;
    Words b;               ///< or the word, or the count of bits
    std::int32_t leastCap; ///< one word less is refused
    Words result;
    Words rest; ///< what a becomes
};

const Row rows[] = {
    {add, {ones}, {1}, 2, {0, 1}, {ones}},
    {add, {1}, {ones, ones, 5}, 3, {0, 0, 6}, {1}},
    {add, {ones, 1}, {ones, ones}, 3, {ones - 1, 1, 1}, {ones, 1}},
    {multiply, {1, 2}, {0}, 0, {}, {1, 2}},
    {multiply, {ones, ones}, {ones}, 3, {1, ones, ones - 1}, {ones, ones}},
    {multiply, {1, 2}, {}, 0, {}, {1, 2}},
    {multiply, {3, 0, 1}, {0, 5}, 5, {0, 15, 0, 5}, {3, 0, 1}}, // refused by the counts
    {multiply, {ones, ones}, {ones, ones}, 4, {1, 0, ones - 1, ones}, {ones, ones}},
    {shiftLeft, {}, {1000}, 0, {}, {}},
    {shiftLeft, {5, ones}, {33}, 4, {0, 10, ones - 1, 1}, {5, ones}},
    {split, {1, 2}, {}, 2, {1, 2}, {}},
    {split, {1, 2}, {64}, 0, {}, {1, 2}},
    {split, {1, 0, 3}, {64}, 1, {3}, {1}},
    {split, {0, 0xF5, 3}, {36}, 2, {0x3000000F}, {0, 5}},
    {divide, {5}, {7}, 0, {}, {5}},
    {divide, {1, 2, 9}, {1, 3, 9}, 1, {}, {1, 2, 9}}, // smaller, but not by the top word
    {divide, {0, 0, 1}, {3}, 3, {0x55555555, 0x55555555}, {1}},
    {divide, {3, 0, high}, {1, 0, high >> 2}, 1, {3}, {0, 0, high >> 2}}, // adds back
    {divide, {0, 0, high, high - 1}, {1, 0, high}, 2, {ones - 1}, {2, ones, high - 1}},
};

TEST(BigUnsigned, ResultFitsItsCapacityOrIsRefused) {
    for (const Row& row : rows) {
        SCOPED_TRACE(PrintToString(row.a) + " and " + PrintToString(row.b));
        Number a(row.a, 1);
        Number b(row.b);
        Number result({}, row.leastCap);
        if (row.leastCap > 0) {
            Number less({}, row.leastCap - 1);
            EXPECT_EQ(row.operation(a.value, less.value, row.leastCap - 1, b.value), 1);
            EXPECT_TRUE(less.intact());
        }
        EXPECT_EQ(row.operation(a.value, result.value, row.leastCap, b.value), 0);
        EXPECT_TRUE(result.intact() && a.intact());
        EXPECT_EQ(result.words(), row.result);
        EXPECT_EQ(a.words(), row.rest);
    }
    Number five({5}, 1);
    EXPECT_EQ(bigDivide(five.value, 2, five.value, 2, Number({}).value), 1) << "by 0";
    EXPECT_EQ(bigDivide(five.value, 1, five.value, 2, Number({2}).value), 1) << "no spare word";
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
        bigMultiply(sum.value, 12, d.value, q.value);
        bigAdd(sum.value, 12, sum.value, rest.value);
        ASSERT_EQ(sum.words(), dividend) << "by " << PrintToString(d.words());
        ASSERT_EQ(bigCompare(rest.value, d.value), -1) << "by " << PrintToString(d.words());
    }
}

TEST(BigUnsigned, ComparesWithPowersOfTwo) {
    const std::tuple<Words, std::int32_t, int> powers[] = {{{}, -1, -1},
                                                           {{}, 0, -1},
                                                           {{1}, -1, 1},
                                                           {{0, 1 << 20}, 52, 0},
                                                           {{1, 1 << 20}, 52, 1},
                                                           {{0, 3 << 19}, 52, 1},
                                                           {{ones, (1 << 20) - 1}, 52, -1}};
    for (const auto& [a, power, expected] : powers) {
        EXPECT_EQ(bigCompareWithPowerOfTwo(Number(a).value, power), expected) << power;
    }
}

} // namespace
