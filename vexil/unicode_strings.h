// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vexil {

/// Encodings of the bytes passed to UnicodeString32::assignOctets(). The codes 5 and 7 have no
/// names; they are equivalent to 2 and 6.
enum OctetEncoding : std::int32_t {
    Latin1 = 0,        ///< ISO 8859-1
    Utf8 = 1,          ///< strict UTF-8
    PdfTextString = 2, ///< UTF-16BE or UTF-8 after a byte order mark, else PDFDocEncoding
    Windows1252 = 3,   ///< Windows code page 1252; undefined bytes become '?'
    WindowsAnsi = 4,   ///< the system's active code page
    PdfTextStringWithLanguage = 6, ///< as PdfTextString, language escapes kept
};

/// Common base of the string classes: validation of code points and of UTF-16 units.
class VEXIL_API UnicodeStringBase {
public:
    virtual ~UnicodeStringBase() = default;

    /// Throws EncodingError "UnicodeStringBase::checkUTF32(): code out of range" at the first code
    /// above 0x10FFFF. Surrogates are accepted.
    static void checkUTF32(const std::uint32_t* aCodes, std::uint32_t aCount);

    /// Returns the number of code points in @p aCount UTF-16 units. Throws EncodingError
    /// "UnicodeStringBase::lengthForUTF32(): missing trail surrogate" or
    /// "UnicodeStringBase::lengthForUTF32(): missing lead surrogate".
    [[nodiscard]] static std::uint32_t lengthForUTF32(const std::uint16_t* aUnits,
                                                      std::uint32_t aCount);

protected:
    UnicodeStringBase() = default;
    UnicodeStringBase(const UnicodeStringBase&) = delete;
    UnicodeStringBase& operator=(const UnicodeStringBase&) = delete;
};

/// Storage of the string classes: a block of units that grows. The units are followed by a zero
/// unit, which is not counted. Owns its block; cannot be copied or assigned.
template <class Unit>
class VEXIL_API UnicodeStringOf : public UnicodeStringBase {
public:
    ~UnicodeStringOf() override;

    /// The units, always zero-terminated; valid until the string changes.
    const Unit* getData() const { return mBuffer != nullptr ? mBuffer : &noUnits; }
    /// The number of units, without the terminating zero.
    std::uint32_t getLength() const { return mLength; }

    /// Exchanges the blocks; no unit is copied.
    void swap(UnicodeStringOf& aOther) noexcept;

protected:
    /// Maximum number of units of a block: less than 256 MiB, so that no size in bytes overflows.
    static constexpr std::uint32_t maxCapacity = 0xFFFFFFF / sizeof(Unit);
    static_assert(maxCapacity * sizeof(Unit) < 0x10000000);

    UnicodeStringOf() = default;

    /// Throws the class's "string too long" if a string without a block cannot hold @p aCount
    /// units.
    static void checkCount(std::size_t aCount) {
        // With its terminator the longest string stays one unit below the largest block.
        if (aCount >= maxCapacity - 1) throwTooLong();
    }

    /// Ensures capacity for @p aCount units and the terminator; writes neither. If the block must
    /// grow, throws the Overflow of checkCount() or std::bad_alloc, and the string is unchanged.
    void alloc(std::size_t aCount);

    /// Sets the length after the first @p aLength units have been written, and terminates them. The
    /// capacity must exceed @p aLength.
    void setLength(std::uint32_t aLength);

    /// Empties the string; the block and its capacity remain.
    void clear();

    static constexpr Unit noUnits = 0; ///< the content of a string without a block

    Unit* mBuffer = nullptr;     ///< from realloc, owned
    std::uint32_t mLength = 0;   ///< in units
    std::uint32_t mCapacity = 0; ///< in units

private:
    [[noreturn]] static void throwTooLong();
};

extern template class UnicodeStringOf<std::uint32_t>;
extern template class UnicodeStringOf<std::uint16_t>;

/// A sequence of Unicode code points, one 32-bit unit each, U+0000 included. Every operation that
/// must grow the string throws Overflow "UnicodeString32::alloc(): string too long" for more than
/// 67108861 code points, and std::bad_alloc if memory runs out. An operation that fails leaves the
/// content unchanged unless documented otherwise.
class VEXIL_API UnicodeString32 : public UnicodeStringOf<std::uint32_t> {
public:
    UnicodeString32() = default;
    /// As assignOctets() on an empty string.
    UnicodeString32(std::int32_t aEncoding, const std::string& aBytes);
    /// As assignUtf16() on an empty string.
    UnicodeString32(const std::uint16_t* aUnits, std::uint32_t aCount);

