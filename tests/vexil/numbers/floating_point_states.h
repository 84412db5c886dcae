// SPDX-License-Identifier: MIT
#pragma once

#include <cfenv>
#include <cfloat>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif
#if defined(__x86_64__) || defined(__i386__)
#if __has_include(<fpu_control.h>)
#include <fpu_control.h>
#endif
#endif

// States in which a library may leave the floating-point unit of the thread. Each function enters
// one and returns false where the processor or the runtime does not offer it.

inline bool enterSinglePrecision() {
#if defined(_FPU_SETCW)
    fpu_control_t control = 0x007F; // all exceptions masked, 24 bits, round to nearest
    _FPU_SETCW(control);
    return true;
#elif defined(_MCW_PC) && defined(__i386__)
    _controlfp(_PC_24, _MCW_PC);
    return true;
#else
    return false;
#endif
}

inline bool flushToZero() {
#if defined(__SSE2__)
    _mm_setcsr(_mm_getcsr() | 0x8040); // results and operands
    return true;
#else
    return false;
#endif
}

template <int direction>
bool roundTo() {
    return std::fesetround(direction) == 0;
}

/// All traps except, on x87, those that it raises even for loading or storing a subnormal number:
/// there every double that is passed or returned is loaded and stored.
inline bool enableTraps() {
    std::feclearexcept(FE_ALL_EXCEPT); // x87 raises exceptions that are still flagged
#if defined(__GLIBC__)
#if defined(__i386__)
    constexpr int traps = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_INEXACT;
#else
    constexpr int traps = FE_ALL_EXCEPT;
#endif
    return feenableexcept(traps) != -1;
#elif defined(_MCW_EM)
#if defined(__i386__)
    constexpr unsigned masked = _EM_UNDERFLOW | _EM_DENORMAL;
#else
    constexpr unsigned masked = 0;
#endif
    _controlfp(masked, _MCW_EM);
    return true;
#else
    return false;
#endif
}
