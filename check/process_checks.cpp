// SPDX-License-Identifier: MIT
#include "check/check_operations.h"
#include "check/platform/process_state.h"

#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

namespace {

// A thread that is about to end, or to run code that has been unloaded, does so within this time.
constexpr std::chrono::milliseconds settlingTime{100};

std::vector<std::string> findRunningWork(const RunningWork& aBefore) {
    std::this_thread::sleep_for(settlingTime);
    return RunningWork::inspect().describeAddedSince(aBefore);
}

std::string join(const std::vector<std::string>& aTexts) {
    std::string result;
    for (const auto& text : aTexts) result += (result.empty() ? "" : ", ") + text;
    return result;
}

// Returns whether the library has left the process.
bool unload(Subject& aSubject) {
    const void* const address = aSubject.library->getSymbol("GetPlugin");
    aSubject.library.reset();
    return !isMapped(address);
}

} // namespace

// Threads, timers and children of a library that cannot be unloaded do no harm.
std::string checkAfterEffects(Subject& aSubject) {
    const RunningWork before = RunningWork::inspect();
    GuardedPlugin& plugin = openPlugin(aSubject);
    sendRequest(plugin, aSubject.typicalRequest);
    const std::string& change = plugin.getFloatingPointChange();
    if (!change.empty()) throw CheckFailure("after the call, " + change);
    const auto work = findRunningWork(before);
    if (work.empty()) return {};
    if (unload(aSubject)) throw CheckFailure("after the call, " + join(work));
    return "warning: after the call, " + join(work) + "; the library stays mapped";
}

std::string checkUnloading(Subject& aSubject) {
    const std::string note = checkTypicalRequest(aSubject);
    const bool isGone = unload(aSubject);
    std::this_thread::sleep_for(settlingTime);
    return isGone ? note : "warning: the library stays mapped after it has been unloaded";
}

std::string checkLowMemory(Subject& aSubject) {
    constexpr std::size_t kibibyte = 1024;
    GuardedPlugin& plugin = openPlugin(aSubject);
    // Ascending: a call that succeeds may leave memory for the next one.
    for (const std::size_t size : {0U, 64U, 256U, 1024U, 4096U, 16384U, 65536U}) {
        aSubject.setProgress("with " + std::to_string(size) + " KiB of memory left");
        plugin.limitMemory(size * kibibyte);
        sendRequest(plugin, aSubject.typicalRequest);
    }
    return {};
}
