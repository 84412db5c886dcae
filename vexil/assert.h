// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// VEXIL_ASSERT(condition): checks a precondition or an invariant in builds that define
/// VEXIL_ASSERTIONS (debug, sanitizer, fuzzing and coverage builds) and aborts with the condition
/// and its position if it does not hold. In other builds the condition is compiled but never
/// evaluated, so it must not have side effects.

#if defined(VEXIL_ASSERTIONS)

#include <cstdio>
#include <cstdlib>

namespace vexil {

[[noreturn]] inline void failAssertion(const char* aCondition, const char* aFile, int aLine) {
    std::fprintf(stderr, "%s:%d: assertion failed: %s\n", aFile, aLine, aCondition);
    std::abort();
}

} // namespace vexil

#define VEXIL_ASSERT(condition)                                                                    \
    ((condition) ? static_cast<void>(0) : vexil::failAssertion(#condition, __FILE__, __LINE__))

#else

/// Checks a condition; has no effect without VEXIL_ASSERTIONS.
#define VEXIL_ASSERT(condition) static_cast<void>(sizeof((condition) ? 1 : 0))

#endif
