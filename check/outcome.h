// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// The outcome of a check.
struct Outcome {
    enum Kind {
        Passed,
        Failed,
        Skipped,
        Inconclusive, ///< the checker itself has failed, most likely for lack of memory
    };

    Kind kind = Passed;
    std::string detail; ///< UTF-8, one line: the fault and its cure; a note; or empty
};
