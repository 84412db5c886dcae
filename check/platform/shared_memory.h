// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/non_copyable.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>

/// A block of memory shared with a child process. Unlike a pipe it stays usable if a plugin closes
/// descriptors or handles that are not its own.
class SharedMemory : private vexil::NonCopyable {
public:
    /// Allocates at least @p aSize bytes, all zero. Throws std::runtime_error.
    explicit SharedMemory(std::size_t aSize);
    /// In a child: maps the memory that the parent has passed. Throws std::runtime_error.
    explicit SharedMemory(const std::string& aName);
    ~SharedMemory();

    [[nodiscard]] std::span<char> getBytes() const;

    /// The argument of the other constructor, valid in a child that has inherited the memory.
    [[nodiscard]] std::string getName() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};
