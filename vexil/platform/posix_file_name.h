// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vexil::platform {

/// Writes a file name to @p aDest as UTF-16, as far as it fits, and advances @p aDest past the
/// units written; a surrogate pair is not split. File names are bytes: each byte that is not part
/// of valid UTF-8 becomes U+FFFD. Needs no converter of the system, which may not be installed.
void fileNameToUtf16(std::string_view aBytes, std::span<std::uint16_t>& aDest);

} // namespace vexil::platform
