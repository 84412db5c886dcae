// SPDX-License-Identifier: MIT
#include "vexil/platform/posix_file_name.h"

namespace vexil::platform {
namespace {

struct CodePoint {
    std::uint32_t value;
    std::size_t length; ///< in bytes
};

constexpr CodePoint replacement{0xFFFD, 1};

// The smallest code of each length; a smaller one is an overlong form.
constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};

bool isScalarValue(std::uint32_t aCode) {
    return aCode < 0xD800 || (aCode > 0xDFFF && aCode <= 0x10FFFF);
}

CodePoint decodeFirst(std::string_view aBytes) {
    const std::uint32_t first = static_cast<unsigned char>(aBytes.front());
    if (first < 0x80) return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || aBytes.size() < length) return replacement;
    std::uint32_t code = first & (0x7FU >> length);
    for (const char byte : aBytes.substr(1, length - 1)) {
        if ((byte & 0xC0) != 0x80) return replacement;
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    if (code < smallest[length] || !isScalarValue(code)) return replacement;
    return {code, length};
}

} // namespace

void fileNameToUtf16(std::string_view aBytes, std::span<std::uint16_t>& aDest) {
    while (!aBytes.empty()) {
        const auto [code, length] = decodeFirst(aBytes);
        const std::size_t units = code > 0xFFFF ? 2 : 1;
        if (aDest.size() < units) return;
        if (units == 2) {
            aDest[0] = static_cast<std::uint16_t>(0xD7C0 + (code >> 10));
            aDest[1] = static_cast<std::uint16_t>(0xDC00 | (code & 0x3FF));
        } else {
            aDest[0] = static_cast<std::uint16_t>(code);
        }
        aDest = aDest.subspan(units);
        aBytes.remove_prefix(length);
    }
}

} // namespace vexil::platform