    /// Ensures capacity for @p aCount code points.
    void reserve(std::size_t aCount);
    using UnicodeStringOf::clear;

    /// Appends one code point; surrogates are accepted. Throws the EncodingError of checkUTF32().
    void append(std::uint32_t aCode);

    /// @{
    /// Replaces the content by the UTF-8 text. Throws EncodingError
    /// "UnicodeString32::assignUtf8(): truncated" or "UnicodeString32::assignUtf8(): invalid code"
    /// (overlong forms, surrogates and codes above U+10FFFF included), and Overflow for more than
    /// 67108861 bytes.
    void assignUtf8(const void* aBytes, std::size_t aLen);
    void assignUtf8(const std::string& aBytes) { assignUtf8(aBytes.data(), aBytes.size()); }
    /// @}

    /// Throws the same exception as assignUtf8() on an empty string, without decoding the code
    /// points and without allocating.
    static void checkUtf8(const void* aBytes, std::size_t aLen);

    /// Replaces the content by the decoded UTF-16 units. No units leave the string without a block.
    /// Throws the EncodingErrors of lengthForUTF32().
    void assignUtf16(const std::uint16_t* aUnits, std::uint32_t aCount);

    /// Replaces the content by the bytes, decoded in the OctetEncoding @p aEncoding by the
    /// operation of that name below. Throws its exceptions, and InvalidArgument
    /// "UnicodeString32::assignOctets(): unknown encoding" for any other code.
    void assignOctets(std::int32_t aEncoding, const void* aBytes, std::size_t aLen);

    /// Decodes ISO 8859-1: each byte is the code point of equal value.
    void assignLatin1(const void* aBytes, std::size_t aLen);
    /// Decodes code page 1252; an undefined byte becomes '?'. On failure the string is left empty.
    void assignWindows1252(const void* aBytes, std::size_t aLen);
    /// Decodes the active code page. Throws the exceptions of UnicodeString16::assignWindowsANSI()
    /// and the EncodingErrors of lengthForUTF32().
    void assignWindowsANSI(const void* aBytes, std::size_t aLen);
    /// Decodes a PDF text string. Language escapes (U+001B, two or four letters, U+001B) are
    /// removed unless @p aKeepLanguageEscapes. A malformed one makes a UTF-16 text empty and ends a
    /// UTF-8 text, without an error. Throws the EncodingErrors of assignUtf8() and
    /// lengthForUTF32(). On failure the string is left empty.
    void assignPdfTextString(const void* aBytes, std::size_t aLen, bool aKeepLanguageEscapes);
    /// Appends the bytes decoded by PDFDocEncoding; an undefined byte becomes '?'. On failure some
    /// bytes may have been appended.
    void assignPdfDocEncoding(const void* aBytes, std::size_t aLen);

    /// Returns the content as UTF-8, in one allocation. Throws EncodingError
    /// "UnicodeString32::asUtf8(): reserved code" for a surrogate and
    /// "UnicodeString32::asUtf8(): code out of range" above U+10FFFF.
    [[nodiscard]] std::string asUtf8() const;

    /// Writes the UTF-8 form of one code point, at most four bytes, and returns the position after
    /// it. Throws the EncodingErrors of asUtf8().
    [[nodiscard]] static char* encodeUtf8(char* aDest, std::uint32_t aCode);
};

/// A zero-terminated sequence of UTF-16 code units, whose pairing is not checked. Every operation
/// that must grow the string throws Overflow "UnicodeString16::alloc(): string too long" for more
/// than 134217725 units, and std::bad_alloc if memory runs out. An operation that fails leaves the
/// content unchanged.
class VEXIL_API UnicodeString16 : public UnicodeStringOf<std::uint16_t> {
public:
    UnicodeString16() = default;
    /// Copies the units before the first zero unit.
    explicit UnicodeString16(const std::uint16_t* aUnits);

    /// Replaces the content by the units before the first zero unit.
    void assign(const std::uint16_t* aUnits);

    /// Replaces the content by the bytes, converted from the system's active code page. Throws
    /// Overflow "UnicodeString16::assignWindowsANSI(): string too long" for more than 2147483647
    /// bytes, and EncodingError "UnicodeString16::assignWindowsANSI(): MultiByteToWideChar()
    /// failed" for invalid bytes.
    void assignWindowsANSI(const void* aBytes, std::size_t aLen);
};

} // namespace vexil
