// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <cfenv>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace vexil::platform {

void resetFloatingPoint() {
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("fninit");
#if defined(__SSE__)
    _mm_setcsr(0x1F80);
#endif
#else
    std::fesetenv(FE_DFL_ENV);
#endif
}

} // namespace vexil::platform
