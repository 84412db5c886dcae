// SPDX-License-Identifier: MIT
#include "vexil/utf8_encoding.h"

#include "vexil/exceptions.h"

namespace vexil {

namespace {

/// Writes a form of @p length bytes with the marker bits @p aMark in its lead byte, and returns the
/// position after it.
template <int length>
char* putForm(char* aDest, std::uint32_t aMark, std::uint32_t aCode) {
    *aDest++ = static_cast<char>(aMark | aCode >> (6 * (length - 1)));
    for (int shift = 6 * (length - 2); shift >= 0; shift -= 6) {
        *aDest++ = static_cast<char>(0x80 | ((aCode >> shift) & 0x3F));
    }
    return aDest;
}

/// Writes the ASCII codes at @p aCodes, eight at a time, up to the first other code or the end, and
/// moves @p aCodes there.
char* putAscii(char* aDest, const std::uint32_t*& aCodes, const std::uint32_t* aEnd) {
    constexpr int count = 8;
    const auto areAscii = [](const std::uint32_t* aEight) {
        std::uint32_t bits = 0;
        for (int i = 0; i < count; ++i) bits |= aEight[i];
        return bits < 0x80;
    };
    for (; aEnd - aCodes >= count && areAscii(aCodes); aCodes += count, aDest += count) {
        for (int i = 0; i < count; ++i) aDest[i] = static_cast<char>(aCodes[i]);
    }
    while (aCodes != aEnd && *aCodes < 0x80) *aDest++ = static_cast<char>(*aCodes++);
    return aDest;
}

[[noreturn]] void throwUnencodable(std::uint32_t aCode) {
    throw EncodingError(isSurrogate(aCode) ? "UnicodeString32::asUtf8(): reserved code"
                                           : "UnicodeString32::asUtf8(): code out of range");
}

/// Writes the form of a code point from U+0080 on, and returns the position after it.
char* putMultiByte(char* aDest, std::uint32_t aCode) {
    if (aCode < 0x800) return putForm<2>(aDest, 0xC0, aCode);
    if (isSurrogate(aCode) || aCode > lastCode) throwUnencodable(aCode);
    if (aCode < 0x10000) return putForm<3>(aDest, 0xE0, aCode);
    return putForm<4>(aDest, 0xF0, aCode);
}

} // namespace

std::size_t countUtf8Bytes(const std::uint32_t* aCodes, std::uint32_t aCount) {
    std::uint32_t extra = 0; // at most three for each of less than 2^26 code points
    for (std::uint32_t i = 0; i < aCount; ++i) {
        const auto code = static_cast<std::int32_t>(aCodes[i]); // SSE2 compares signed numbers only
        extra += static_cast<std::uint32_t>((code > 0x7F) + (code > 0x7FF) + (code > 0xFFFF));
    }
    return std::size_t{aCount} + extra;
}

char* encodeUtf8(char* aDest, std::uint32_t aCode) {
    return aCode < 0x80 ? putForm<1>(aDest, 0, aCode) : putMultiByte(aDest, aCode);
}

char* encodeUtf8(char* aDest, const std::uint32_t* aCodes, std::uint32_t aCount) {
    const std::uint32_t* const end = aCodes + aCount;
    while (aCodes != end) {
        aDest = putAscii(aDest, aCodes, end);
        while (aCodes != end && *aCodes >= 0x80) aDest = putMultiByte(aDest, *aCodes++);
    }
    return aDest;
}

} // namespace vexil
