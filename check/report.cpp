// SPDX-License-Identifier: MIT
#include "check/report.h"

#include <algorithm>
#include <utility>

std::size_t countOutcomes(const PluginResults& aResults, Outcome::Kind aKind) {
    const auto& checks = aResults.checks;
    return static_cast<std::size_t>(
        std::count_if(checks.begin(), checks.end(),
                      [=](const CheckResult& aResult) { return aResult.outcome.kind == aKind; }));
}

bool isPassed(const PluginResults& aResults) {
    return countOutcomes(aResults, Outcome::Failed) +
               countOutcomes(aResults, Outcome::Inconclusive) ==
           0;
}

std::unique_ptr<Report> makeReport(const Options& aOptions, bool aIsTerminal,
                                   Report::Writer aWrite) {
    switch (aOptions.format) {
    case Options::Json:
        return makeJsonReport(std::move(aWrite));
    case Options::JUnit:
        return makeJUnitReport(std::move(aWrite));
    case Options::Tap:
        return makeTapReport(std::move(aWrite));
    default:
        return makeTextReport(aOptions, aIsTerminal, std::move(aWrite));
    }
}
