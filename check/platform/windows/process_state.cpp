// SPDX-License-Identifier: MIT
#include "check/platform/process_state.h"

#include "check/platform/windows/handle.h"

#include <cfloat>
#include <cstddef>
#include <cstdio>

#include <fcntl.h>
#include <io.h>
#include <tlhelp32.h>

namespace {

constexpr int outputDescriptor = 1;

std::size_t countThreads() {
    Handle snapshot;
    snapshot.reset(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL found = Thread32First(snapshot.get(), &entry); found;
         found = Thread32Next(snapshot.get(), &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    }
    return count;
}

bool hasChild() {
    Handle snapshot;
    snapshot.reset(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL found = Process32First(snapshot.get(), &entry); found;
         found = Process32Next(snapshot.get(), &entry)) {
        if (entry.th32ParentProcessID == GetCurrentProcessId()) return true;
    }
    return false;
}

template <class Pointer>
Pointer atOffset(HMODULE aModule, DWORD aOffset) {
    return reinterpret_cast<Pointer>(reinterpret_cast<const std::byte*>(aModule) + aOffset);
}

std::string findMissingImport(HMODULE aModule) {
    const auto& header = *reinterpret_cast<const IMAGE_DOS_HEADER*>(aModule);
    const auto* const image =
        atOffset<const IMAGE_NT_HEADERS*>(aModule, static_cast<DWORD>(header.e_lfanew));
    const auto& directory = image->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) return {};
    const auto* import =
        atOffset<const IMAGE_IMPORT_DESCRIPTOR*>(aModule, directory.VirtualAddress);
    for (; import->Name != 0; ++import) {
        const auto* const name = atOffset<const char*>(aModule, import->Name);
        HMODULE const found = LoadLibraryA(name);
        if (!found) return std::string(name) + ": cannot be loaded";
        FreeLibrary(found);
    }
    return {};
}

HANDLE duplicate(HANDLE aHandle) {
    HANDLE result = nullptr;
    HANDLE const process = GetCurrentProcess();
    DuplicateHandle(process, aHandle, process, &result, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return result;
}

// 0 for each handle of the file that was the standard output at the first call: a plugin that
// restores the output after a redirection leaves another handle. The function exists since Windows
// 10; before, handles are compared, and one that is reused after it has been closed seems to be the
// same.
std::uint64_t identify(HANDLE aHandle) {
    using Compare = BOOL(WINAPI*)(HANDLE, HANDLE);
    static const auto areSame = reinterpret_cast<Compare>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("kernelbase.dll"), "CompareObjectHandles")));
    static HANDLE const original = aHandle;
    static HANDLE const kept = duplicate(aHandle);
    const bool isOriginal = areSame ? areSame(kept, aHandle) : aHandle == original;
    return isOriginal ? 0 : reinterpret_cast<std::uintptr_t>(aHandle);
}

} // namespace

RunningWork RunningWork::inspect() {
    return {countThreads(), hasChild(), false};
}

bool hasFloatingPointTraps() {
    constexpr unsigned exceptions = _EM_INVALID | _EM_ZERODIVIDE | _EM_OVERFLOW | _EM_UNDERFLOW;
    return (_controlfp(0, 0) & exceptions) != exceptions;
}

OutputState OutputState::inspect() {
    const auto number = _get_osfhandle(outputDescriptor);
    const DWORD type = GetFileType(reinterpret_cast<HANDLE>(number));
    if (type == FILE_TYPE_UNKNOWN) return {0, 0, 0, false};
    const int mode = _setmode(outputDescriptor, _O_TEXT);
    if (mode != -1) _setmode(outputDescriptor, mode);
    return {type, identify(reinterpret_cast<HANDLE>(number)), mode, false};
}

bool isColourTerminal() {
    HANDLE const output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

bool isMapped(const void* aAddress) {
    HMODULE module = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return GetModuleHandleExA(flags, static_cast<const char*>(aAddress), &module);
}

std::string describeLoadFailure(const char* aLibraryName) {
    HMODULE const module = LoadLibraryExA(aLibraryName, nullptr, DONT_RESOLVE_DLL_REFERENCES);
    if (!module) return {};
    const std::string missing = findMissingImport(module);
    FreeLibrary(module);
    return missing;
}

bool canLimitMemory() {
    return false;
}

MemoryLimit::MemoryLimit(std::size_t) : mPrevious(0) {
}

MemoryLimit::~MemoryLimit() {
}
