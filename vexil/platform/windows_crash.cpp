// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <csignal>

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1 // as libstdc++ defines it
#include <windows.h>

namespace vexil::platform {
namespace {

UINT crashStatus = 0;

// Flushes and unloads nothing: after a crash, neither memory nor locks can be relied on.
void endProcess() {
    TerminateProcess(GetCurrentProcess(), crashStatus);
}

LONG WINAPI onUnhandledException(EXCEPTION_POINTERS*) {
    endProcess();
    return EXCEPTION_EXECUTE_HANDLER;
}

// A plugin's own C++ runtime calls abort() for an exception that leaves the plugin.
void onAbort(int) {
    endProcess();
}

} // namespace

void setCrashStatus(int aStatus) {
    crashStatus = static_cast<UINT>(aStatus);
    SetErrorMode(GetErrorMode() | SEM_NOGPFAULTERRORBOX);
    SetUnhandledExceptionFilter(onUnhandledException);
    std::signal(SIGABRT, onAbort);
}

} // namespace vexil::platform
