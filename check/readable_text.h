#pragma once

#include <string>

// Texts of strangers, made fit for a report.

/// @p aBytes as UTF-8: they themselves if they are valid, else converted from the active code page,
/// else each byte as the character of its number.
std::string readableText(const std::string& aBytes);

/// The beginning of @p aBytes in double quotes, on one line.
std::string quotedExcerpt(const std::string& aBytes);
