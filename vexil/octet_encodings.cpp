// SPDX-License-Identifier: MIT
#include "vexil/exceptions.h"
#include "vexil/unicode_strings.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace vexil {
namespace {

/// The code point of each byte; 0 where the encoding leaves the byte undefined.
using CodeTable = std::array<std::uint16_t, 256>;

/// Maps a range of bytes to the code points of equal value.
constexpr void setEqual(CodeTable& aTable, std::size_t aFirst, std::size_t aLast) {
    for (std::size_t i = aFirst; i <= aLast; ++i) aTable[i] = static_cast<std::uint16_t>(i);
}

/// Maps consecutive bytes to the given code points.
template <std::size_t count>
constexpr void setCodes(CodeTable& aTable, std::size_t aFirst,
                        const std::uint16_t (&aCodes)[count]) {
    std::copy_n(aCodes, count, aTable.begin() + static_cast<std::ptrdiff_t>(aFirst));
}

constexpr CodeTable makeWindows1252Table() {
    CodeTable table{};
    setEqual(table, 0x00, 0x7F);
    setCodes(table, 0x80, {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                           0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                           0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                           0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178});
    setEqual(table, 0xA0, 0xFF);
    return table;
}

constexpr CodeTable makePdfDocEncodingTable() {
    CodeTable table{};
    setEqual(table, 0x09, 0x0A);
    setEqual(table, 0x0C, 0x0D);
    setCodes(table, 0x18, {0x02D8, 0x02C7, 0x02C6, 0x02D9, 0x02DD, 0x02DB, 0x02DA, 0x02DC});
    setEqual(table, 0x20, 0x7E);
    setCodes(table, 0x80, {0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044,
                           0x2039, 0x203A, 0x2212, 0x2030, 0x201E, 0x201C, 0x201D, 0x2018,
                           0x2019, 0x201A, 0x2122, 0xFB01, 0xFB02, 0x0141, 0x0152, 0x0160,
                           0x0178, 0x017D, 0x0131, 0x0142, 0x0153, 0x0161, 0x017E});
    setCodes(table, 0xA0, {0x20AC});
    setEqual(table, 0xA1, 0xAC);
    setEqual(table, 0xAE, 0xFF);
    return table;
}

constexpr CodeTable windows1252Table = makeWindows1252Table();
static_assert(windows1252Table[0x7F] == 0x7F && windows1252Table[0x80] == 0x20AC);
static_assert(windows1252Table[0x91] == 0x2018 && windows1252Table[0x9F] == 0x0178);
static_assert(windows1252Table[0xA0] == 0xA0 && windows1252Table[0xFF] == 0xFF);
static_assert(std::ranges::count(windows1252Table, 0) == 6, "U+0000 and five undefined bytes");

constexpr CodeTable pdfDocEncodingTable = makePdfDocEncodingTable();
static_assert(pdfDocEncodingTable[0x18] == 0x02D8 && pdfDocEncodingTable[0x1F] == 0x02DC);
static_assert(pdfDocEncodingTable[0x80] == 0x2022 && pdfDocEncodingTable[0x9E] == 0x017E);
static_assert(pdfDocEncodingTable[0xA0] == 0x20AC && pdfDocEncodingTable[0xAE] == 0xAE);
static_assert(pdfDocEncodingTable[0x7F] == 0 && pdfDocEncodingTable[0xAD] == 0);
static_assert(std::ranges::count(pdfDocEncodingTable, 0) == 23);

constexpr std::uint32_t orQuestionMark(std::uint16_t aCode) {
    return aCode != 0 ? aCode : U'?';
}

using Bytes = std::span<const std::uint8_t>;

Bytes asBytes(const void* aBytes, std::size_t aLen) {
    return {static_cast<const std::uint8_t*>(aBytes), aLen};
}

template <std::size_t count>
bool startsWith(Bytes aText, const std::uint8_t (&aMark)[count]) {
    return aText.size() >= count && std::equal(aMark, aMark + count, aText.begin());
}

// A language escape of a PDF text string: the escape character, two letters for the language, two
// more for the country or none, and the escape character again. The letters are single bytes in
// UTF-16 too.

constexpr char escapeCharacter = 0x1B;

constexpr bool isLetter(char aByte) {
    return (aByte >= 'A' && aByte <= 'Z') || (aByte >= 'a' && aByte <= 'z');
}

/// The number of letters of a language escape, given the text after its first escape unit; 0 if the
/// escape is malformed.
std::size_t countEscapeLetters(Bytes aText) {
    const auto areLetters = [aText](std::size_t aPos) {
        return isLetter(static_cast<char>(aText[aPos])) &&
               isLetter(static_cast<char>(aText[aPos + 1]));
    };
    const auto isEscape = [aText](std::size_t aPos) {
        return aText[aPos] == 0 && aText[aPos + 1] == escapeCharacter;
    };
    if (aText.size() < 4 || !areLetters(0)) return 0;
    if (isEscape(2)) return 2;
    return aText.size() >= 6 && areLetters(2) && isEscape(4) ? 4 : 0;
}

/// The units of UTF-16BE text, without an odd last byte; none if a language escape is malformed.
std::vector<std::uint16_t> readUnits(Bytes aText, bool aKeepLanguageEscapes) {
    std::vector<std::uint16_t> units;
    units.reserve(aText.size() / 2);
    while (aText.size() >= 2) {
        const auto unit = static_cast<std::uint16_t>(aText[0] << 8 | aText[1]);
        aText = aText.subspan(2);
        if (unit != escapeCharacter) {
            units.push_back(unit);
            continue;
        }
        const std::size_t letters = countEscapeLetters(aText);
        if (letters == 0) return {};
        if (aKeepLanguageEscapes) {
            units.push_back(unit);
            units.insert(units.end(), aText.begin(),
                         aText.begin() + static_cast<std::ptrdiff_t>(letters));
            units.push_back(unit);
        }
        aText = aText.subspan(letters + 2);
    }
    return units;
}

/// UTF-8 text without its language escapes, up to the first malformed one.
std::string removeLanguageEscapes(std::string_view aText) {
    std::string result;
    result.reserve(aText.size());
    for (;;) {
        const std::size_t begin = aText.find(escapeCharacter);
        result.append(aText.substr(0, begin));
        if (begin == std::string_view::npos) return result;
        const std::size_t end = aText.find(escapeCharacter, begin + 1);
        if (end == std::string_view::npos) return result;
        const std::string_view letters = aText.substr(begin + 1, end - begin - 1);
        if (letters.size() != 2 && letters.size() != 4) return result;
        if (!std::ranges::all_of(letters, isLetter)) return result;
        aText.remove_prefix(end + 1);
    }
}

} // namespace

