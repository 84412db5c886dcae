// SPDX-License-Identifier: MIT
#include "check/check_runner.h"

#include "check/child_runner.h"
#include "check/platform/process_state.h"
#include "check/random_request.h"
#include "check/request_shrinker.h"
#include "vexil/json/json_writer.h"

#include <set>
#include <string_view>
#include <utility>

using vexil::JsonValue;

namespace {

class Runner {
public:
    Runner(const Options& aOptions, const char* aLibraryName, CheckObserver& aObserver)
        : mOptions(aOptions), mLibraryName(aLibraryName),
          mChildRunner(aLibraryName, aOptions.timeLimit,
                       [&](const Check& aCheck, std::chrono::seconds aTime) {
                           aObserver.showProgress(aCheck, aTime);
                       }) {}

    Outcome run(const Check& aCheck) {
        // A check that is not selected counts as passed.
        if (aCheck.needs && mOptions.isSelected(*findCheck(aCheck.needs)) &&
            mPassed.count(aCheck.needs) == 0) {
            return {Outcome::Skipped, std::string("needs ") + aCheck.needs};
        }
        Outcome outcome = runUnconditionally(aCheck);
        if (outcome.kind == Outcome::Passed) mPassed.insert(aCheck.id);
        return outcome;
    }

private:
    Outcome runUnconditionally(const Check& aCheck) {
        switch (aCheck.kind) {
        case Check::WatchesOutput:
            return mChildRunner.getOutputOutcome();
        case Check::RandomRequests:
            return runRandomRequests(aCheck);
        case Check::LowMemory:
            if (!canLimitMemory()) return {Outcome::Skipped, "not available on this system"};
            break;
        default:
            break;
        }
        return runRepeatedly(aCheck);
    }

    Outcome runRepeatedly(const Check& aCheck) {
        Outcome outcome;
        for (std::uint32_t run = 1; run <= mOptions.repetitions; ++run) {
            outcome = runOnce(aCheck, *mOptions.typicalRequest);
            if (outcome.kind == Outcome::Passed) continue;
            if (run > 1) outcome.detail += ", in run " + std::to_string(run);
            break;
        }
        return outcome;
    }

    Outcome runRandomRequests(const Check& aCheck) {
        const std::string seed = "--seed " + std::to_string(mOptions.seed);
        for (std::uint32_t number = 1; number <= mOptions.randomRequests; ++number) {
            const ValueHolder request = makeRandomRequest(mOptions.seed, number);
            Outcome outcome = runOnce(aCheck, *request);
            if (outcome.kind == Outcome::Passed) continue;
            if (outcome.kind == Outcome::Failed) {
                outcome.detail = describeSmallest(aCheck, *request) + "; request " +
                                 std::to_string(number) + " of " + seed;
            }
            return outcome;
        }
        return {Outcome::Passed, std::to_string(mOptions.randomRequests) + " requests, " + seed};
    }

    std::string describeSmallest(const Check& aCheck, const JsonValue& aRequest) {
        constexpr int maxTests = 500;
        const ValueHolder smallest =
            shrinkRequest(aRequest, maxTests, [&](const JsonValue& aCandidate) {
                return runOnce(aCheck, aCandidate).kind == Outcome::Failed;
            });
        return runOnce(aCheck, *smallest).detail + "; the smallest failing request is " +
               vexil::writeJsonText(*smallest);
    }

    Outcome runOnce(const Check& aCheck, const JsonValue& aRequest) {
        if (!mOptions.inProcess) return mChildRunner.run(aCheck, aRequest);
        if (aCheck.kind == Check::ExaminesEnd) {
            return {Outcome::Skipped, "needs a separate process"};
        }
        Subject subject(mLibraryName, aRequest, [](const std::string&) {});
        return performCheck(aCheck, subject);
    }

    const Options& mOptions;
    const char* mLibraryName;
    ChildRunner mChildRunner;
    std::set<std::string_view> mPassed; // ids of checks
};

} // namespace

PluginResults runChecks(const Options& aOptions, const char* aLibraryName,
                        CheckObserver& aObserver) {
    using std::chrono::steady_clock;
    Runner runner(aOptions, aLibraryName, aObserver);
    PluginResults results{aLibraryName, {}};
    for (const Check& check : getChecks()) {
        if (!aOptions.isSelected(check)) continue;
        const auto start = steady_clock::now();
        Outcome outcome = runner.run(check);
        const auto duration = steady_clock::now() - start;
        results.checks.push_back({&check, std::move(outcome),
                                  std::chrono::duration_cast<std::chrono::milliseconds>(duration)});
        aObserver.addResult(aLibraryName, results.checks.back());
    }
    return results;
}
