// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/module_library.h"
#include "plugins/common/failure.h"
#include "plugins/common/windows/system_text.h"

#include <new>

namespace plugins {

namespace {

[[noreturn]] void failPath(const std::string& aPath, const std::string& aProblem) {
    throw Failure(ErrorCode::NotReadable, aPath + ": " + aProblem);
}

void checkFile(const std::string& aPath) {
    const auto attributes = GetFileAttributesW(toUtf16(aPath).c_str());
    const auto error = GetLastError();
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) failPath(aPath, "is not a regular file");
    } else if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
        throw Failure(ErrorCode::NotFound, aPath + ": no such module");
    } else {
        failPath(aPath, errorText(error));
    }
}

// LoadLibraryEx() finds the libraries beside the module only if the path is absolute.
std::wstring toAbsolutePath(const std::string& aPath) {
    const auto path = toUtf16(aPath);
    std::wstring absolute(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    absolute.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(absolute.size()),
                                     absolute.data(), nullptr));
    return absolute;
}

HMODULE load(const std::wstring& aPath) {
    DWORD before = 0; // no message box for a missing library
    SetThreadErrorMode(GetThreadErrorMode() | SEM_FAILCRITICALERRORS, &before);
    const HMODULE library = LoadLibraryExW(aPath.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const auto error = GetLastError();
    SetThreadErrorMode(before, nullptr);
    SetLastError(error);
    return library;
}

// A module that does not answer in time continues in a thread, in the code of the plugin.
void keepPluginLoaded() {
    HMODULE plugin = nullptr;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    if (!GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&keepPluginLoaded), &plugin)) {
        throw Failure(ErrorCode::InternalError, errorText(GetLastError()));
    }
}

} // namespace

std::string toModulePath(const std::string& aName) {
    return aName;
}

CK_C_GetFunctionList loadModuleLibrary(const std::string& aPath) {
    checkFile(aPath);
    keepPluginLoaded();
    const HMODULE library = load(toAbsolutePath(aPath));
    if (library == nullptr) failPath(aPath, errorText(GetLastError()));
    const auto function = reinterpret_cast<CK_C_GetFunctionList>(
        reinterpret_cast<void*>(GetProcAddress(library, "C_GetFunctionList")));
    if (function == nullptr) failPath(aPath, "is not a PKCS#11 module");
    return function;
}

} // namespace plugins
