// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <cstdlib>

/// Aborts unless @p aHolds, so that the fuzzer saves the input.
inline void require(bool aHolds, const char* aClaim) {
    if (aHolds) return;
    std::fprintf(stderr, "Does not hold: %s\n", aClaim);
    std::abort();
}
