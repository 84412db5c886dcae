// SPDX-License-Identifier: MIT
#pragma once

#include <string>

// Texts of unknown encoding, converted for a report.

/// Returns @p aBytes unchanged if they are valid UTF-8, otherwise converted from the active code
/// page or, if they are not valid there either, from ISO 8859-1.
[[nodiscard]] std::string readableText(const std::string& aBytes);

/// The beginning of @p aBytes in double quotes, on one line.
[[nodiscard]] std::string quotedExcerpt(const std::string& aBytes);
