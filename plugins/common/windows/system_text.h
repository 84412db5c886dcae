// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

// Texts of the system as UTF-8.
namespace plugins {

/// Returns the system's text for its error @p aNumber, with the number. Throws std::bad_alloc if
/// the error is a lack of memory.
std::string errorText(DWORD aNumber);

std::string toUtf8(std::wstring_view aText);
std::wstring toUtf16(std::string_view aText);

} // namespace plugins
