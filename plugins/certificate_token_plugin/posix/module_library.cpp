// SPDX-License-Identifier: MIT
#include "free_memory.h"

#include "plugins/certificate_token_plugin/module_library.h"
#include "plugins/common/failure.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>

#include <dlfcn.h>

namespace plugins {

namespace {

void checkFile(const std::string& aPath) {
    std::error_code error;
    const auto status = std::filesystem::status(aPath, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        throw Failure(ErrorCode::NotFound, aPath + ": no such module");
    }
    if (error) throw Failure(ErrorCode::NotReadable, aPath + ": " + error.message());
    if (status.type() != std::filesystem::file_type::regular) {
        throw Failure(ErrorCode::NotReadable, aPath + ": is not a regular file");
    }
}

} // namespace

std::string toModulePath(const std::string& aName) {
    if (aName.find('/') == aName.npos) return MODULE_FOLDER "/" + aName;
    return std::filesystem::absolute(aName).string();
}

// The plugin stays loaded because it is linked so.
CK_C_GetFunctionList loadModuleLibrary(const std::string& aPath) {
    checkFile(aPath);
    requireFreeMemoryForModules();
    errno = 0;
    void* const library = dlopen(aPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr && errno == ENOMEM) throw std::bad_alloc();
    if (library == nullptr) throw Failure(ErrorCode::NotReadable, aPath + ": " + dlerror());
    const auto function =
        reinterpret_cast<CK_C_GetFunctionList>(dlsym(library, "C_GetFunctionList"));
    if (function == nullptr) {
        throw Failure(ErrorCode::NotReadable, aPath + ": is not a PKCS#11 module");
    }
    return function;
}

} // namespace plugins
