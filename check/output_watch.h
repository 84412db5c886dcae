// SPDX-License-Identifier: MIT
#pragma once

#include "check/outcome.h"

#include <string>

/// Collects the findings of all checks about standard output.
class OutputWatch {
public:
    /// Examines the output of the check @p aId. @p aChange is the change of the stream, if any. The
    /// output of a check that has not finished lacks the marker.
    void examine(const char* aId, std::string aOutput, bool aIsFinished,
                 const std::string& aChange);

    [[nodiscard]] Outcome getOutcome() const;

    static constexpr std::size_t maxOutput = 65536; ///< bytes kept of the output of a check

private:
    bool mIsUsed = false;
    std::string mFault;
};
