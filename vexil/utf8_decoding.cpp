// SPDX-License-Identifier: MIT
#include "vexil/utf8_decoding.h"

#include "vexil/assert.h"
#include "vexil/byte_block.h"
#include "vexil/exceptions.h"
#include "vexil/utf8_encoding.h"
#include "vexil/utf8_validation.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vexil {

namespace {

// The decoder throws through separate functions, which keeps its loops small.

[[noreturn]] void throwInvalidCode() {
    throw EncodingError("UnicodeString32::assignUtf8(): invalid code");
}

/// Throws the failure of a multi-byte form that the text cuts short, given the bytes after its lead
/// byte: one that cannot continue the form takes precedence over the missing ones.
[[noreturn]] void throwIncomplete(const std::uint8_t* aPos, const std::uint8_t* aEnd) {
    if (std::any_of(aPos, aEnd, [](std::uint8_t aByte) { return (aByte & 0xC0) != 0x80; })) {
        throwInvalidCode();
    }
    throw EncodingError("UnicodeString32::assignUtf8(): truncated");
}

/// Writes the code points to a block that has a unit for each byte of the text.
struct CodeWriter {
    std::uint32_t* next;

    void put(std::uint32_t aCode) { *next++ = aCode; }

    /// Adds the first @p aCount bytes of a block, but writes the whole block: there is space for
    /// it.
    void putBlock(const std::uint8_t* aBytes, std::size_t aCount) {
        std::uint8_t bytes[ByteBlock::size];
        std::memcpy(bytes, aBytes, sizeof bytes);
        for (std::size_t i = 0; i < sizeof bytes; ++i) next[i] = bytes[i];
        next += aCount;
    }
};

/// Discards the code points.
struct NullWriter {
    void put(std::uint32_t) {}
    void putBlock(const std::uint8_t*, std::size_t) {}
};

/// Takes the ASCII bytes at @p aPos and returns the position of the first other byte, or the end.
template <class Sink>
const std::uint8_t* takeAscii(const std::uint8_t* aPos, const std::uint8_t* aEnd, Sink& aSink) {
    while (aEnd - aPos >= static_cast<std::ptrdiff_t>(ByteBlock::size)) {
        const ByteBlock block = ByteBlock::load(aPos);
        const std::size_t count = block.hasMark() ? block.countUnmarked() : ByteBlock::size;
        aSink.putBlock(aPos, count);
        aPos += count;
        if (count < ByteBlock::size) return aPos;
    }
    while (aPos != aEnd && *aPos < 0x80) aSink.put(*aPos++);
    return aPos;
}

/// The code point of the form at @p aPos, whose lead byte announces @p length bytes.
template <std::ptrdiff_t length>
std::uint32_t decodeForm(const std::uint8_t* aPos, const std::uint8_t* aEnd) {
    constexpr std::uint32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (aEnd - aPos < length) throwIncomplete(aPos + 1, aEnd);
    std::uint32_t code = *aPos & (0x7FU >> length);
    std::uint32_t seen = 0;
    for (std::ptrdiff_t i = 1; i < length; ++i) {
        const std::uint32_t bits = aPos[i] ^ 0x80U; // below 0x40 for 0x80 to 0xBF alone
        seen |= bits;
        code = code << 6 | (bits & 0x3F);
    }
    if (seen >= 0x40 || code < smallest || code > lastCode || isSurrogate(code)) throwInvalidCode();
    return code;
}

/// Takes one code point of two to four bytes and returns the position after it.
template <class Sink>
const std::uint8_t* takeMultiByte(const std::uint8_t* aPos, const std::uint8_t* aEnd, Sink& aSink) {
    const std::uint8_t lead = *aPos;
    if (lead < 0xC0 || lead > 0xF7) throwInvalidCode();
    if (lead < 0xE0) {
        aSink.put(decodeForm<2>(aPos, aEnd));
        return aPos + 2;
    }
    if (lead < 0xF0) {
        aSink.put(decodeForm<3>(aPos, aEnd));
        return aPos + 3;
    }
    aSink.put(decodeForm<4>(aPos, aEnd));
    return aPos + 4;
}

template <class Sink>
void decode(const std::uint8_t* aPos, const std::uint8_t* aEnd, Sink& aSink) {
    while (aPos != aEnd) {
        aPos = takeAscii(aPos, aEnd, aSink);
        while (aPos != aEnd && *aPos >= 0x80) aPos = takeMultiByte(aPos, aEnd, aSink);
    }
}

} // namespace

std::uint32_t* decodeUtf8(std::uint32_t* aDest, const std::uint8_t* aText,
                          const std::uint8_t* aEnd) {
    CodeWriter writer{aDest};
    decode(aText, aEnd, writer);
    return writer.next;
}

void throwUtf8Fault(const std::uint8_t* aText, const std::uint8_t* aEnd) {
    VEXIL_ASSERT(!isValidUtf8(aText, aEnd));
    NullWriter writer;
    decode(aText, aEnd, writer);
    throwInvalidCode(); // not reached
}

} // namespace vexil
