#pragma once

#include "certbridge/name_value_list.h"
#include "check/check_runner.h"

#include <string>
#include <vector>

/// Whether no check failed.
bool isPassed(const std::vector<CheckResult>& aResults);

/// One line of the report for people, and one below it if there is more to say.
std::string makeLine(const CheckResult& aResult, bool aIsColoured);

/// The last line of that report.
std::string makeSummary(const std::vector<CheckResult>& aResults);

/// The report for machines:
///     {"library":"a.so","passed":true,
///      "checks":[{"id":"load","description":"...","outcome":"passed","detail":""}]}
/// with "passed", "failed" or "skipped" as the outcome.
ValueHolder makeJsonReport(const char* aLibraryName, const std::vector<CheckResult>& aResults);
