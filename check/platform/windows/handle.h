// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/non_copyable.h"

#include <stdexcept>
#include <string>

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1 // as libstdc++ defines it
#include <windows.h>

/// Throws std::runtime_error with the number of the last error.
[[noreturn]] inline void throwLastError(const std::string& aProblem) {
    const DWORD error = GetLastError();
    throw std::runtime_error(aProblem + ", error " + std::to_string(error));
}

/// Owns a handle of the system; null if there is none.
class Handle : private vexil::NonCopyable {
public:
    ~Handle() { reset(nullptr); }
    [[nodiscard]] HANDLE get() const { return mHandle; }
    void reset(HANDLE aHandle) {
        if (mHandle) CloseHandle(mHandle);
        mHandle = aHandle;
    }

private:
    HANDLE mHandle = nullptr;
};
