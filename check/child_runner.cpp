// SPDX-License-Identifier: MIT
#include "check/child_runner.h"

#include "check/channel.h"
#include "check/child.h"
#include "check/platform/child_process.h"
#include "vexil/json/json_writer.h"

#include <string>

using Clock = std::chrono::steady_clock;

namespace {

struct ChildEnd {
    std::string output;
    std::string fault; // empty if it ended with status 0 and in time
};

// Lets the child run until it ends or its time is up.
ChildEnd watch(ChildProcess& aChild, std::chrono::seconds aTimeLimit,
               const std::function<void(std::chrono::seconds)>& aObserver) {
    using std::chrono::seconds;
    constexpr std::chrono::milliseconds pause{5};
    const auto start = Clock::now();
    seconds shown{0};
    ChildEnd end;
    for (bool hasEnded = false; !hasEnded;) {
        hasEnded = aChild.waitForEnd(pause);
        aChild.readOutput(end.output);
        if (end.output.size() > OutputWatch::maxOutput) end.output.resize(OutputWatch::maxOutput);
        const auto elapsed = std::chrono::duration_cast<seconds>(Clock::now() - start);
        if (hasEnded) {
            end.fault = aChild.describeEnd();
        } else if (elapsed >= aTimeLimit) {
            end.fault = "did not end within " + std::to_string(aTimeLimit.count()) +
                        " s; --timeout allows more";
            break;
        } else if (elapsed > shown) {
            aObserver(shown = elapsed);
        }
    }
    return end;
}

Outcome makeOutcome(const std::optional<ChildResult>& aResult, const ChildEnd& aEnd,
                    const std::string& aProgress) {
    if (!aResult) {
        const auto fault = aEnd.fault.empty() ? "ended the process with status 0" : aEnd.fault;
        return {Outcome::Failed, aProgress.empty() ? fault : fault + ", " + aProgress};
    }
    const Outcome& outcome = aResult->outcome;
    if (outcome.kind == Outcome::Failed && !aProgress.empty()) {
        return {outcome.kind, outcome.detail + ", " + aProgress};
    }
    if (outcome.kind != Outcome::Passed || aEnd.fault.empty()) return outcome;
    return {Outcome::Failed, aEnd.fault + ", after its reply was read"};
}

} // namespace

Outcome ChildRunner::run(const Check& aCheck, const vexil::JsonValue& aRequest) {
    const Channel channel(mLibraryName, vexil::writeJsonText(aRequest));
    ChildProcess child(runCheckOption + std::string(aCheck.id), channelOption, channel.getMemory());
    const ChildEnd end = watch(child, mTimeLimit, [&](std::chrono::seconds aTime) {
        if (mObserver) mObserver(aCheck, aTime);
    });
    const auto result = ChildResult::parse(channel.read(Channel::Result));
    mOutputWatch.examine(aCheck.id, end.output, result.has_value(),
                         result ? result->outputChange : "");
    return makeOutcome(result, end, channel.read(Channel::Progress));
}
