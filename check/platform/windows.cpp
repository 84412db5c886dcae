#include "check/platform/platform.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <stdexcept>
#include <string_view>

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1 // as libstdc++ defines it
#include <windows.h>

namespace {

[[noreturn]] void throwLastError(const std::string& aWhat) {
    throw std::runtime_error(aWhat + ", error " + std::to_string(GetLastError()));
}

class Handle : private vexil::NonCopyable {
public:
    ~Handle() { reset(nullptr); }
    HANDLE get() const { return mHandle; }
    void reset(HANDLE aHandle) {
        if (mHandle) CloseHandle(mHandle);
        mHandle = aHandle;
    }

private:
    HANDLE mHandle = nullptr;
};

// A pipe holds no more, so that the last call gets all there is; and a child that never stops
// writing cannot keep its parent here.
constexpr DWORD pipeSize = 65536;

// Its writer goes to the child.
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

void readAvailable(const Handle& aReader, std::string& aText) {
    DWORD count = 0;
    if (!PeekNamedPipe(aReader.get(), nullptr, 0, nullptr, &count, nullptr) || count == 0) return;
    std::string block(std::min(count, pipeSize), '\0');
    if (ReadFile(aReader.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr)) {
        aText.append(block, 0, count);
    }
}

std::wstring getProgramName() {
    std::wstring name(32768, L'\0'); // the longest that there is
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

// The command line as it was typed, without the program's name.
std::wstring getArgumentText() {
    const std::wstring_view line = GetCommandLineW();
    const bool isQuoted = !line.empty() && line.front() == L'"';
    const auto end = isQuoted ? line.find(L'"', 1) : line.find_first_of(L" \t");
    return std::wstring(line.substr(end == line.npos ? line.size() : end + 1));
}

// An empty input, which the child inherits.
HANDLE openNothing() {
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
    return CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                       OPEN_EXISTING, 0, nullptr);
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

bool isColourTerminal() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

struct ChildProcess::State {
    Pipe outcome, output;
    Handle process;
};

// The arguments are taken from the command line, where their quotes are as they were.
ChildProcess::ChildProcess(char**, const std::string& aOption) : mState(std::make_unique<State>()) {
    const auto place = reinterpret_cast<std::uintptr_t>(mState->outcome.writer.get());
    const auto options = aOption + ' ' + outcomeOption + std::to_string(place) + ' ';
    auto line =
        L"certbridge-check " + std::wstring(options.begin(), options.end()) + getArgumentText();

    // A crash is for the report, not for a message box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    Handle nothing;
    nothing.reset(openNothing());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nothing.get();
    startup.hStdOutput = mState->output.writer.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(getProgramName().c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        nullptr, &startup, &process)) {
        throwLastError("cannot start a process for a check");
    }
    CloseHandle(process.hThread);
    mState->process.reset(process.hProcess);
    mState->outcome.writer.reset(nullptr);
    mState->output.writer.reset(nullptr);
}

ChildProcess::~ChildProcess() {
    TerminateProcess(mState->process.get(), 1); // fails if it has ended
    WaitForSingleObject(mState->process.get(), INFINITE);
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds aTime) {
    return WaitForSingleObject(mState->process.get(), static_cast<DWORD>(aTime.count())) ==
           WAIT_OBJECT_0;
}

void ChildProcess::read(std::string& aOutcome, std::string& aOutput) {
    readAvailable(mState->outcome.reader, aOutcome);
    readAvailable(mState->output.reader, aOutput);
}

std::string ChildProcess::describeEnd() const {
    DWORD code = 0;
    GetExitCodeProcess(mState->process.get(), &code);
    if (code == 0) return {};
    if (code >= 0x80000000) return describeException(code);
    return "ended the process with status " + std::to_string(code);
}

void sendOutcome(const std::string& aPlace, const std::string& aText) {
    const auto place = static_cast<std::uintptr_t>(std::stoull(aPlace));
    DWORD sent = 0;
    if (!WriteFile(reinterpret_cast<HANDLE>(place), aText.data(), static_cast<DWORD>(aText.size()),
                   &sent, nullptr)) {
        throwLastError("cannot send the outcome");
    }
}
