#pragma once

/// While it lives, the first @p aCount allocations succeed and every later one fails, be it by
/// malloc, realloc or operator new. One at a time.
class FailingMemory {
public:
    explicit FailingMemory(long aCount) { sAllowed = aCount; }
    ~FailingMemory() { sAllowed = unlimited; }
    static bool mayAllocate() { return sAllowed == unlimited || (sAllowed > 0 && sAllowed-- > 0); }

private:
    static constexpr long unlimited = -1;
    static inline long sAllowed = unlimited;
};
