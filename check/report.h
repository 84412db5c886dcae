// SPDX-License-Identifier: MIT
#pragma once

#include "check/check_runner.h"
#include "check/options.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A report on plugins, written piece by piece.
class Report : public CheckObserver {
public:
    /// Writes a piece of the report; throws if that fails.
    using Writer = std::function<void(const std::string&)>;

    explicit Report(Writer aWrite) : write(std::move(aWrite)) {}
    void showProgress(const Check&, std::chrono::seconds) override {}
    void addResult(const char*, const CheckResult&) override {}
    /// Called before the first check of a plugin, and after the last one.
    virtual void beginPlugin(const char*) {}
    virtual void endPlugin(const PluginResults&) {}
    /// Called after the last plugin.
    virtual void finish(const std::vector<PluginResults>&) {}

protected:
    Writer write;
};

/// Makes the report in the format that the options name. @p aIsTerminal: colours and progress can
/// be shown.
[[nodiscard]] std::unique_ptr<Report> makeReport(const Options& aOptions, bool aIsTerminal,
                                                 Report::Writer aWrite);

// The formats.
[[nodiscard]] std::unique_ptr<Report> makeTextReport(const Options& aOptions, bool aIsTerminal,
                                                     Report::Writer aWrite);
[[nodiscard]] std::unique_ptr<Report> makeJsonReport(Report::Writer aWrite);
[[nodiscard]] std::unique_ptr<Report> makeJUnitReport(Report::Writer aWrite);
[[nodiscard]] std::unique_ptr<Report> makeTapReport(Report::Writer aWrite);

/// The number of checks with this outcome.
[[nodiscard]] std::size_t countOutcomes(const PluginResults& aResults, Outcome::Kind aKind);

/// Whether no check has failed or was inconclusive.
[[nodiscard]] bool isPassed(const PluginResults& aResults);
