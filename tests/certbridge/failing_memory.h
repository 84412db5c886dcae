// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

/// While it lives, the first @p aCount allocations succeed, and the next one fails, as does every
/// later one unless @p aOnce; be it by malloc, realloc or operator new. One at a time.
class FailingMemory {
public:
    explicit FailingMemory(long aCount, bool aOnce = false) {
        sAllowed = aCount;
        sOnce = aOnce;
        sHasFailed = false;
    }
    ~FailingMemory() { sAllowed = unlimited; }

    static bool mayAllocate() {
        if (sAllowed == unlimited || (sAllowed > 0 && sAllowed-- > 0)) return true;
        if (sOnce) sAllowed = unlimited;
        sHasFailed = true;
        return false;
    }
    /// Whether the latest one made an allocation fail.
    static bool hasFailed() { return sHasFailed; }

    /// Blocks that are allocated and not freed.
    static inline long liveBlocks = 0;
    /// Size of the largest block that was requested.
    static inline std::size_t largestRequest = 0;
    /// Libraries that are loaded and not unloaded.
    static inline long openLibraries = 0;

private:
    static constexpr long unlimited = -1;
    static inline long sAllowed = unlimited;
    static inline bool sOnce = false;
    static inline bool sHasFailed = false;
};
