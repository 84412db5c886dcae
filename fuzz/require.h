#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run, so that the fuzzer keeps the input, unless @p aHolds.
inline void require(bool aHolds, const char* aClaim) {
    if (aHolds) return;
    std::fprintf(stderr, "Does not hold: %s\n", aClaim);
    std::abort();
}
