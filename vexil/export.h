// SPDX-License-Identifier: MIT
#pragma once

/// Marks the public classes and functions: the shared library exports them and hides all other
/// names. It has no effect in the static library.
#if defined(VEXIL_SHARED) && defined(__GNUC__)
#define VEXIL_API __attribute__((visibility("default")))
#else
#define VEXIL_API
#endif
