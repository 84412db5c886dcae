// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/export.h"
#include "vexil/non_copyable.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vexil {

/// A source of bytes. Lengths and positions are in bytes. A stream is used by one thread at a time.
class VEXIL_API InputStream {
public:
    virtual ~InputStream() = default;

    /// Copies up to @p aLen bytes to @p aDest and advances past them. Returns the number of bytes
    /// copied; 0 at the end.
    virtual std::int32_t read(void* aDest, std::int32_t aLen) = 0;
    /// Closes the source; nothing is read from it afterwards.
    virtual void close() = 0;
    /// Moves to the position @p aPos, counted from the start.
    virtual void seek(std::int32_t aPos) = 0;
    /// Returns the position, counted from the start.
    virtual std::int32_t tell() = 0;
    /// Returns the number of bytes that can still be read.
    virtual std::int32_t available() = 0;
    /// The base throws NotImplemented "InputStream::seek64(): not implemented".
    virtual void seek64(std::int64_t aPos);
    /// The base throws NotImplemented "InputStream::tell64(): not implemented".
    virtual std::int64_t tell64();
};

/// A sink of bytes. Lengths and positions are in bytes. A stream is used by one thread at a time.
class VEXIL_API OutputStream {
public:
    virtual ~OutputStream() = default;

    /// Passes on the bytes that the stream has buffered.
    virtual void flush() = 0;
    /// Closes the sink.
    virtual void close() = 0;
    /// Moves to the position @p aPos, counted from the start.
    virtual void seek(std::int32_t aPos) = 0;
    /// Returns the position, counted from the start.
    virtual std::int32_t tell() = 0;
    /// Writes all @p aLen bytes at @p aSource, or throws.
    virtual void write(const void* aSource, std::int32_t aLen) = 0;
    /// The base throws NotImplemented "OutputStream::seek64(): not implemented".
    virtual void seek64(std::int64_t aPos);
    /// The base throws NotImplemented "OutputStream::tell64(): not implemented".
    virtual std::int64_t tell64();
};

/// A caller-owned, read-only block of bytes, the argument of MemoryInputStream. Both constructors
/// throw Overflow "ByteRange: string too long" for 4 GiB or more.
class VEXIL_API ByteRange {
public:
    /// The bytes of @p aText, which must not change while the range is in use.
    explicit ByteRange(const std::string& aText);
    /// The @p aSize bytes at @p aData, which must not change while the range is in use.
    ByteRange(const void* aData, std::size_t aSize);

    /// The first byte, borrowed.
    const char* getData() const { return mData; }
    /// The number of bytes.
    std::uint32_t getSize() const { return mSize; }

private:
    const char* mData;
    std::uint32_t mSize;
};

/// Reads from a caller-owned block of memory. The block must outlive the stream, and must not
/// change while the stream or a token read from it is in use; the stream never copies, changes or
/// frees it. A refused call leaves the position unchanged.
class VEXIL_API MemoryInputStream final : public InputStream, private NonCopyable {
public:
    /// Reads the @p aSize bytes at @p aData from the first one on.
    MemoryInputStream(const void* aData, std::uint32_t aSize);
    /// Reads the bytes of @p aRange; the range itself need not outlive the constructor.
    explicit MemoryInputStream(const ByteRange& aRange);

    /// Throws InvalidArgument "MemoryInputStream::read(): invalid argument aLen" if @p aLen is
    /// negative.
    std::int32_t read(void* aDest, std::int32_t aLen) override;
    /// Makes the stream empty: every later read() returns 0.
    void close() override;
    /// Throws InvalidArgument "MemoryInputStream::seek(): invalid argument aPos" unless @p aPos is
    /// between 0 and the size, inclusive.
    void seek(std::int32_t aPos) override;
    /// Throws Overflow "MemoryInputStream::tell(): position out of range" above 2147483647.
    std::int32_t tell() override;
    /// Returns 2147483647 if more bytes remain.
    std::int32_t available() override;
    /// As seek(), with the message "MemoryInputStream::seek64(): invalid argument aPos".
    void seek64(std::int64_t aPos) override;
    std::int64_t tell64() override;

    /// Whether the position is 0.
    bool isAtBegin() const { return mPosition == 0; }
    /// The bytes not yet read, borrowed from the block. A reader that examines many bytes at once
    /// advances past those it has taken with skip().
    const char* getRemainingData() const { return mData + mPosition; }
    /// The number of bytes not yet read.
    std::uint32_t getRemainingSize() const { return mSize - mPosition; }
    /// Advances past @p aCount bytes, at most getRemainingSize().
    void skip(std::uint32_t aCount) {
        VEXIL_ASSERT(aCount <= getRemainingSize());
        mPosition += aCount;
    }

private:
    const char* mData;
    std::uint32_t mSize;
    std::uint32_t mPosition = 0; ///< never beyond mSize
};

/// Appends to a caller-owned standard string, which must outlive the stream. Never clears or
/// shortens the string. A write that fails appends nothing.
class VEXIL_API StringOutputStream final : public OutputStream, private NonCopyable {
public:
    /// @p aTarget is borrowed and not null.
    explicit StringOutputStream(std::string* aTarget);

    /// Does nothing: the stream does not buffer.
    void flush() override {}
    /// Does nothing: the stream remains usable.
    void close() override {}
    /// Throws NotImplemented "StringOutputStream::seek(): not implemented".
    void seek(std::int32_t aPos) override;
    /// Throws NotImplemented "StringOutputStream::tell(): not implemented".
    std::int32_t tell() override;
    /// Throws InvalidArgument "StringOutputStream::write(): invalid argument aLen" if @p aLen is
    /// negative, and the string's own std::length_error or std::bad_alloc.
    void write(const void* aSource, std::int32_t aLen) override;

    /// The string to which the stream appends.
    std::string& getTarget() const { return *mTarget; }

private:
    std::string* mTarget;
};

} // namespace vexil
