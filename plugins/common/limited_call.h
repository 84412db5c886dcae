// SPDX-License-Identifier: MIT
#pragma once

#include "failure.h"

#include <chrono>
#include <future>
#include <thread>
#include <utility>

namespace plugins {

/// Calls @p aWork in another thread; returns its result, or throws its exception. For functions
/// that cannot be interrupted. Throws Failure (TimedOut) with @p aMessage if the call has not ended
/// at @p aEnd; the thread then continues until the process ends. Therefore the plugin must be
/// linked to stay mapped, and @p aWork must own everything that it uses.
template <typename Work>
auto callUntil(std::chrono::steady_clock::time_point aEnd, const char* aMessage, Work aWork) {
    std::packaged_task<decltype(aWork())()> task(std::move(aWork));
    auto result = task.get_future();
    std::thread thread(std::move(task));
    if (result.wait_until(aEnd) != std::future_status::ready) {
        thread.detach();
        throw Failure(ErrorCode::TimedOut, aMessage);
    }
    thread.join();
    return result.get();
}

} // namespace plugins
