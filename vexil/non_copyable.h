// SPDX-License-Identifier: MIT
#pragma once

namespace vexil {

/// Empty base class that forbids copy construction and copy assignment. Derive from it privately.
class NonCopyable {
public:
    NonCopyable(const NonCopyable&) = delete;
    NonCopyable& operator=(const NonCopyable&) = delete;

protected:
    NonCopyable() = default;
    ~NonCopyable() = default;
};

} // namespace vexil
