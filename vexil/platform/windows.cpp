#include "vexil/platform/platform.h"

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <float.h>
#include <io.h>

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1 // as libstdc++ defines it
#include <windows.h>

namespace vexil::platform {
namespace {

static_assert(sizeof(wchar_t) == sizeof(std::uint16_t));

long lastError() {
    return static_cast<long>(GetLastError());
}

// Keeps the system from asking the user for a disk or a missing library while it lives: a failure
// is an error number, not a message box.
class NoMessageBoxes {
public:
    NoMessageBoxes() : mBefore(SetErrorMode(SEM_FAILCRITICALERRORS)) {
        SetErrorMode(mBefore | SEM_FAILCRITICALERRORS);
    }
    ~NoMessageBoxes() { SetErrorMode(mBefore); }
    NoMessageBoxes(const NoMessageBoxes&) = delete;
    NoMessageBoxes& operator=(const NoMessageBoxes&) = delete;

private:
    UINT mBefore;
};

void discardStandardOutput() {
    const int output = _fileno(stdout);
    const int nowhere = _open("NUL", _O_WRONLY);
    if (nowhere == -1) {
        _close(output);
        return;
    }
    _dup2(nowhere, output);
    _close(nowhere);
}

bool writeAll(int aDescriptor, std::string_view aText) {
    constexpr std::size_t largestWrite = 0x10000000;
    while (!aText.empty()) {
        const auto size = static_cast<unsigned>(std::min(aText.size(), largestWrite));
        const int count = _write(aDescriptor, aText.data(), size);
        if (count <= 0) return false;
        aText.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

ModuleHandle openModule(const char* aFileName, long& aError) {
    if (*aFileName == '\0') {
        aError = errorModuleNotFound;
        return nullptr;
    }
    const NoMessageBoxes guard;
    const HMODULE module = LoadLibraryA(aFileName);
    if (!module) aError = lastError();
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

std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits) {
    // No room told means: only count.
    return MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, aBytes, aLen,
                               reinterpret_cast<wchar_t*>(aDest), aDest ? aUnits : 0);
}

int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments) {
    return std::vsnprintf(aDest, aSize, aFormat, aArguments);
}

void reserveStandardStreams() {
    // A standard stream without a handle stays without one: the system gives no file opened later
    // the place of another.
}

bool writeStandardOutput(std::string_view aText) {
    // By the descriptor: the stream writes nothing, and reports no error, if it is wide-oriented.
    const bool isWritten =
        std::ferror(stdout) == 0 && std::fflush(stdout) == 0 && writeAll(_fileno(stdout), aText);
    if (!isWritten) discardStandardOutput();
    return isWritten;
}

void resetFloatingPoint() {
    _clearfp();
    _controlfp(_CW_DEFAULT, 0xFFFFFFFF);
}

// Windows has no such signals; a failed write is only an error.
WriteSignalBlocker::WriteSignalBlocker() = default;

WriteSignalBlocker::~WriteSignalBlocker() = default;

} // namespace vexil::platform
