#include "vexil/unicode_strings.h"

#include "vexil/assert.h"
#include "vexil/exceptions.h"
#include "vexil/platform/platform.h"
#include "vexil/utf8_validation.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace vexil {
namespace {

constexpr std::uint32_t lastCode = 0x10FFFF;

template <class Unit>
constexpr const char* tooLong = nullptr;
template <>
constexpr const char* tooLong<std::uint32_t> = "UnicodeString32::alloc(): string too long";
template <>
constexpr const char* tooLong<std::uint16_t> = "UnicodeString16::alloc(): string too long";

constexpr bool isLeadSurrogate(std::uint32_t aCode) {
    return (aCode & ~0x3FFU) == 0xD800;
}

constexpr bool isTrailSurrogate(std::uint32_t aCode) {
    return (aCode & ~0x3FFU) == 0xDC00;
}

constexpr bool isSurrogate(std::uint32_t aCode) {
    return (aCode & ~0x7FFU) == 0xD800;
}

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

/// The high bits of eight bytes.
std::uint64_t nonAsciiBits(const std::uint8_t* aPos) {
    std::uint64_t word = 0;
    std::memcpy(&word, aPos, sizeof word);
    return word & 0x8080808080808080;
}

/// The number of bytes in memory before the first one whose bit is set.
std::size_t countBefore(std::uint64_t aNonAsciiBits) {
    const int bits = std::endian::native == std::endian::little ? std::countr_zero(aNonAsciiBits)
                                                                : std::countl_zero(aNonAsciiBits);
    return static_cast<std::size_t>(bits) / 8;
}

/// Writes the code points to a block that has a unit for each byte of the text.
struct CodeWriter {
    std::uint32_t* next;

    void put(std::uint32_t aCode) { *next++ = aCode; }

