#include "certificate_text.h"

#include <array>
#include <cstdio>

namespace plugins {

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
    std::array<char, 80> text; // as wide as six numbers of any size
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ", aTime.year,
                  aTime.month, aTime.day, aTime.hour, aTime.minute, aTime.second);
    return text.data();
}

std::string fingerprintText(Bytes aDigest) {
    return toHex(aDigest, ":");
}

} // namespace plugins
