// SPDX-License-Identifier: MIT
#pragma once

#include "check/check_list.h"
#include "check/output_watch.h"

#include <chrono>
#include <functional>

/// Runs checks of one plugin in child processes.
class ChildRunner {
public:
    using TimeObserver = std::function<void(const Check&, std::chrono::seconds)>;

    /// @p aTimeLimit applies to each check. @p aObserver is called about once a second.
    ChildRunner(const char* aLibraryName, std::chrono::seconds aTimeLimit, TimeObserver aObserver)
        : mLibraryName(aLibraryName), mTimeLimit(aTimeLimit), mObserver(std::move(aObserver)) {}

    /// Runs a check with @p aRequest as the typical request. Throws std::runtime_error if no
    /// process can be started.
    [[nodiscard]] Outcome run(const Check& aCheck, const vexil::JsonValue& aRequest);

    /// The outcome for the standard output of all checks so far.
    [[nodiscard]] Outcome getOutputOutcome() const { return mOutputWatch.getOutcome(); }

private:
    const char* mLibraryName;
    std::chrono::seconds mTimeLimit;
    TimeObserver mObserver;
    OutputWatch mOutputWatch;
};
