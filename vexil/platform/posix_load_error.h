// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace vexil::platform {

/// Returns the error number of the Windows loader for a failed dlopen() of @p aFileName.
/// @param aText   dlerror() in the "C" locale
/// @param aErrno  errno after the call, which had been 0 before it
[[nodiscard]] long classifyLoadError(std::string_view aFileName, std::string_view aText,
                                     int aErrno);

/// Returns whether reading the file may block, or have other effects than reading a file: a pipe, a
/// socket, a terminal or another device.
[[nodiscard]] bool isUnsafeToLoad(const char* aPath);

/// Returns whether the loader, searching for @p aFileName in its directories, would open a file
/// that isUnsafeToLoad().
[[nodiscard]] bool isUnsafeToSearch(std::string_view aFileName);

} // namespace vexil::platform
