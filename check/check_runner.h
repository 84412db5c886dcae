// SPDX-License-Identifier: MIT
#pragma once

#include "check/check_list.h"
#include "check/options.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

/// A check and its outcome.
struct CheckResult {
    const Check* check;
    Outcome outcome;
    std::chrono::milliseconds duration;
};

/// The results for one plugin.
struct PluginResults {
    const char* libraryName; ///< as on the command line
    std::vector<CheckResult> checks;
};

/// Receives the results as soon as they are available.
class CheckObserver {
public:
    virtual ~CheckObserver() = default;
    /// A check has been running for @p aTime; called about once a second.
    virtual void showProgress(const Check& aCheck, std::chrono::seconds aTime) = 0;
    virtual void addResult(const char* aLibraryName, const CheckResult& aResult) = 0;
};

/// Runs the selected checks on a plugin, each in a separate process or, if the options ask for it,
/// all in this one. Throws std::runtime_error if no process can be started.
[[nodiscard]] PluginResults runChecks(const Options& aOptions, const char* aLibraryName,
                                      CheckObserver& aObserver);
