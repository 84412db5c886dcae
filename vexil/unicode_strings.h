#pragma once

#include "vexil/export.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vexil {

/// What the bytes given to UnicodeString32::assignOctets() are.
/// The codes 5 and 7 have no name of their own and mean the same as 2 and 6.
enum OctetEncoding : std::int32_t {
    Latin1 = 0,        ///< ISO 8859-1
    Utf8 = 1,          ///< strict UTF-8
    PdfTextString = 2, ///< UTF-16BE or UTF-8 after a byte order mark, else PDFDocEncoding
    Windows1252 = 3,   ///< Windows code page 1252; undefined bytes become '?'
    WindowsAnsi = 4,   ///< the system's active code page
    PdfTextStringWithLanguage = 6, ///< as PdfTextString, language escapes kept
};

/// What the two string classes share: validation of code points and of UTF-16 units.
class VEXIL_API UnicodeStringBase {
public:
    virtual ~UnicodeStringBase() = default;

    /// Throws EncodingError "UnicodeStringBase::checkUTF32(): code out of range" at the first code
    /// above 0x10FFFF. Surrogates pass.
    static void checkUTF32(const std::uint32_t* aCodes, std::uint32_t aCount);

    /// The number of code points in @p aCount UTF-16 units. Throws EncodingError
    /// "UnicodeStringBase::lengthForUTF32(): missing trail surrogate" or
    /// "UnicodeStringBase::lengthForUTF32(): missing lead surrogate".
    static std::uint32_t lengthForUTF32(const std::uint16_t* aUnits, std::uint32_t aCount);

protected:
    UnicodeStringBase() = default;
    UnicodeStringBase(const UnicodeStringBase&) = delete;
    UnicodeStringBase& operator=(const UnicodeStringBase&) = delete;
};

/// What the two string classes share: the block of units, where it lies and how it grows. The units
/// are followed by a zero unit that is not counted. Owns its block; neither copied nor assigned.
template <class Unit>
class VEXIL_API UnicodeStringOf : public UnicodeStringBase {
public:
    ~UnicodeStringOf() override;

    /// The units, zero-terminated also when there is none; valid until the string changes.
    const Unit* getData() const { return mBuffer != nullptr ? mBuffer : &noUnits; }
    /// The number of units, the terminating one not counted.
    std::uint32_t getLength() const { return mLength; }

    /// Exchanges the blocks; no unit is copied.
    void swap(UnicodeStringOf& aOther) noexcept;

protected:
    /// The most units a block may hold: one byte less than 256 MiB, so no size in bytes overflows.
    static constexpr std::uint32_t maxCapacity = 0xFFFFFFF / sizeof(Unit);

    UnicodeStringOf() = default;

    /// Throws the class's "string too long" if a string without a block cannot hold @p aCount
    /// units.
    static void checkCount(std::size_t aCount) {
        // With its terminator the longest string stays one unit below the largest block.
        if (aCount >= maxCapacity - 1) throwTooLong();
    }

    /// Makes room for @p aCount units and the terminator, and writes neither. Throws what
    /// checkCount() throws if the block must grow for it, std::bad_alloc if there is no memory.
    void alloc(std::size_t aCount);

    /// Says that the first @p aLength units are written, and terminates them.
    void setLength(std::uint32_t aLength);

    /// Empties the string and keeps its room.
    void clear();

    static constexpr Unit noUnits = 0; ///< what an empty string without a block shows

    Unit* mBuffer = nullptr;     ///< from realloc, owned
    std::uint32_t mLength = 0;   ///< in units
    std::uint32_t mCapacity = 0; ///< in units

private:
    [[noreturn]] static void throwTooLong();
};

extern template class UnicodeStringOf<std::uint32_t>;
extern template class UnicodeStringOf<std::uint16_t>;

/// A growing sequence of Unicode code points, one 32-bit unit each. May hold U+0000. At most
/// 67108861 code points where it has to grow: growing past that throws Overflow
/// "UnicodeString32::alloc(): string too long". A failed operation leaves the content as it was,
/// unless said otherwise.
class VEXIL_API UnicodeString32 : public UnicodeStringOf<std::uint32_t> {
public:
    UnicodeString32() = default;
    /// As assignOctets() on an empty string.
    UnicodeString32(std::int32_t aEncoding, const std::string& aBytes);
    /// As assignUtf16() on an empty string.
    UnicodeString32(const std::uint16_t* aUnits, std::uint32_t aCount);

