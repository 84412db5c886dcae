// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

// The forms of the parts of a certificate, which do not depend on the library that decoded it.
namespace plugins {

using Bytes = std::span<const unsigned char>;

/// Returns two upper-case digits per byte, with @p aSeparator between bytes.
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

/// Returns the PEM form (RFC 7468) of a certificate in DER form, with a line feed after each line.
std::string pemText(Bytes aDer);

/// Returns the values of the attributes of a distinguished name in the form of RFC 2253, unescaped
/// and separated by ", ", without the types of the attributes.
std::string nameValuesText(std::string_view aName);

} // namespace plugins
