// SPDX-License-Identifier: MIT
#include "check/platform/child_process.h"

#include "check/platform/windows/handle.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>

namespace {

// No pipe contains more, so one call reads everything.
constexpr DWORD pipeSize = 65536;

// The child inherits the writer.
struct Pipe {
    Pipe() {
        HANDLE ends[2]{};
        if (!CreatePipe(&ends[0], &ends[1], nullptr, pipeSize)) throwLastError("no pipe");
        reader.reset(ends[0]);
        writer.reset(ends[1]);
        SetHandleInformation(writer.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }

    Handle reader, writer;
};

std::wstring getProgramName() {
    std::wstring name(32768, L'\0'); // the system's limit
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

// An empty input, which the child inherits.
HANDLE openNullDevice() {
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
    return CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                       OPEN_EXISTING, 0, nullptr);
}

// A job whose processes end when its last handle is closed, which the system does for a process
// that is terminated.
HANDLE createJob() {
    HANDLE const job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

struct ExceptionName {
    DWORD code;
    const char* name;
};

constexpr ExceptionName exceptionNames[] = {
    {0x80000003, "breakpoint"},
    {0xC0000005, "access violation"},
    {0xC000001D, "illegal instruction"},
    {0xC0000094, "integer division by zero"},
    {0xC0000096, "privileged instruction"},
    {0xC00000FD, "stack overflow"},
    {0xC0000374, "heap corruption"},
    {0xC0000409, "stack buffer overrun"},
    {0xE06D7363, "uncaught C++ exception"},
};

std::string describeException(DWORD aCode) {
    const auto found = std::find_if(std::begin(exceptionNames), std::end(exceptionNames),
                                    [=](const auto& aRow) { return aRow.code == aCode; });
    std::array<char, 32> number;
    std::snprintf(number.data(), number.size(), "exception 0x%08lX", aCode);
    if (found == std::end(exceptionNames)) return std::string("crashed: ") + number.data();
    return std::string("crashed: ") + found->name + " (" + number.data() + ')';
}

} // namespace

struct ChildProcess::State {
    Pipe output;
    Handle job, process;
};

ChildProcess::ChildProcess(const std::string& aOption, const std::string& aMemoryOption,
                           const SharedMemory& aMemory)
    : mState(std::make_unique<State>()) {
    const auto options = aOption + ' ' + aMemoryOption + aMemory.getName();
    auto line = L"certbridge-check " + std::wstring(options.begin(), options.end());

    // A crash is part of the report and must not open a dialog.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    Handle input;
    input.reset(openNullDevice());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = mState->output.writer.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    mState->job.reset(createJob());
    if (!CreateProcessW(getProgramName().c_str(), line.data(), nullptr, nullptr, TRUE,
                        CREATE_SUSPENDED, nullptr, nullptr, &startup, &process)) {
        throwLastError("cannot start a process for a check");
    }
    mState->process.reset(process.hProcess);
    AssignProcessToJobObject(mState->job.get(), process.hProcess);
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    mState->output.writer.reset(nullptr);
}

ChildProcess::~ChildProcess() {
    TerminateJobObject(mState->job.get(), 1);
    TerminateProcess(mState->process.get(), 1); // fails if it has ended
    WaitForSingleObject(mState->process.get(), INFINITE);
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds aTime) {
    return WaitForSingleObject(mState->process.get(), static_cast<DWORD>(aTime.count())) ==
           WAIT_OBJECT_0;
}

void ChildProcess::readOutput(std::string& aOutput) {
    HANDLE const reader = mState->output.reader.get();
    DWORD count = 0;
    if (!PeekNamedPipe(reader, nullptr, 0, nullptr, &count, nullptr) || count == 0) return;
    std::string block(std::min(count, pipeSize), '\0');
    if (ReadFile(reader, block.data(), static_cast<DWORD>(block.size()), &count, nullptr)) {
        aOutput.append(block, 0, count);
    }
}

std::string ChildProcess::describeEnd() const {
    DWORD code = 0;
    GetExitCodeProcess(mState->process.get(), &code);
    if (code == 0) return {};
    if (code >= 0x80000000) return describeException(code);
    return "ended the process with status " + std::to_string(code);
}

// The job of the parent does that.
void endWithParent() {
}

// std::_Exit() would call the entry points of all libraries.
void endAtOnce() {
    TerminateProcess(GetCurrentProcess(), EXIT_SUCCESS);
    std::abort();
}
