// SPDX-License-Identifier: MIT

// UTF-8 and UTF-16 survive a round trip, and a second decoder agrees on malformed text.
#include "fuzz/require.h"
#include "vexil/exceptions.h"
#include "vexil/unicode_strings.h"

#include <cstring>
#include <string>
#include <vector>

using namespace vexil;

namespace {

template <class Action>
std::string failureOf(const Action& aAction) {
    try {
        aAction();
    } catch (const EncodingError& error) {
        return error.what();
    }
    return "";
}

struct LeadByte {
    std::size_t length;       ///< of its form; 0: there is none
    std::uint8_t first, last; ///< the bytes that may follow it
};

/// Well-formed byte sequences by their first two bytes, as the Unicode standard lists them.
LeadByte classify(std::uint8_t aByte) {
    if (aByte < 0x80) return {1, 0, 0};
    if (aByte < 0xC0 || aByte > 0xF7) return {0, 0, 0};
    if (aByte < 0xC2) return {2, 1, 0};
    if (aByte < 0xE0) return {2, 0x80, 0xBF};
    if (aByte == 0xE0) return {3, 0xA0, 0xBF};
    if (aByte == 0xED) return {3, 0x80, 0x9F};
    if (aByte < 0xF0) return {3, 0x80, 0xBF};
    if (aByte == 0xF0) return {4, 0x90, 0xBF};
    if (aByte < 0xF4) return {4, 0x80, 0xBF};
    if (aByte == 0xF4) return {4, 0x80, 0x8F};
    return {4, 1, 0};
}

/// The fault of a text, "invalid code" or "truncated"; empty if it is valid.
std::string findFault(const std::string& aText, std::u32string& aCodes) {
    for (std::size_t pos = 0; pos < aText.size();) {
        const auto at = [&](std::size_t aPos) { return static_cast<std::uint8_t>(aText[aPos]); };
        const LeadByte lead = classify(at(pos));
        if (lead.length == 0) return "invalid code";
        char32_t code = lead.length == 1 ? at(pos) : at(pos) & (0x7FU >> lead.length);
        for (std::size_t i = 1; i < lead.length; ++i) {
            if (pos + i == aText.size()) return "truncated";
            if ((at(pos + i) & 0xC0) != 0x80) return "invalid code";
            code = code << 6 | (at(pos + i) & 0x3FU);
        }
        if (lead.length > 1 && (at(pos + 1) < lead.first || at(pos + 1) > lead.last)) {
            return "invalid code";
        }
        aCodes += code;
        pos += lead.length;
    }
    return "";
}

void checkUtf8(const std::string& aText) {
    std::u32string codes;
    std::string expected = findFault(aText, codes);
    if (!expected.empty()) expected.insert(0, "UnicodeString32::assignUtf8(): ");
    const auto checked = failureOf([&] { UnicodeString32::checkUtf8(aText.data(), aText.size()); });
    require(checked == expected, "checkUtf8() refuses malformed text");
    UnicodeString32 string(Latin1, "old");
    const auto assigned = failureOf([&] { string.assignUtf8(aText); });
    require(assigned == expected, "assignUtf8() refuses malformed text");
    if (!expected.empty()) {
        require(string.asUtf8() == "old", "a failed assignUtf8() changes nothing");
        return;
    }
    require(std::u32string(string.getData(), string.getData() + string.getLength()) == codes,
            "the code points are those of the text");
    require(string.asUtf8() == aText, "UTF-8 survives a round trip");
}

/// The fault of UTF-16 text; empty if it is valid.
std::string findFault(const std::vector<std::uint16_t>& aUnits) {
    for (std::size_t i = 0; i < aUnits.size(); ++i) {
        if (aUnits[i] < 0xD800 || aUnits[i] > 0xDFFF) continue;
        if (aUnits[i] >= 0xDC00) return "missing lead surrogate";
        ++i;
        const bool isPair = i < aUnits.size() && aUnits[i] >= 0xDC00 && aUnits[i] <= 0xDFFF;
        if (!isPair) return "missing trail surrogate";
    }
    return "";
}

std::vector<std::uint16_t> encode(const UnicodeString32& aString) {
    std::vector<std::uint16_t> units;
    for (std::uint32_t i = 0; i < aString.getLength(); ++i) {
        const std::uint32_t code = aString.getData()[i];
        if (code < 0x10000) {
            units.push_back(static_cast<std::uint16_t>(code));
        } else {
            units.push_back(static_cast<std::uint16_t>(0xD7C0 + (code >> 10)));
            units.push_back(static_cast<std::uint16_t>(0xDC00 + code % 0x400));
        }
    }
    return units;
}

void checkUtf16(const std::vector<std::uint16_t>& aUnits) {
    std::string expected = findFault(aUnits);
    if (!expected.empty()) expected.insert(0, "UnicodeStringBase::lengthForUTF32(): ");
    const auto count = static_cast<std::uint32_t>(aUnits.size());
    UnicodeString32 string(Latin1, "old");
    const auto assigned = failureOf([&] { string.assignUtf16(aUnits.data(), count); });
    require(assigned == expected, "assignUtf16() refuses malformed text");
    if (expected.empty()) {
        require(encode(string) == aUnits, "UTF-16 survives a round trip");
        require(UnicodeStringBase::lengthForUTF32(aUnits.data(), count) == string.getLength(),
                "lengthForUTF32() counts the code points");
    } else {
        require(string.asUtf8() == "old", "a failed assignUtf16() changes nothing");
    }
}

void checkCodes(const std::vector<std::uint32_t>& aCodes) {
    UnicodeString32 string;
    std::string pieces;
    bool isText = true;
    for (const std::uint32_t code : aCodes) {
        const auto appended = failureOf([&] { string.append(code); });
        require(appended.empty() == (code <= 0x10FFFF), "append() accepts every code point");
        const bool isScalar = code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF);
        const auto piece = failureOf([&] {
            char form[4];
            pieces.append(form, UnicodeString32::encodeUtf8(form, code));
        });
        require(piece.empty() == isScalar,
                "encodeUtf8() accepts all code points except surrogates");
        isText = isText && (isScalar || code > 0x10FFFF);
    }
    std::string whole;
    const auto written = failureOf([&] { whole = string.asUtf8(); });
    require(written.empty() == isText, "asUtf8() refuses surrogates");
    require(!isText || whole == pieces, "asUtf8() equals the concatenation of the single forms");
}

template <class Unit>
std::vector<Unit> unitsOf(const std::uint8_t* aData, std::size_t aSize) {
    std::vector<Unit> units(aSize / sizeof(Unit));
    if (!units.empty()) std::memcpy(units.data(), aData, units.size() * sizeof(Unit));
    return units;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    checkUtf8({aData, aData + aSize});
    checkUtf16(unitsOf<std::uint16_t>(aData, aSize));
    checkCodes(unitsOf<std::uint32_t>(aData, aSize));
    return 0;
}