    /// Adds the first @p aCount of eight bytes, but writes all eight: the block has the space.
    void putAscii(const std::uint8_t* aBytes, std::size_t aCount) {
        std::uint8_t bytes[8];
        std::memcpy(bytes, aBytes, sizeof bytes);
        for (std::size_t i = 0; i < sizeof bytes; ++i) next[i] = bytes[i];
        next += aCount;
    }
};

/// Takes the ASCII bytes at @p aPos and returns the position of the first other byte, or the end.
template <class Sink>
const std::uint8_t* takeAscii(const std::uint8_t* aPos, const std::uint8_t* aEnd, Sink& aSink) {
    while (aEnd - aPos >= 8) {
        const auto bits = nonAsciiBits(aPos);
        const std::size_t count = bits == 0 ? 8 : countBefore(bits);
        aSink.putAscii(aPos, count);
        aPos += count;
        if (bits != 0) return aPos;
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
void decodeUtf8(const std::uint8_t* aPos, const std::uint8_t* aEnd, Sink& aSink) {
    while (aPos != aEnd) {
        aPos = takeAscii(aPos, aEnd, aSink);
        while (aPos != aEnd && *aPos >= 0x80) aPos = takeMultiByte(aPos, aEnd, aSink);
    }
}

/// Throws the decoder's failure for a text that is not valid.
[[noreturn]] void throwFault(const std::uint8_t* aPos, const std::uint8_t* aEnd) {
    struct {
        void put(std::uint32_t) {}
        void putAscii(const std::uint8_t*, std::size_t) {}
    } nowhere;
    decodeUtf8(aPos, aEnd, nowhere);
    throwInvalidCode();
}

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

/// The number of bytes of the code points in UTF-8.
std::size_t countUtf8Bytes(const std::uint32_t* aCodes, std::uint32_t aCount) {
    std::uint32_t extra = 0; // at most three for each of less than 2^26 code points
    for (std::uint32_t i = 0; i < aCount; ++i) {
        const auto code = static_cast<std::int32_t>(aCodes[i]); // SSE2 compares signed numbers only
        extra += static_cast<std::uint32_t>((code > 0x7F) + (code > 0x7FF) + (code > 0xFFFF));
    }
    return std::size_t{aCount} + extra;
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

/// Writes the form of a code point from U+0080 on, and returns the position after it. Throws what
/// asUtf8() throws.
inline char* putMultiByte(char* aDest, std::uint32_t aCode) {
    if (aCode < 0x800) return putForm<2>(aDest, 0xC0, aCode);
    if (isSurrogate(aCode) || aCode > lastCode) throwUnencodable(aCode);
    if (aCode < 0x10000) return putForm<3>(aDest, 0xE0, aCode);
    return putForm<4>(aDest, 0xF0, aCode);
}

} // namespace

void UnicodeStringBase::checkUTF32(const std::uint32_t* aCodes, std::uint32_t aCount) {
    if (std::any_of(aCodes, aCodes + aCount,
                    [](std::uint32_t aCode) { return aCode > lastCode; })) {
        throw EncodingError("UnicodeStringBase::checkUTF32(): code out of range");
    }
}

std::uint32_t UnicodeStringBase::lengthForUTF32(const std::uint16_t* aUnits, std::uint32_t aCount) {
    std::uint32_t length = 0;
    for (std::uint32_t i = 0; i < aCount; ++i, ++length) {
        if (isLeadSurrogate(aUnits[i])) {
            if (++i == aCount || !isTrailSurrogate(aUnits[i])) {
                throw EncodingError("UnicodeStringBase::lengthForUTF32(): missing trail surrogate");
            }
        } else if (isTrailSurrogate(aUnits[i])) {
            throw EncodingError("UnicodeStringBase::lengthForUTF32(): missing lead surrogate");
        }
    }
    return length;
}

template <class Unit>
UnicodeStringOf<Unit>::~UnicodeStringOf() {
    std::free(mBuffer);
}

template <class Unit>
void UnicodeStringOf<Unit>::swap(UnicodeStringOf& aOther) noexcept {
    std::swap(mBuffer, aOther.mBuffer);
    std::swap(mLength, aOther.mLength);
    std::swap(mCapacity, aOther.mCapacity);
}

template <class Unit>
void UnicodeStringOf<Unit>::alloc(std::size_t aCount) {
    if (aCount < mCapacity) return;
    checkCount(aCount);
    const auto need = static_cast<std::uint32_t>(aCount) + 1;
    const std::uint32_t capacity =
        need < 4 ? 4 : std::min(std::max(need, mCapacity + mCapacity / 2), maxCapacity);
    void* const block = std::realloc(mBuffer, std::size_t{capacity} * sizeof(Unit));
    if (block == nullptr) throw std::bad_alloc();
    mBuffer = static_cast<Unit*>(block);
    mCapacity = capacity;
}

template <class Unit>
void UnicodeStringOf<Unit>::setLength(std::uint32_t aLength) {
    VEXIL_ASSERT(aLength < mCapacity);
    mLength = aLength;
    mBuffer[aLength] = 0;
}

template <class Unit>
void UnicodeStringOf<Unit>::clear() {
    if (mBuffer != nullptr) setLength(0);
}

template <class Unit>
void UnicodeStringOf<Unit>::throwTooLong() {
    throw Overflow(tooLong<Unit>);
}

template class UnicodeStringOf<std::uint32_t>;
template class UnicodeStringOf<std::uint16_t>;

UnicodeString32::UnicodeString32(std::int32_t aEncoding, const std::string& aBytes) {
    assignOctets(aEncoding, aBytes.data(), aBytes.size());
}

UnicodeString32::UnicodeString32(const std::uint16_t* aUnits, std::uint32_t aCount) {
    const std::uint32_t length = lengthForUTF32(aUnits, aCount);
    if (length == 0) return;
    alloc(length);
    for (std::uint32_t i = 0; i < length; ++i) {
        std::uint32_t code = *aUnits++;
        if (isLeadSurrogate(code)) code = ((code & 0x3FF) << 10) + (*aUnits++ & 0x3FFU) + 0x10000;
        mBuffer[i] = code;
    }
    setLength(length);
}

void UnicodeString32::reserve(std::size_t aCount) {
    alloc(aCount);
    if (mLength == 0) setLength(0);
}

void UnicodeString32::append(std::uint32_t aCode) {
    checkUTF32(&aCode, 1);
    alloc(std::size_t{mLength} + 1);
    mBuffer[mLength] = aCode;
    setLength(mLength + 1);
}

void UnicodeString32::assignUtf8(const void* aBytes, std::size_t aLen) {
    UnicodeString32 result;
    result.alloc(aLen); // no text has more code points than bytes
    const auto* bytes = static_cast<const std::uint8_t*>(aBytes);
    CodeWriter writer{result.mBuffer};
    decodeUtf8(bytes, bytes + aLen, writer);
    result.setLength(static_cast<std::uint32_t>(writer.next - result.mBuffer));
    swap(result);
}

void UnicodeString32::checkUtf8(const void* aBytes, std::size_t aLen) {
    checkCount(aLen);
    const auto* bytes = static_cast<const std::uint8_t*>(aBytes);
    if (!isValidUtf8(bytes, bytes + aLen)) throwFault(bytes, bytes + aLen);
}

void UnicodeString32::assignUtf16(const std::uint16_t* aUnits, std::uint32_t aCount) {
    UnicodeString32 result(aUnits, aCount);
    swap(result);
}

std::string UnicodeString32::asUtf8() const {
    const std::uint32_t* code = getData();
    const std::uint32_t* const end = code + mLength;
    std::string result(countUtf8Bytes(code, mLength), '\0');
    char* next = result.data();
    while (code != end) {
        next = putAscii(next, code, end);
        while (code != end && *code >= 0x80) next = putMultiByte(next, *code++);
    }
    VEXIL_ASSERT(next == result.data() + result.size());
    return result;
}

char* UnicodeString32::encodeUtf8(char* aDest, std::uint32_t aCode) {
    return aCode < 0x80 ? putForm<1>(aDest, 0, aCode) : putMultiByte(aDest, aCode);
}

UnicodeString16::UnicodeString16(const std::uint16_t* aUnits) {
    std::size_t length = 0;
    while (aUnits[length] != 0) ++length;
    alloc(length);
    std::copy_n(aUnits, length, mBuffer);
    setLength(static_cast<std::uint32_t>(length));
}

void UnicodeString16::assign(const std::uint16_t* aUnits) {
    UnicodeString16 result(aUnits);
    swap(result);
}

void UnicodeString16::assignWindowsANSI(const void* aBytes, std::size_t aLen) {
    if (aLen == 0) {
        clear();
        return;
    }
    if (aLen > 0x7FFFFFFF) {
        throw Overflow("UnicodeString16::assignWindowsANSI(): string too long");
    }
    const auto convert = [aBytes, aLen](std::uint16_t* aDest, std::uint32_t aUnits) {
        const std::int32_t count = platform::activeCodePageToUtf16(
            static_cast<const char*>(aBytes), static_cast<std::int32_t>(aLen), aDest,
            static_cast<std::int32_t>(aUnits));
        if (count == 0) {
            throw EncodingError(
                "UnicodeString16::assignWindowsANSI(): MultiByteToWideChar() failed");
        }
        return static_cast<std::uint32_t>(count);
    };
    const std::uint32_t count = convert(nullptr, 0);
    UnicodeString16 result;
    result.alloc(count);
    result.setLength(convert(result.mBuffer, count + 1));
    swap(result);
}

} // namespace vexil
