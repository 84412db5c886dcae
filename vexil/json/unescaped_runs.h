#pragma once

#include "vexil/json/lexical_tables.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Private to the JSON library.

namespace vexil {

/// Whether a byte may stand in a string as it is: no control byte, quotation mark or backslash.
constexpr bool isPlain(unsigned char aByte) {
    return aByte >= 0x20 && aByte != '"' && aByte != '\\';
}

static_assert(
    [] {
        for (std::size_t c = 0; c < 256; ++c) {
            const bool isStop = (characterClasses[c] & ClassStringStop) != 0;
            if (isPlain(static_cast<unsigned char>(c)) == isStop) return false;
        }
        return true;
    }(),
    "plain runs are what the classes say");

/// The plain bytes at the beginning of a text.
struct PlainRun {
    const char* end;
    bool isAscii;
};

constexpr std::uint64_t lowBits = 0x0101010101010101;
constexpr std::uint64_t highBits = lowBits * 0x80;

/// Not 0 if one of the eight bytes is not plain: the lowest bit that is set is the high bit of the
/// lowest such byte. Above it, a borrow may have set others.
constexpr std::uint64_t findStops(std::uint64_t aWord) {
    const std::uint64_t quote = aWord ^ (lowBits * '"');
    const std::uint64_t backslash = aWord ^ (lowBits * '\\');
    return (((aWord - lowBits * 0x20) & ~aWord) | ((quote - lowBits) & ~quote) |
            ((backslash - lowBits) & ~backslash)) &
           highBits;
}

/// Looks at eight bytes at a time; the loop over single bytes at its end is what it means.
inline PlainRun measurePlainRun(const char* aText, const char* aEnd) {
    std::uint64_t seen = 0;
    for (std::uint64_t word = 0; aEnd - aText >= 8; aText += 8, seen |= word) {
        std::memcpy(&word, aText, 8);
        const std::uint64_t stops = findStops(word);
        if (stops == 0) continue;
        if constexpr (std::endian::native == std::endian::little) {
            const int bitsBefore = std::countr_zero(stops) & ~7;
            seen |= word & ((std::uint64_t{1} << bitsBefore) - 1);
            return {aText + bitsBefore / 8, (seen & highBits) == 0};
        }
        break;
    }
    for (; aText != aEnd && isPlain(static_cast<unsigned char>(*aText)); ++aText) {
        seen |= static_cast<unsigned char>(*aText);
    }
    return {aText, (seen & highBits) == 0};
}

/// The same run, copied to @p aDest on the way. There must be room for the whole text; behind the
/// run, what is in that room afterwards is anything.
inline PlainRun copyPlainRun(char* aDest, const char* aText, const char* aEnd) {
    std::uint64_t seen = 0;
    std::uint64_t word = 0;
    for (; aEnd - aText >= 8; aText += 8, aDest += 8, seen |= word) {
        std::memcpy(&word, aText, 8);
        std::memcpy(aDest, &word, 8);
        if (findStops(word) != 0) break;
    }
    // The end of a text, of four to seven bytes, as two halves that overlap.
    const std::ptrdiff_t rest = aEnd - aText;
    if (rest >= 4 && rest < 8) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, aText, 4);
        std::memcpy(&last, aEnd - 4, 4);
        std::memcpy(aDest, &first, 4);
        std::memcpy(aDest + rest - 4, &last, 4);
        word = std::uint64_t{last} << 32 | first;
        if (findStops(word) == 0) return {aEnd, ((seen | word) & highBits) == 0};
    }
    for (; aText != aEnd && isPlain(static_cast<unsigned char>(*aText)); ++aText) {
        seen |= static_cast<unsigned char>(*aText);
        *aDest++ = *aText;
    }
    return {aText, (seen & highBits) == 0};
}

/// ASCII text up to this size needs no look at the limit of Unicode strings.
constexpr std::size_t shortTextSize = 0x1000000;

} // namespace vexil