void UnicodeString32::assignOctets(std::int32_t aEncoding, const void* aBytes, std::size_t aLen) {
    switch (aEncoding) {
    case Latin1:
        return assignLatin1(aBytes, aLen);
    case Utf8:
        return assignUtf8(aBytes, aLen);
    case PdfTextString:
    case 5:
        return assignPdfTextString(aBytes, aLen, false);
    case Windows1252:
        return assignWindows1252(aBytes, aLen);
    case WindowsAnsi:
        return assignWindowsANSI(aBytes, aLen);
    case PdfTextStringWithLanguage:
    case 7:
        return assignPdfTextString(aBytes, aLen, true);
    default:
        throw InvalidArgument("UnicodeString32::assignOctets(): unknown encoding");
    }
}

void UnicodeString32::assignLatin1(const void* aBytes, std::size_t aLen) {
    alloc(aLen);
    std::ranges::copy(asBytes(aBytes, aLen), mBuffer);
    setLength(static_cast<std::uint32_t>(aLen));
}

void UnicodeString32::assignWindows1252(const void* aBytes, std::size_t aLen) {
    clear();
    reserve(aLen);
    for (const std::uint8_t byte : asBytes(aBytes, aLen)) {
        append(byte == 0 ? 0 : orQuestionMark(windows1252Table[byte]));
    }
}

void UnicodeString32::assignWindowsANSI(const void* aBytes, std::size_t aLen) {
    UnicodeString16 units;
    units.assignWindowsANSI(aBytes, aLen);
    assignUtf16(units.getData(), units.getLength());
}

void UnicodeString32::assignPdfTextString(const void* aBytes, std::size_t aLen,
                                          bool aKeepLanguageEscapes) {
    clear();
    const Bytes text = asBytes(aBytes, aLen);
    if (startsWith(text, {0xFE, 0xFF})) {
        const auto units = readUnits(text.subspan(2), aKeepLanguageEscapes);
        // A count beyond 32 bits exceeds the limit even if all units form pairs.
        if (!std::in_range<std::uint32_t>(units.size())) checkCount(units.size() / 2);
        if (!units.empty()) assignUtf16(units.data(), static_cast<std::uint32_t>(units.size()));
    } else if (startsWith(text, {0xEF, 0xBB, 0xBF})) {
        const std::string_view utf8(static_cast<const char*>(aBytes) + 3, aLen - 3);
        if (aKeepLanguageEscapes || utf8.find(escapeCharacter) == std::string_view::npos) {
            assignUtf8(utf8.data(), utf8.size());
        } else {
            assignUtf8(removeLanguageEscapes(utf8));
        }
    } else {
        assignPdfDocEncoding(aBytes, aLen);
    }
}

void UnicodeString32::assignPdfDocEncoding(const void* aBytes, std::size_t aLen) {
    reserve(aLen);
    for (const std::uint8_t byte : asBytes(aBytes, aLen)) {
        append(orQuestionMark(pdfDocEncodingTable[byte]));
    }
}

} // namespace vexil
