// SPDX-License-Identifier: MIT
#include "vexil/unicode_strings.h"

#include "vexil/assert.h"
#include "vexil/exceptions.h"
#include "vexil/platform/platform.h"
#include "vexil/utf8_decoding.h"
#include "vexil/utf8_encoding.h"
#include "vexil/utf8_validation.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace vexil {
namespace {

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
    const std::uint32_t* const end = decodeUtf8(result.mBuffer, bytes, bytes + aLen);
    result.setLength(static_cast<std::uint32_t>(end - result.mBuffer));
    swap(result);
}

void UnicodeString32::checkUtf8(const void* aBytes, std::size_t aLen) {
    checkCount(aLen);
    const auto* bytes = static_cast<const std::uint8_t*>(aBytes);
    if (!isValidUtf8(bytes, bytes + aLen)) throwUtf8Fault(bytes, bytes + aLen);
}

void UnicodeString32::assignUtf16(const std::uint16_t* aUnits, std::uint32_t aCount) {
    UnicodeString32 result(aUnits, aCount);
    swap(result);
}

std::string UnicodeString32::asUtf8() const {
    std::string result(countUtf8Bytes(getData(), mLength), '\0');
    const char* const end = vexil::encodeUtf8(result.data(), getData(), mLength);
    VEXIL_ASSERT(end == result.data() + result.size());
    return result;
}

char* UnicodeString32::encodeUtf8(char* aDest, std::uint32_t aCode) {
    return vexil::encodeUtf8(aDest, aCode);
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
