// SPDX-License-Identifier: MIT
#pragma once

#include "check/outcome.h"
#include "check/subject.h"

#include <span>
#include <string>
#include <string_view>

/// A requirement that a plugin must meet, and the way to verify it.
struct Check {
    enum Kind {
        Ordinary,
        ExaminesEnd,    ///< examines the end of the process, and needs a separate one
        WatchesOutput,  ///< examines the standard output of all other checks
        RandomRequests, ///< only on demand: performed once for each random request
        LowMemory,      ///< only on demand
    };

    const char* id;          ///< for programs; never changes
    const char* description; ///< the requirement, as a statement
    /// Starts with a library that is not loaded. Throws CheckFailure, or returns a note for the
    /// report. Null for WatchesOutput.
    std::string (*run)(Subject& aSubject);
    const char* needs = nullptr;  ///< id of the check without which this one is meaningless
    const char* advice = nullptr; ///< follows the text of a failure
    Kind kind = Ordinary;
};

/// All checks, in the order of the report.
[[nodiscard]] std::span<const Check> getChecks();

/// The check with this id; null if there is none.
[[nodiscard]] const Check* findCheck(std::string_view aId);

/// Runs a check that has an operation. An exception of the checker itself makes the outcome
/// inconclusive. The library may stay loaded in @p aSubject.
[[nodiscard]] Outcome performCheck(const Check& aCheck, Subject& aSubject);
