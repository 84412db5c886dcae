// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// State of this process that a plugin may change, and that certbridge depends on.

/// The threads, child processes and timers of this process.
struct RunningWork {
    std::size_t threads;
    bool hasChildren;
    bool hasTimer; ///< always false on Windows

    /// The present state.
    [[nodiscard]] static RunningWork inspect();

    /// Describes the work that was not running @p aBefore, one entry for each kind.
    [[nodiscard]] std::vector<std::string> describeAddedSince(const RunningWork& aBefore) const;
};

/// Whether an exception of the floating-point unit raises a signal in this thread.
[[nodiscard]] bool hasFloatingPointTraps();

/// The floating-point environment of this thread.
struct FloatingPointState {
    bool isTrapped; ///< an exception raises a signal; the last two members are then unknown
    int rounding;   ///< as returned by fegetround()
    bool isFlushed; ///< subnormal results become zero
    bool isReduced; ///< long double has a lower precision than its type

    [[nodiscard]] static FloatingPointState inspect();

    /// Describes how this state differs from @p aBefore; empty if it does not.
    [[nodiscard]] std::string describeChangeSince(const FloatingPointState& aBefore) const;
};

/// The standard output stream and the file to which it leads.
struct OutputState {
    std::uint64_t device, file; ///< identify the file; zero if there is none
    int flags;
    bool isWide; ///< a wide function has been used on the stream

    [[nodiscard]] static OutputState inspect();

    /// Describes how this state differs from @p aBefore; empty if it does not.
    [[nodiscard]] std::string describeChangeSince(const OutputState& aBefore) const;
};

/// Whether standard output is a terminal that shows colours and interprets cursor movements.
[[nodiscard]] bool isColourTerminal();

/// Whether @p aAddress belongs to a library that is mapped into this process.
[[nodiscard]] bool isMapped(const void* aAddress);

/// Describes why the library does not load, as far as the system reports it: the missing library or
/// symbol. Empty if that is not known. @p aLibraryName is in the active code page.
[[nodiscard]] std::string describeLoadFailure(const char* aLibraryName);

/// Whether MemoryLimit has an effect on this system.
[[nodiscard]] bool canLimitMemory();

/// During its lifetime, this process can allocate at most a given number of bytes from the system.
class MemoryLimit {
public:
    explicit MemoryLimit(std::size_t aBytes);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

private:
    std::uint64_t mPrevious;
};
