// SPDX-License-Identifier: MIT
#pragma once

#include "check/platform/shared_memory.h"
#include "vexil/non_copyable.h"

#include <chrono>
#include <memory>
#include <string>

/// This program, started once more to run one check. Its standard input is empty, its standard
/// output is a pipe to this process, and its standard error is that of this process. It ends no
/// later than this process, however this process ends, and so do its own children, except those
/// that a plugin detaches from it while this process is being killed.
class ChildProcess : private vexil::NonCopyable {
public:
    /// Starts it with two arguments: @p aOption, and @p aMemoryOption followed by the name of
    /// @p aMemory, which it inherits. Throws std::runtime_error.
    ChildProcess(const std::string& aOption, const std::string& aMemoryOption,
                 const SharedMemory& aMemory);
    /// Ends it and its children if they are still running.
    ~ChildProcess();

    /// Waits until it has ended or has written output, and @p aTime at most. Returns whether it has
    /// ended; its own children have been ended as well then. Throws std::runtime_error.
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds aTime);

    /// Appends the available output; never waits.
    void readOutput(std::string& aOutput);

    /// Describes how it ended; empty for status 0. Only after waitForEnd() has returned true.
    [[nodiscard]] std::string describeEnd() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// In a child: arranges that the system ends this process together with its parent.
void endWithParent();

/// Ends this process with status 0. No destructor and no code of a library that is loaded runs.
[[noreturn]] void endAtOnce();
