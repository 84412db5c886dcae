// SPDX-License-Identifier: MIT
#include "check/child.h"

#include "check/channel.h"
#include "check/platform/child_process.h"
#include "check/platform/process_state.h"
#include "vexil/json/json_parser.h"
#include "vexil/platform/platform.h"
#include "vexil/streams.h"

#include <cstdlib>
#include <exception>

namespace {

constexpr char separator = '\0'; // in no text of a result

// Ends the process before the subject is destroyed: the library stays loaded unless the check has
// unloaded it.
[[noreturn]] void runAndEnd(const Check& aCheck, Channel& aChannel) {
    const std::string libraryName = aChannel.read(Channel::LibraryName);
    const std::string requestText = aChannel.read(Channel::Request);
    const ValueHolder request = vexil::parseJsonText(vexil::ByteRange(requestText));
    Subject subject(libraryName.c_str(), *request,
                    [&](const std::string& aStep) { aChannel.write(Channel::Progress, aStep); });
    const OutputState before = OutputState::inspect();
    ChildResult result{performCheck(aCheck, subject), {}};
    result.outputChange = OutputState::inspect().describeChangeSince(before);
    if (!vexil::platform::writeStandardOutput(outputMarker) && result.outputChange.empty()) {
        result.outputChange = "closed";
    }
    aChannel.write(Channel::Result, result.serialize());
    if (aCheck.kind != Check::ExaminesEnd) endAtOnce();
    std::exit(EXIT_SUCCESS);
}

} // namespace

std::string ChildResult::serialize() const {
    const std::string text(1, static_cast<char>('0' + outcome.kind));
    return text + outputChange + separator + outcome.detail;
}

std::optional<ChildResult> ChildResult::parse(const std::string& aText) {
    const auto end = aText.find(separator);
    if (end == aText.npos || aText[0] < '0' || aText[0] > '0' + Outcome::Inconclusive) {
        return std::nullopt;
    }
    const auto kind = static_cast<Outcome::Kind>(aText[0] - '0');
    return ChildResult{{kind, aText.substr(end + 1)}, aText.substr(1, end - 1)};
}

void runAsChild(const Options& aOptions) {
    endWithParent();
    Channel channel(aOptions.channelName);
    try {
        runAndEnd(*aOptions.check, channel);
    } catch (const std::exception& exception) {
        const ChildResult result{{Outcome::Inconclusive, exception.what()}, {}};
        channel.write(Channel::Result, result.serialize());
        endAtOnce();
    }
}
