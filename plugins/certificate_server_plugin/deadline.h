// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>

namespace plugins {

/// The time at which all work for a request must be done.
class Deadline {
public:
    using Clock = std::chrono::steady_clock;

    explicit Deadline(Clock::duration aTime) : mEnd(Clock::now() + aTime) {}

    Clock::time_point getEnd() const { return mEnd; }
    /// Returns the remaining time; zero if the deadline has passed.
    Clock::duration getRemaining() const {
        return std::max(mEnd - Clock::now(), Clock::duration::zero());
    }

private:
    Clock::time_point mEnd;
};

} // namespace plugins
