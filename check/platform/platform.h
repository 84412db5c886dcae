#pragma once

#include "vexil/non_copyable.h"

#include <chrono>
#include <memory>
#include <string>

// What the checker asks of the operating system beyond vexil/platform. One of system_posix.cpp and
// system_windows.cpp defines it.

/// Whether standard output is a terminal that shows colours.
bool isColourTerminal();

/// The option by which a child learns where to send its outcome.
inline constexpr const char* outcomeOption = "--outcome=";

/// This program, running once more. Its standard input is empty, its standard error is ours.
class ChildProcess : private vexil::NonCopyable {
public:
    /// Starts it with @p aOption, outcomeOption and its value, and then the arguments in
    /// @p aArguments, the argv of this process. Throws std::runtime_error.
    ChildProcess(char** aArguments, const std::string& aOption);
    /// Ends it if it still runs.
    ~ChildProcess();

    /// Waits until it has ended or there may be something to read, and @p aTime at most. Returns
    /// whether it has ended.
    bool waitForEnd(std::chrono::milliseconds aTime);

    /// Appends what it has sent and what it has written to standard output; never waits.
    void read(std::string& aOutcome, std::string& aOutput);

    /// How it ended, in words; empty for status 0. Only after waitForEnd() returned true.
    std::string describeEnd() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// In the child: sends @p aText to where the value of outcomeOption says.
void sendOutcome(const std::string& aPlace, const std::string& aText);
