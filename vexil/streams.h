#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vexil {

/// Source of bytes. Lengths and positions count bytes. One thread at a time.
class VEXIL_API InputStream {
public:
    virtual ~InputStream() = default;

    /// Copies up to @p aLen bytes to @p aDest and moves past them. Returns how many; 0 is the end.
    virtual std::int32_t read(void* aDest, std::int32_t aLen) = 0;
    /// Ends the use of the source.
    virtual void close() = 0;
    /// Moves to @p aPos, counted from the start.
    virtual void seek(std::int32_t aPos) = 0;
    /// The position, counted from the start.
    virtual std::int32_t tell() = 0;
    /// How many bytes can still be read.
    virtual std::int32_t available() = 0;
    /// The base throws NotImplemented "InputStream::seek64(): not implemented".
    virtual void seek64(std::int64_t aPos);
    /// The base throws NotImplemented "InputStream::tell64(): not implemented".
    virtual std::int64_t tell64();
};

/// Sink of bytes. Lengths and positions count bytes. One thread at a time.
class VEXIL_API OutputStream {
public:
    virtual ~OutputStream() = default;

    /// Passes on what the stream may have kept back.
    virtual void flush() = 0;
    /// Ends the use of the sink.
    virtual void close() = 0;
    /// Moves to @p aPos, counted from the start.
    virtual void seek(std::int32_t aPos) = 0;
    /// The position, counted from the start.
    virtual std::int32_t tell() = 0;
    /// Takes all @p aLen bytes at @p aSource or throws.
    virtual void write(const void* aSource, std::int32_t aLen) = 0;
    /// The base throws NotImplemented "OutputStream::seek64(): not implemented".
    virtual void seek64(std::int64_t aPos);
    /// The base throws NotImplemented "OutputStream::tell64(): not implemented".
    virtual std::int64_t tell64();
};

/// A read-only block of bytes that somebody else owns, as MemoryInputStream takes it.
/// Both constructors throw Overflow "ByteRange: string too long" at 4 GiB or more.
class VEXIL_API ByteRange {
public:
    /// The bytes of @p aText, which must stay as it is while the range is in use.
    explicit ByteRange(const std::string& aText);
    /// The @p aSize bytes at @p aData, which must stay as they are while the range is in use.
    ByteRange(const void* aData, std::size_t aSize);

    /// The first byte, borrowed.
    const char* getData() const { return mData; }
    /// The number of bytes.
    std::uint32_t getSize() const { return mSize; }

private:
    const char* mData;
    std::uint32_t mSize;
};

/// Reads bytes from a block of memory that somebody else owns.
/// The block must outlive the stream, which never copies, changes or frees it.
/// A refused call leaves the position where it was.
class VEXIL_API MemoryInputStream final : public InputStream, private NonCopyable {
public:
    /// Stands on the first of the @p aSize bytes at @p aData.
    MemoryInputStream(const void* aData, std::uint32_t aSize);
    /// The same for the bytes of @p aRange; the range itself may go.
    explicit MemoryInputStream(const ByteRange& aRange);

    /// Throws InvalidArgument "MemoryInputStream::read(): invalid argument aLen" if it is negative.
    std::int32_t read(void* aDest, std::int32_t aLen) override;
    /// Ends the data: from now on every read returns 0.
    void close() override;
    /// Any position from 0 to the size; else throws InvalidArgument
    /// "MemoryInputStream::seek(): invalid argument aPos".
    void seek(std::int32_t aPos) override;
    /// Throws Overflow "MemoryInputStream::tell(): position out of range" past 2147483647.
    std::int32_t tell() override;
    /// At most 2147483647, however much there is.
    std::int32_t available() override;
    /// As seek(), with the message "MemoryInputStream::seek64(): invalid argument aPos".
    void seek64(std::int64_t aPos) override;
    std::int64_t tell64() override;

    /// Whether the position is 0.
    bool isAtBegin() const { return mPosition == 0; }
    /// The bytes not read yet, borrowed from the block. Lets a reader look at many at once; it
    /// moves past those it took with skip().
    const char* getRemainingData() const { return mData + mPosition; }
    /// How many they are.
    std::uint32_t getRemainingSize() const { return mSize - mPosition; }
    /// Moves past @p aCount bytes, at most getRemainingSize().
    void skip(std::uint32_t aCount) { mPosition += aCount; }

private:
    const char* mData;
    std::uint32_t mSize;
    std::uint32_t mPosition = 0; ///< never beyond mSize
};

/// Appends bytes to a standard string that somebody else owns and that must outlive the stream.
/// Never clears or shortens the string. A refused write appends nothing.
class VEXIL_API StringOutputStream final : public OutputStream, private NonCopyable {
public:
    /// Appends to @p aTarget, which is borrowed.
    explicit StringOutputStream(std::string* aTarget);

    /// Does nothing: what was written is in the string.
    void flush() override {}
    /// Does nothing; the stream can still be written to.
    void close() override {}
    /// Throws NotImplemented "StringOutputStream::seek(): not implemented".
    void seek(std::int32_t aPos) override;
    /// Throws NotImplemented "StringOutputStream::tell(): not implemented".
    std::int32_t tell() override;
    /// Throws InvalidArgument "StringOutputStream::write(): invalid argument aLen" if it is
    /// negative.
    void write(const void* aSource, std::int32_t aLen) override;

    /// The string that this stream appends to.
    std::string& getTarget() const { return *mTarget; }

private:
    std::string* mTarget;
};

} // namespace vexil
