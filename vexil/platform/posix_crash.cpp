// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

namespace vexil::platform {

void setCrashStatus(int) {
}

} // namespace vexil::platform
