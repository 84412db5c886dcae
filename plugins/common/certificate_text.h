#pragma once

#include <span>
#include <string>
#include <string_view>

// The forms of what certificates hold, the same whatever library has decoded it.
namespace plugins {

using Bytes = std::span<const unsigned char>;

/// Returns two upper-case digits a byte, with @p aSeparator between bytes.
std::string toHex(Bytes aBytes, std::string_view aSeparator = {});

/// Returns the digits of a number with @p aMagnitude, the most significant byte first.
std::string serialNumberText(bool aIsNegative, Bytes aMagnitude);

struct Time {
    int year, month, day, hour, minute, second; // month and day count from 1
};

/// Returns @p aTime, in UTC, as 2026-01-31T12:00:00Z.
std::string timeText(const Time& aTime);

/// Returns @p aDigest, the SHA-256 of a certificate's DER form, with colons between the bytes.
std::string fingerprintText(Bytes aDigest);

} // namespace plugins
