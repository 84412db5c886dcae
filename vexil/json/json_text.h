#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// What JSON text looks like, byte by byte. Private to the JSON library.

namespace vexil {

/// Whether a byte may stand in a string as it is: no control byte, quotation mark or backslash.
constexpr bool isPlain(unsigned char aByte) {
    return aByte >= 0x20 && aByte != '"' && aByte != '\\';
}

/// The plain bytes at the beginning of a text.
struct PlainRun {
    const char* end;
    bool isAscii;
};

/// Looks at eight bytes at a time; the loop over single bytes at its end is what it means.
inline PlainRun measurePlainRun(const char* aText, const char* aEnd) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highBits = ones * 0x80;
    std::uint64_t seen = 0;
    for (std::uint64_t word = 0; aEnd - aText >= 8; aText += 8, seen |= word) {
        std::memcpy(&word, aText, 8);
        // Each term has the high bit set of a byte that is below 0x20, a quotation mark or a
        // backslash. Above the first such byte in the word, a borrow may set others.
        const std::uint64_t quote = word ^ (ones * '"');
        const std::uint64_t backslash = word ^ (ones * '\\');
        const std::uint64_t stops = (((word - ones * 0x20) & ~word) | ((quote - ones) & ~quote) |
                                     ((backslash - ones) & ~backslash)) &
                                    highBits;
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

/// ASCII text up to this size needs no look at the limit of Unicode strings.
constexpr std::size_t shortTextSize = 0x1000000;

} // namespace vexil
