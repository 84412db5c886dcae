// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <cfenv>

#include <float.h>

namespace vexil::platform {

void resetFloatingPoint() {
    // 64-bit: _controlfp() reaches only the SSE unit. 32-bit: it selects the precision of the
    // platform.
    std::fesetenv(FE_DFL_ENV);
    _controlfp(_CW_DEFAULT, 0xFFFFFFFF);
}

} // namespace vexil::platform
