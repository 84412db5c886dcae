#pragma once

/// While it lives, the first @p aCount allocations succeed and every later one fails, be it by
/// malloc, realloc or operator new. One at a time.
class FailingMemory {
public:
    explicit FailingMemory(long aCount);
    ~FailingMemory();
};
