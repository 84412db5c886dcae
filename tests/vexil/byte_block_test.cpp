// SPDX-License-Identifier: MIT
#include "vexil/byte_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

using vexil::ByteBlock;

namespace {

using Bytes = std::array<unsigned char, ByteBlock::size>;

/// Every byte value at every position, between bytes that differ from it in one bit or in all.
template <class Check>
void forEachBlock(const Check& aCheck) {
    for (std::size_t position = 0; position < ByteBlock::size; ++position) {
        for (unsigned value = 0; value < 256; ++value) {
            for (const unsigned difference : {0x01U, 0x80U, 0xFFU}) {
                Bytes bytes;
                bytes.fill(static_cast<unsigned char>(value ^ difference));
                bytes[position] = static_cast<unsigned char>(value);
                ASSERT_NO_FATAL_FAILURE(aCheck(bytes));
            }
        }
    }
}

template <class IsMarked>
void expectMarks(ByteBlock aMarks, const Bytes& aBytes, const IsMarked& aIsMarked) {
    Bytes marks;
    aMarks.store(marks.data());
    for (std::size_t i = 0; i < marks.size(); ++i) {
        ASSERT_EQ(marks[i] >= 0x80, aIsMarked(aBytes[i])) << int{aBytes[i]} << " at " << i;
    }
    const auto first = std::ranges::find_if(aBytes, aIsMarked);
    ASSERT_EQ(aMarks.hasMark(), first != aBytes.end());
    if (!aMarks.hasMark()) return;
    ASSERT_EQ(aMarks.countUnmarked(), static_cast<std::size_t>(first - aBytes.begin()));
}

template <unsigned char limit>
void expectComparisons() {
    forEachBlock([](const Bytes& aBytes) {
        const ByteBlock block = ByteBlock::load(aBytes.data());
        const auto isEqual = [](unsigned char aByte) { return aByte == limit; };
        const auto isAtLeast = [](unsigned char aByte) { return aByte >= limit; };
        const auto isAsciiFromLimit = [](unsigned char aByte) {
            return aByte >= limit && aByte < 0x80;
        };
        expectMarks(block.equals<limit>(), aBytes, isEqual);
        expectMarks(block.isAtLeast<limit>(), aBytes, isAtLeast);
        expectMarks(block.isAtLeast<limit>().without(block), aBytes, isAsciiFromLimit);
    });
}

TEST(ByteBlock, MarksTheBytesThatCompareSo) {
    expectComparisons<0x01>();
    expectComparisons<0x20>();
    expectComparisons<'"'>();
    expectComparisons<0x7F>();
    expectComparisons<0x80>();
    expectComparisons<0x90>();
    expectComparisons<0xF5>();
    expectComparisons<0xFF>();
}

TEST(ByteBlock, CombinesMarks) {
    forEachBlock([](const Bytes& aBytes) {
        const ByteBlock block = ByteBlock::load(aBytes.data());
        const ByteBlock low = block.isAtLeast<0x40>();
        const ByteBlock high = block.isAtLeast<0xC0>();
        const ByteBlock a = block.equals<'a'>();
        expectMarks(low ^ high, aBytes, [](auto aByte) { return aByte >= 0x40 && aByte < 0xC0; });
        expectMarks(high | a, aBytes, [](auto aByte) { return aByte >= 0xC0 || aByte == 'a'; });
        expectMarks(high & low, aBytes, [](auto aByte) { return aByte >= 0xC0; });
    });
}

} // namespace
