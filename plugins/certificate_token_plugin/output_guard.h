// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>

namespace plugins {

/// Discards the output to a standard stream of the process during its lifetime: some modules print.
class OutputGuard {
public:
    /// @p aStream is stdout or stderr. Throws Failure (InternalError) if it cannot be redirected.
    explicit OutputGuard(std::FILE* aStream);
    ~OutputGuard();
    OutputGuard(const OutputGuard&) = delete;
    OutputGuard& operator=(const OutputGuard&) = delete;

private:
    std::FILE* mStream;
    int mOriginal; // negative: the stream is closed
};

} // namespace plugins
