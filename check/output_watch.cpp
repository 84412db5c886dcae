// SPDX-License-Identifier: MIT
#include "check/output_watch.h"

#include "check/child.h"
#include "check/readable_text.h"

#include <cstring>

void OutputWatch::examine(const char* aId, std::string aOutput, bool aIsFinished,
                          const std::string& aChange) {
    mIsUsed = true;
    std::erase(aOutput, '\r'); // added in text mode on Windows
    const auto marker = aOutput.find(outputMarker);
    const bool isLost = aIsFinished && marker == aOutput.npos && aOutput.size() < maxOutput;
    if (marker != aOutput.npos) aOutput.erase(marker, std::strlen(outputMarker));
    std::string change = aChange;
    if (!aOutput.empty()) change = "written to: " + quotedExcerpt(aOutput);
    if (change.empty() && isLost) change = "closed or redirected";
    if (change.empty() || !mFault.empty()) return;
    mFault = "in the check " + std::string(aId) + " standard output was " + change +
             "; it belongs to certbridge, messages go to standard error";
}

Outcome OutputWatch::getOutcome() const {
    if (!mIsUsed) return {Outcome::Skipped, "needs other checks in separate processes"};
    return {mFault.empty() ? Outcome::Passed : Outcome::Failed, mFault};
}
