// SPDX-License-Identifier: MIT
#include "vexil/streams.h"

#include "vexil/exceptions.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace vexil {
namespace {

constexpr std::uint32_t largestInt32 = std::numeric_limits<std::int32_t>::max();

// A separate function, so that read() and write() stay small: some callers pass single characters.
[[noreturn]] void refuseArgument(const char* aMessage) {
    throw InvalidArgument(aMessage);
}

std::uint32_t checkedSize(std::size_t aSize) {
    const auto size = static_cast<std::uint32_t>(aSize);
    if (size != aSize) throw Overflow("ByteRange: string too long");
    return size;
}

} // namespace

void InputStream::seek64(std::int64_t) {
    throw NotImplemented("InputStream::seek64(): not implemented");
}

std::int64_t InputStream::tell64() {
    throw NotImplemented("InputStream::tell64(): not implemented");
}

void OutputStream::seek64(std::int64_t) {
    throw NotImplemented("OutputStream::seek64(): not implemented");
}

std::int64_t OutputStream::tell64() {
    throw NotImplemented("OutputStream::tell64(): not implemented");
}

ByteRange::ByteRange(const std::string& aText) : ByteRange(aText.data(), aText.size()) {
}

ByteRange::ByteRange(const void* aData, std::size_t aSize)
    : mData(static_cast<const char*>(aData)), mSize(checkedSize(aSize)) {
}

MemoryInputStream::MemoryInputStream(const void* aData, std::uint32_t aSize)
    : mData(static_cast<const char*>(aData)), mSize(aSize) {
}

MemoryInputStream::MemoryInputStream(const ByteRange& aRange)
    : MemoryInputStream(aRange.getData(), aRange.getSize()) {
}

std::int32_t MemoryInputStream::read(void* aDest, std::int32_t aLen) {
    if (aLen < 0) refuseArgument("MemoryInputStream::read(): invalid argument aLen");
    const auto count = std::min(static_cast<std::uint32_t>(aLen), getRemainingSize());
    if (count == 1) {
        *static_cast<char*>(aDest) = *getRemainingData(); // the usual case, without a call
    } else if (count > 1) {
        std::memcpy(aDest, getRemainingData(), count);
    }
    skip(count);
    return static_cast<std::int32_t>(count);
}

void MemoryInputStream::close() {
    mPosition = 0;
    mSize = 0;
}

void MemoryInputStream::seek(std::int32_t aPos) {
    if (aPos < 0 || static_cast<std::uint32_t>(aPos) > mSize) {
        refuseArgument("MemoryInputStream::seek(): invalid argument aPos");
    }
    mPosition = static_cast<std::uint32_t>(aPos);
}

std::int32_t MemoryInputStream::tell() {
    if (mPosition > largestInt32) {
        throw Overflow("MemoryInputStream::tell(): position out of range");
    }
    return static_cast<std::int32_t>(mPosition);
}

std::int32_t MemoryInputStream::available() {
    return static_cast<std::int32_t>(std::min(getRemainingSize(), largestInt32));
}

void MemoryInputStream::seek64(std::int64_t aPos) {
    if (aPos < 0 || aPos > std::int64_t{mSize}) {
        refuseArgument("MemoryInputStream::seek64(): invalid argument aPos");
    }
    mPosition = static_cast<std::uint32_t>(aPos);
}

std::int64_t MemoryInputStream::tell64() {
    return mPosition;
}

StringOutputStream::StringOutputStream(std::string* aTarget) : mTarget(aTarget) {
    VEXIL_ASSERT(aTarget != nullptr);
}

void StringOutputStream::seek(std::int32_t) {
    throw NotImplemented("StringOutputStream::seek(): not implemented");
}

std::int32_t StringOutputStream::tell() {
    throw NotImplemented("StringOutputStream::tell(): not implemented");
}

void StringOutputStream::write(const void* aSource, std::int32_t aLen) {
    if (aLen < 0) refuseArgument("StringOutputStream::write(): invalid argument aLen");
    mTarget->append(static_cast<const char*>(aSource), static_cast<std::size_t>(aLen));
}

} // namespace vexil
