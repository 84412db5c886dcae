// SPDX-License-Identifier: MIT
#include "check/platform/process_state.h"

#include <cfenv>
#include <cfloat>

std::vector<std::string> RunningWork::describeAddedSince(const RunningWork& aBefore) const {
    std::vector<std::string> added;
    if (threads > aBefore.threads) added.emplace_back("a thread is still running");
    if (hasChildren && !aBefore.hasChildren) {
        added.emplace_back("a child process has not been waited for");
    }
    if (hasTimer && !aBefore.hasTimer) added.emplace_back("a timer is still armed");
    return added;
}

FloatingPointState FloatingPointState::inspect() {
    FloatingPointState state{hasFloatingPointTraps(), std::fegetround(), false, false};
    if (state.isTrapped) return state; // the operations below could trap
    const volatile double smallest = DBL_MIN;
    const volatile double subnormal = smallest / 2;
    state.isFlushed = subnormal == 0;
    const volatile long double epsilon = LDBL_EPSILON;
    const volatile long double sum = 1 + epsilon;
    state.isReduced = sum == 1;
    return state;
}

std::string FloatingPointState::describeChangeSince(const FloatingPointState& aBefore) const {
    if (isTrapped != aBefore.isTrapped) return "floating-point exceptions are trapped";
    if (rounding != aBefore.rounding) return "the rounding mode is another one";
    if (isFlushed != aBefore.isFlushed) return "subnormal numbers are flushed to zero";
    if (isReduced != aBefore.isReduced) return "the floating-point precision is another one";
    return {};
}

std::string OutputState::describeChangeSince(const OutputState& aBefore) const {
    if (device == 0 && file == 0) return "closed";
    if (device != aBefore.device || file != aBefore.file) return "closed or redirected";
    if (flags != aBefore.flags) return "given other flags, which other processes share";
    if (isWide && !aBefore.isWide) return "made wide-oriented";
    return {};
}
