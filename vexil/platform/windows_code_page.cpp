// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1 // as libstdc++ defines it
#include <windows.h>

namespace vexil::platform {

std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits) {
    // A buffer size of 0 requests the number of units.
    return MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, aBytes, aLen,
                               reinterpret_cast<wchar_t*>(aDest), aDest ? aUnits : 0);
}

} // namespace vexil::platform
