// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace plugins {

/// Returns the text with each byte that does not belong to a valid UTF-8 sequence replaced by
/// U+FFFD.
std::string toValidUtf8(std::string_view aText);

/// Returns whether @p aText contains @p aPart if case is ignored. Letters of the Latin, Greek and
/// Cyrillic alphabets up to U+045F have case, independent of the locale.
bool containsIgnoringCase(std::string_view aText, std::string_view aPart);

} // namespace plugins
