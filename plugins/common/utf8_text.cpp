// SPDX-License-Identifier: MIT
#include "utf8_text.h"

#include "vexil/unicode_strings.h"
#include "vexil/utf8_validation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace plugins {

namespace {

bool isValid(std::string_view aText) {
    const auto* const start = reinterpret_cast<const std::uint8_t*>(aText.data());
    return vexil::isValidUtf8(start, start + aText.size());
}

// The length of the valid sequence at the start of a text that is not empty; 0 if there is none.
std::size_t sequenceLength(std::string_view aText) {
    for (std::size_t length = 1; length <= std::min<std::size_t>(4, aText.size()); ++length) {
        if (isValid(aText.substr(0, length))) return length;
    }
    return 0;
}

struct CaseRange {
    std::uint32_t first, last; // upper-case letters
    std::uint32_t distance;    // to their lower-case letters
    std::uint32_t step;        // 2: upper and lower case alternate
};
constexpr std::array caseRanges = {
    CaseRange{'A', 'Z', 32, 1},     CaseRange{0xC0, 0xD6, 32, 1},   CaseRange{0xD8, 0xDE, 32, 1},
    CaseRange{0x100, 0x12E, 1, 2},  CaseRange{0x132, 0x136, 1, 2},  CaseRange{0x139, 0x147, 1, 2},
    CaseRange{0x14A, 0x176, 1, 2},  CaseRange{0x179, 0x17D, 1, 2},  CaseRange{0x391, 0x3A1, 32, 1},
    CaseRange{0x3A3, 0x3AB, 32, 1}, CaseRange{0x400, 0x40F, 80, 1}, CaseRange{0x410, 0x42F, 32, 1},
};

std::uint32_t toLower(std::uint32_t aCode) {
    for (const auto& range : caseRanges) {
        if (aCode < range.first || aCode > range.last) continue;
        return (aCode - range.first) % range.step == 0 ? aCode + range.distance : aCode;
    }
    return aCode;
}

std::u32string toLower(std::string_view aText) {
    vexil::UnicodeString32 codes;
    codes.assignUtf8(toValidUtf8(aText));
    std::u32string text;
    text.reserve(codes.getLength());
    for (std::uint32_t i = 0; i < codes.getLength(); ++i) {
        text += static_cast<char32_t>(toLower(codes.getData()[i]));
    }
    return text;
}

} // namespace

std::string toValidUtf8(std::string_view aText) {
    if (isValid(aText)) return std::string(aText);
    std::string text;
    while (!aText.empty()) {
        const auto length = sequenceLength(aText);
        text += length == 0 ? "\xEF\xBF\xBD" : aText.substr(0, length);
        aText.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

bool containsIgnoringCase(std::string_view aText, std::string_view aPart) {
    return toLower(aText).find(toLower(aPart)) != std::u32string::npos;
}

} // namespace plugins
