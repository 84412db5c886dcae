// SPDX-License-Identifier: MIT
#include "certificate_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>

namespace plugins {

namespace {

// Encodes one to three bytes as four characters, padded with "=".
std::string base64Group(Bytes aBytes) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) bits = bits << 8 | (i < aBytes.size() ? aBytes[i] : 0u);
    std::string group;
    for (int shift = 18; shift >= 0; shift -= 6) group += digits[bits >> shift & 0x3F];
    return group.replace(aBytes.size() + 1, 3 - aBytes.size(), 3 - aBytes.size(), '=');
}

// Removes the escape sequence at the start of the text and returns its character or byte.
char takeEscaped(std::string_view& aText) {
    unsigned char byte = 0;
    const auto digits = aText.substr(1, 2);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (error == std::errc() && end == digits.data() + 2) {
        aText.remove_prefix(3);
        return static_cast<char>(byte);
    }
    const char character = aText.size() > 1 ? aText[1] : '\\';
    aText.remove_prefix(std::min<std::size_t>(2, aText.size()));
    return character;
}

// Removes the attribute at the start of the text, with its separator, and returns its value.
std::string takeValue(std::string_view& aText) {
    aText.remove_prefix(std::min(aText.size(), aText.find('=') + 1));
    std::string value;
    while (!aText.empty() && aText.front() != ',' && aText.front() != '+') {
        if (aText.front() == '\\') {
            value += takeEscaped(aText);
        } else {
            value += aText.front();
            aText.remove_prefix(1);
        }
    }
    aText.remove_prefix(std::min<std::size_t>(1, aText.size()));
    return value;
}

} // namespace

std::string toHex(Bytes aBytes, std::string_view aSeparator) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const auto byte : aBytes) {
        if (!text.empty()) text += aSeparator;
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::string serialNumberText(bool aIsNegative, Bytes aMagnitude) {
    const auto digits = toHex(aMagnitude);
    return aIsNegative ? '-' + digits : digits;
}

std::string timeText(const Time& aTime) {
    std::array<char, 80> text; // wide enough for six numbers of any size
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ", aTime.year,
                  aTime.month, aTime.day, aTime.hour, aTime.minute, aTime.second);
    return text.data();
}

std::string fingerprintText(Bytes aDigest) {
    return toHex(aDigest, ":");
}

std::string pemText(Bytes aDer) {
    constexpr std::size_t bytesPerLine = 48; // 64 characters
    std::string text = "-----BEGIN CERTIFICATE-----\n";
    for (std::size_t i = 0; i < aDer.size(); i += 3) {
        if (i > 0 && i % bytesPerLine == 0) text += '\n';
        text += base64Group(aDer.subspan(i, std::min<std::size_t>(3, aDer.size() - i)));
    }
    return text + "\n-----END CERTIFICATE-----\n";
}

std::string nameValuesText(std::string_view aName) {
    std::string text;
    while (!aName.empty()) {
        if (!text.empty()) text += ", ";
        text += takeValue(aName);
    }
    return text;
}

} // namespace plugins
