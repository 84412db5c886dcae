// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/json/lexical_tables.h"

#include <bit>
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

/// Examines eight bytes at a time; the final loop over single bytes is its definition.
[[nodiscard]] inline UnescapedRun measureUnescapedRun(const char* aText, const char* aEnd) {
    std::uint64_t seen = 0;
    for (std::uint64_t word = 0; aEnd - aText >= 8; aText += 8, seen |= word) {
        std::memcpy(&word, aText, 8);
        const std::uint64_t escaped = findEscapedBytes(word);
        if (escaped == 0) continue;
        if constexpr (std::endian::native == std::endian::little) {
            const int bitsBefore = std::countr_zero(escaped) & ~7;
            seen |= word & ((std::uint64_t{1} << bitsBefore) - 1);
            return {aText + bitsBefore / 8, (seen & highBits) == 0};
        }
        break;
    }
    for (; aText != aEnd && isUnescaped(static_cast<unsigned char>(*aText)); ++aText) {
        seen |= static_cast<unsigned char>(*aText);
    }
    return {aText, (seen & highBits) == 0};
}

/// Measures the run as measureUnescapedRun() does and copies it to @p aDest, a buffer at least as
/// long as the whole text. The contents of the buffer after the run are unspecified.
[[nodiscard]] inline UnescapedRun copyUnescapedRun(char* aDest, const char* aText,
                                                   const char* aEnd) {
    std::uint64_t seen = 0;
    std::uint64_t word = 0;
    for (; aEnd - aText >= 8; aText += 8, aDest += 8, seen |= word) {
        std::memcpy(&word, aText, 8);
        std::memcpy(aDest, &word, 8);
        if (findEscapedBytes(word) != 0) break;
    }
    // The last four to seven bytes of a text, as two overlapping halves.
    const auto rest = static_cast<std::size_t>(aEnd - aText);
    if (rest >= 4 && rest < 8) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, aText, 4);
        std::memcpy(&last, aEnd - 4, 4);
        std::memcpy(aDest, &first, 4);
        std::memcpy(aDest + rest - 4, &last, 4);
        word = std::uint64_t{last} << 32 | first;
        if (findEscapedBytes(word) == 0) return {aEnd, ((seen | word) & highBits) == 0};
    }
    for (; aText != aEnd && isUnescaped(static_cast<unsigned char>(*aText)); ++aText) {
        seen |= static_cast<unsigned char>(*aText);
        *aDest++ = *aText;
    }
    return {aText, (seen & highBits) == 0};
}

/// ASCII text shorter than this need not be checked against the length limit of Unicode strings.
constexpr std::size_t shortTextSize = 0x1000000;

} // namespace vexil