    /// Makes room for @p aCount code points.
    void reserve(std::size_t aCount);
    using UnicodeStringOf::clear;

    /// Adds one code point. Throws what checkUTF32() throws; surrogates are taken.
    void append(std::uint32_t aCode);

    /// @{
    /// Replaces the content by the UTF-8 text. Throws EncodingError
    /// "UnicodeString32::assignUtf8(): truncated" or "UnicodeString32::assignUtf8(): invalid code"
    /// (overlong forms, surrogates and codes above U+10FFFF included), Overflow for 67108862 bytes
    /// or more.
    void assignUtf8(const void* aBytes, std::size_t aLen);
    void assignUtf8(const std::string& aBytes) { assignUtf8(aBytes.data(), aBytes.size()); }
    /// @}

    /// Throws exactly what assignUtf8() of an empty string throws for these bytes, without building
    /// the code points and without allocating.
    static void checkUtf8(const void* aBytes, std::size_t aLen);

    /// Replaces the content by the decoded UTF-16 units. Throws what lengthForUTF32() throws.
    void assignUtf16(const std::uint16_t* aUnits, std::uint32_t aCount);

    /// Replaces the content by the bytes decoded as the OctetEncoding @p aEncoding says; any other
    /// code throws InvalidArgument "UnicodeString32::assignOctets(): unknown encoding".
    void assignOctets(std::int32_t aEncoding, const void* aBytes, std::size_t aLen);

    /// Each byte is the code point of equal value.
    void assignLatin1(const void* aBytes, std::size_t aLen);
    /// A byte that the code page leaves undefined becomes '?'. Empties the string before it may
    /// fail.
    void assignWindows1252(const void* aBytes, std::size_t aLen);
    /// Throws what UnicodeString16::assignWindowsANSI() throws.
    void assignWindowsANSI(const void* aBytes, std::size_t aLen);
    /// A text string as PDF defines it. Language escapes (U+001B, two or four letters, U+001B) are
    /// left out unless @p aKeepLanguageEscapes; a malformed one empties a UTF-16 text and cuts a
    /// UTF-8 text, without an error. On failure the string is left empty.
    void assignPdfTextString(const void* aBytes, std::size_t aLen, bool aKeepLanguageEscapes);
    /// Appends the bytes decoded by PDFDocEncoding; undefined bytes become '?'. On failure a part
    /// may have been appended.
    void assignPdfDocEncoding(const void* aBytes, std::size_t aLen);

    /// The content as UTF-8. Throws EncodingError "UnicodeString32::asUtf8(): reserved code" for a
    /// surrogate, "UnicodeString32::asUtf8(): code out of range" above U+10FFFF.
    std::string asUtf8() const;

    /// Writes the UTF-8 form of one code point, at most four bytes, and returns the place behind
    /// it; throws what asUtf8() throws.
    static char* encodeUtf8(char* aDest, std::uint32_t aCode);
};

/// A zero-terminated sequence of UTF-16 code units; pairing is not checked here. At most 134217725
/// units where it has to grow: growing past that throws Overflow
/// "UnicodeString16::alloc(): string too long". A failed operation leaves the content as it was.
class VEXIL_API UnicodeString16 : public UnicodeStringOf<std::uint16_t> {
public:
    UnicodeString16() = default;
    /// Copies the units before the first zero unit.
    explicit UnicodeString16(const std::uint16_t* aUnits);

    /// Replaces the content by the units before the first zero unit.
    void assign(const std::uint16_t* aUnits);

    /// Replaces the content by the bytes converted from the system's active code page; no bytes
    /// empty the string. Throws Overflow "UnicodeString16::assignWindowsANSI(): string too long"
    /// past 2147483647 bytes, EncodingError "UnicodeString16::assignWindowsANSI():
    /// MultiByteToWideChar() failed" for invalid bytes.
    void assignWindowsANSI(const void* aBytes, std::size_t aLen);
};

} // namespace vexil
