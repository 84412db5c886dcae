// SPDX-License-Identifier: MIT
#pragma once

namespace plugins {

/// Discards the standard output of the process during its lifetime: some modules print to it, and
/// the answer of certbridge must be its only content.
class StandardOutputGuard {
public:
    /// Throws Failure (InternalError) if standard output cannot be redirected.
    StandardOutputGuard();
    ~StandardOutputGuard();
    StandardOutputGuard(const StandardOutputGuard&) = delete;
    StandardOutputGuard& operator=(const StandardOutputGuard&) = delete;

private:
    int mOriginal; // negative: standard output is closed
};

} // namespace plugins
