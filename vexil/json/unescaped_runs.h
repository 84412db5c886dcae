// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/byte_block.h"
#include "vexil/json/lexical_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Scanning of string content for the first byte that needs an escape or ends the string. Private to
// the JSON library.

namespace vexil {

/// Whether a byte may appear in a string without an escape: not a control byte, quotation mark or
/// backslash.
constexpr bool isUnescaped(unsigned char aByte) {
    return (characterClasses[aByte] & ClassStringStop) == 0;
}

/// The longest prefix of a text in which no byte needs an escape.
struct UnescapedRun {
    const char* end;
    bool isAscii;
};

constexpr std::uint64_t lowBits = 0x0101010101010101;
constexpr std::uint64_t highBits = lowBits * 0x80;

/// Nonzero if one of the eight bytes of @p aWord needs an escape: the lowest bit set is then the
/// high bit of the lowest such byte. A borrow may have set further bits above it.
constexpr std::uint64_t findEscapedBytes(std::uint64_t aWord) {
    const std::uint64_t quote = aWord ^ (lowBits * '"');
    const std::uint64_t backslash = aWord ^ (lowBits * '\\');
    return (((aWord - lowBits * 0x20) & ~aWord) | ((quote - lowBits) & ~quote) |
            ((backslash - lowBits) & ~backslash)) &
           highBits;
}

static_assert(
    [] {
        for (unsigned c = 0; c < 256; ++c) {
            const std::uint64_t word = (lowBits * 'a') ^ ((c ^ 'a') * std::uint64_t{0x100});
            const std::uint64_t expected = isUnescaped(static_cast<unsigned char>(c)) ? 0 : 0x8000;
            if (findEscapedBytes(word) != expected) return false;
        }
        return true;
    }(),
    "words are classified as single bytes are");

/// Marks the bytes that need an escape.
inline ByteBlock findEscapedBytes(ByteBlock aBlock) {
    const ByteBlock control = aBlock.isAtLeast<0>().without(aBlock.isAtLeast<0x20>());
    return control | aBlock.equals<'"'>() | aBlock.equals<'\\'>();
}

/// The definition of a run, one byte at a time.
[[nodiscard]] inline UnescapedRun measureRunByBytes(const char* aText, const char* aEnd) {
    unsigned seen = 0;
    for (; aText != aEnd && isUnescaped(static_cast<unsigned char>(*aText)); ++aText) {
        seen |= static_cast<unsigned char>(*aText);
    }
    return {aText, seen < 0x80};
}

/// Continues a run with the block at @p aText. Returns whether the run extends beyond it; if not,
/// sets the end of the run. Clears @p aIsAscii at a byte of the run that is not ASCII.
[[nodiscard]] inline bool continueRun(ByteBlock aBlock, const char*& aText, bool& aIsAscii) {
    const ByteBlock escaped = findEscapedBytes(aBlock);
    const std::size_t size = escaped.hasMark() ? escaped.countUnmarked() : ByteBlock::size;
    if (aBlock.hasMark() && aBlock.countUnmarked() < size) aIsAscii = false;
    aText += size;
    return size == ByteBlock::size;
}

/// Examines a block of bytes at a time.
[[nodiscard]] inline UnescapedRun measureUnescapedRun(const char* aText, const char* aEnd) {
    bool isAscii = true;
    while (static_cast<std::size_t>(aEnd - aText) >= ByteBlock::size) {
        if (!continueRun(ByteBlock::load(aText), aText, isAscii)) return {aText, isAscii};
    }
    const UnescapedRun rest = measureRunByBytes(aText, aEnd);
    return {rest.end, isAscii && rest.isAscii};
}

/// Copies the ends of a text, two words that overlap or adjoin.
template <class Word>
std::array<std::uint64_t, 2> copyEnds(char* aDest, const char* aText, std::size_t aSize) {
    VEXIL_ASSERT(aSize >= sizeof(Word) && aSize <= 2 * sizeof(Word));
    std::array<Word, 2> ends;
    std::memcpy(&ends[0], aText, sizeof(Word));
    std::memcpy(&ends[1], aText + aSize - sizeof(Word), sizeof(Word));
    std::memcpy(aDest, &ends[0], sizeof(Word));
    std::memcpy(aDest + aSize - sizeof(Word), &ends[1], sizeof(Word));
    return {ends[0], ends[1]};
}

/// Copies a text of 4 to 16 bytes. Returns whether it is ASCII without a byte that needs an escape.
[[nodiscard]] inline bool copyShortText(char* aDest, const char* aText, std::size_t aSize) {
    if (aSize < 8) {
        const auto [first, last] = copyEnds<std::uint32_t>(aDest, aText, aSize);
        const std::uint64_t word = last << 32 | first;
        return (findEscapedBytes(word) | (word & highBits)) == 0;
    }
    const auto [first, last] = copyEnds<std::uint64_t>(aDest, aText, aSize);
    return (findEscapedBytes(first) | findEscapedBytes(last) | ((first | last) & highBits)) == 0;
}

/// Measures the run as measureUnescapedRun() does and copies it to @p aDest, a buffer at least as
/// long as the whole text. The contents of the buffer after the run are unspecified.
[[nodiscard]] inline UnescapedRun copyUnescapedRun(char* aDest, const char* aText,
                                                   const char* aEnd) {
    bool isAscii = true;
    for (; aEnd - aText > 16; aDest += ByteBlock::size) {
        const ByteBlock block = ByteBlock::load(aText);
        block.store(aDest);
        if (!continueRun(block, aText, isAscii)) return {aText, isAscii};
    }
    const auto rest = static_cast<std::size_t>(aEnd - aText);
    if (rest >= 4 && copyShortText(aDest, aText, rest)) return {aEnd, isAscii};
    std::copy(aText, aEnd, aDest);
    const UnescapedRun run = measureRunByBytes(aText, aEnd);
    return {run.end, isAscii && run.isAscii};
}

/// ASCII text shorter than this need not be checked against the length limit of Unicode strings.
constexpr std::size_t shortTextSize = 0x1000000;

} // namespace vexil
