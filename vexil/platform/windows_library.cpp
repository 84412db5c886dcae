// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1 // as libstdc++ defines it
#include <windows.h>

namespace vexil::platform {
namespace {

static_assert(sizeof(wchar_t) == sizeof(std::uint16_t));

long lastError() {
    return static_cast<long>(GetLastError());
}

/// During its lifetime, the system reports a missing disk or library to this thread as an error
/// number instead of a message box.
class MessageBoxBlocker {
public:
    MessageBoxBlocker() {
        SetThreadErrorMode(GetThreadErrorMode() | SEM_FAILCRITICALERRORS, &mBefore);
    }
    ~MessageBoxBlocker() { SetThreadErrorMode(mBefore, nullptr); }
    MessageBoxBlocker(const MessageBoxBlocker&) = delete;
    MessageBoxBlocker& operator=(const MessageBoxBlocker&) = delete;

private:
    DWORD mBefore = 0;
};

} // namespace

ModuleHandle openModule(const char* aFileName, long& aError) {
    if (*aFileName == '\0') {
        aError = errorModuleNotFound;
        return nullptr;
    }
    const MessageBoxBlocker blocker;
    const HMODULE module = LoadLibraryA(aFileName);
    if (!module) aError = lastError(); // before the blocker's destructor, which may overwrite it
    return module;
}

std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest, std::uint32_t aSize,
                                long& aError) {
    const auto length =
        GetModuleFileNameW(static_cast<HMODULE>(aModule), reinterpret_cast<wchar_t*>(aDest), aSize);
    if (length == 0) aError = lastError();
    return length;
}

void* findSymbol(ModuleHandle aModule, const char* aName, long& aError) {
    const auto address = GetProcAddress(static_cast<HMODULE>(aModule), aName);
    if (!address) aError = lastError();
    return reinterpret_cast<void*>(address);
}

void closeModule(ModuleHandle aModule) {
    FreeLibrary(static_cast<HMODULE>(aModule));
}

} // namespace vexil::platform
