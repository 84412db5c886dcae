// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <float.h>

namespace vexil::platform {

void resetFloatingPoint() {
    _clearfp();
    _controlfp(_CW_DEFAULT, 0xFFFFFFFF);
}

} // namespace vexil::platform
