#pragma once

#include "check/options.h"
#include "check/plugin_checks.h"

#include <functional>
#include <vector>

/// A check and how it ended.
struct CheckResult {
    const Check* check;
    Outcome outcome;
};

/// Runs every check, each in a process of its own or, if the options say so, all in this one, and
/// hands each result over as soon as it is there. Throws std::runtime_error if no process can be
/// started.
std::vector<CheckResult> runChecks(const Options& aOptions,
                                   const std::function<void(const CheckResult&)>& aReport);

/// In a child: runs the one check that the options name, sends its outcome, and ends the process as
/// the check wants it.
[[noreturn]] void runAsChild(const Options& aOptions);
