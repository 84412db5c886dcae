#include "check/check_runner.h"

#include "check/platform/platform.h"
#include "check/readable_text.h"
#include "check/sample_requests.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

using Clock = std::chrono::steady_clock;

namespace {

// A child writes it to standard output behind the plugin's back: what else comes is the plugin's,
// and if it does not come, the plugin has done something to the stream.
constexpr std::string_view marker = "certbridge-check was here\n";

// How the outcome that a child sends begins; its detail follows.
constexpr char passedMark = '+';
constexpr char failedMark = '-';

constexpr std::size_t largestOutput = 65536; // kept of what a child writes

struct ChildReport {
    std::string outcome; // a mark and the detail
    std::string output;
    std::string end; // empty if it ended well
};

// Lets the child run until it ends or its time is over.
ChildReport watch(ChildProcess& aChild, std::chrono::seconds aTimeLimit) {
    constexpr std::chrono::milliseconds pause{5};
    const auto deadline = Clock::now() + aTimeLimit;
    ChildReport report;
    bool hasEnded = false;
    do {
        hasEnded = aChild.waitForEnd(pause);
        aChild.read(report.outcome, report.output);
        if (report.output.size() > largestOutput) report.output.resize(largestOutput);
    } while (!hasEnded && Clock::now() < deadline);

    report.end = hasEnded ? aChild.describeEnd()
                          : "did not end within " + std::to_string(aTimeLimit.count()) +
                                " s; --timeout allows more";
    return report;
}

Outcome outcomeOf(const ChildReport& aReport) {
    const auto& [outcome, output, end] = aReport;
    if (outcome.empty()) {
        return {Outcome::Failed, end.empty() ? "ended the process with status 0" : end};
    }
    auto detail = readableText(outcome.substr(1)); // a plugin may write to wherever it likes
    if (outcome[0] != passedMark) return {Outcome::Failed, detail};
    if (!end.empty()) return {Outcome::Failed, end + ", after its reply was read"};
    return {Outcome::Passed, detail};
}

// What all checks together tell about standard output.
class OutputWatch {
public:
    void look(const char* aId, const ChildReport& aReport) {
        auto text = aReport.output;
        std::erase(text, '\r');
        const auto place = text.find(marker);
        const bool isLost =
            place == text.npos && !aReport.outcome.empty() && text.size() < largestOutput;
        if (place != text.npos) text.erase(place, marker.size());
        mIsUsed = true;
        if (!mFault.empty() || (text.empty() && !isLost)) return;
        const auto what = text.empty() ? std::string("closed or redirected")
                                       : "written to: " + quotedExcerpt(text);
        mFault = "in the check " + std::string(aId) + " standard output was " + what +
                 "; it belongs to certbridge, messages go to standard error";
    }

    Outcome getOutcome() const {
        if (!mIsUsed) return {Outcome::Skipped, "needs processes of its own"};
        return {mFault.empty() ? Outcome::Passed : Outcome::Failed, mFault};
    }

private:
    bool mIsUsed = false;
    std::string mFault;
};

class Runner {
public:
    explicit Runner(const Options& aOptions) : mOptions(aOptions) {}

    Outcome run(const Check& aCheck) {
        if (aCheck.needs && mPassed.count(aCheck.needs) == 0) {
            return {Outcome::Skipped, std::string("needs ") + aCheck.needs};
        }
        auto outcome = runUnconditionally(aCheck);
        if (outcome.kind == Outcome::Passed) mPassed.insert(aCheck.id);
        return outcome;
    }

private:
    Outcome runUnconditionally(const Check& aCheck) {
        if (!aCheck.run) return mOutputWatch.getOutcome();
        if (mOptions.inProcess) return runHere(aCheck);
        ChildProcess child(mOptions.arguments, runCheckOption + std::string(aCheck.id));
        const auto report = watch(child, mOptions.timeLimit);
        mOutputWatch.look(aCheck.id, report);
        return outcomeOf(report);
    }

    Outcome runHere(const Check& aCheck) const {
        if (aCheck.isAboutTheEnd) return {Outcome::Skipped, "needs a process of its own"};
        Subject subject{mOptions.libraryName, *mOptions.typicalRequest};
        return performCheck(aCheck, subject);
    }

    const Options& mOptions;
    OutputWatch mOutputWatch;
    std::set<std::string> mPassed; // ids of checks
};

} // namespace

std::vector<CheckResult> runChecks(const Options& aOptions,
                                   const std::function<void(const CheckResult&)>& aReport) {
    Runner runner(aOptions);
    std::vector<CheckResult> results;
    for (const Check& check : getChecks()) {
        results.push_back({&check, runner.run(check)});
        aReport(results.back());
    }
    return results;
}

void runAsChild(const Options& aOptions) {
    Subject subject{aOptions.libraryName, *aOptions.typicalRequest};
    const Outcome outcome = performCheck(*aOptions.check, subject);
    std::fwrite(marker.data(), 1, marker.size(), stdout);
    std::fflush(stdout);
    const char mark = outcome.kind == Outcome::Passed ? passedMark : failedMark;
    sendOutcome(aOptions.outcomePlace, mark + outcome.detail);
    // Neither way lets the subject go: the library stays loaded unless the check has unloaded it.
    if (!aOptions.check->isAboutTheEnd) std::_Exit(EXIT_SUCCESS);
    std::exit(EXIT_SUCCESS);
}
