// SPDX-License-Identifier: MIT
#include "modules.h"

#include "return_values.h"

#include "plugins/common/failure.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

#include <dlfcn.h>

namespace plugins {

namespace {

struct Free {
    void operator()(char* aText) const { std::free(aText); }
};
using Text = std::unique_ptr<char, Free>;

// p11-kit gives no message only if memory runs out.
std::string takeMessage() {
    const char* const message = p11_kit_message();
    if (message == nullptr) throw std::bad_alloc();
    return message;
}

// RFC 7512: the name of the module's file without "lib" and the suffix; registered modules have a
// name in their configuration as well.
bool hasName(CK_FUNCTION_LIST* aModule, const std::string& aName) {
    const Text registeredName(p11_kit_module_get_name(aModule));
    if (registeredName && aName == registeredName.get()) return true;
    const Text fileName(p11_kit_module_get_filename(aModule));
    if (!fileName) return false;
    const auto stem = std::filesystem::path(fileName.get()).stem().string();
    return stem == aName || stem == "lib" + aName;
}

// Opening a special file could wait for ever.
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

bool hasUsedFunctions(const CK_FUNCTION_LIST& aList) {
    return aList.C_Initialize != nullptr && aList.C_Finalize != nullptr &&
           aList.C_GetSlotList != nullptr && aList.C_GetTokenInfo != nullptr &&
           aList.C_OpenSession != nullptr && aList.C_CloseSession != nullptr &&
           aList.C_Login != nullptr && aList.C_Logout != nullptr &&
           aList.C_FindObjectsInit != nullptr && aList.C_FindObjects != nullptr &&
           aList.C_FindObjectsFinal != nullptr && aList.C_GetAttributeValue != nullptr;
}

// The module stays loaded. p11-kit is not used: it crashes for a module without functions, and if
// memory runs out.
CK_FUNCTION_LIST& load(const std::string& aPath) {
    errno = 0;
    void* const library = dlopen(aPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr && errno == ENOMEM) throw std::bad_alloc();
    if (library == nullptr) throw Failure(ErrorCode::NotReadable, aPath + ": " + dlerror());
    const auto getFunctionList =
        reinterpret_cast<CK_C_GetFunctionList>(dlsym(library, "C_GetFunctionList"));
    if (getFunctionList == nullptr) {
        throw Failure(ErrorCode::NotReadable, aPath + ": is not a PKCS#11 module");
    }
    CK_FUNCTION_LIST* list = nullptr;
    requireSuccess(getFunctionList(&list), aPath, "C_GetFunctionList");
    if (list == nullptr || !hasUsedFunctions(*list)) {
        throw Failure(ErrorCode::BackEndFailed, aPath + ": the PKCS#11 module lacks functions");
    }
    return *list;
}

CK_RV initialize(CK_FUNCTION_LIST& aModule) {
    CK_C_INITIALIZE_ARGS arguments = {};
    arguments.flags = CKF_OS_LOCKING_OK;
    return aModule.C_Initialize(&arguments);
}

// Loads the registered modules once in the process, since they stay loaded.
CK_FUNCTION_LIST** registeredModules() {
    static CK_FUNCTION_LIST** const modules = [] {
        p11_kit_be_quiet();
        auto** const loaded = p11_kit_modules_load(nullptr, 0);
        if (loaded == nullptr) throw Failure(ErrorCode::BackEndFailed, takeMessage());
        return loaded;
    }();
    return modules;
}

} // namespace

Modules Modules::loadFile(const std::string& aPath) {
    checkFile(aPath);
    Modules modules;
    modules.mModules.reserve(1);
    auto& module = load(aPath);
    requireSuccess(initialize(module), aPath, "C_Initialize");
    modules.mModules.push_back(&module);
    return modules;
}

Modules Modules::loadRegistered(const std::optional<std::string>& aName) {
    CK_FUNCTION_LIST** const registered = registeredModules();
    Modules modules;
    for (auto** module = registered; *module != nullptr; ++module) {
        if (aName && !hasName(*module, *aName)) continue;
        modules.mModules.reserve(modules.mModules.size() + 1);
        const CK_RV result = initialize(**module);
        if (aName) requireSuccess(result, *aName, "C_Initialize");
        if (result == CKR_OK) modules.mModules.push_back(*module);
    }
    if (modules.mModules.empty()) {
        throw Failure(ErrorCode::NotFound,
                      aName ? "no PKCS#11 module is registered as \"" + *aName + '"'
                            : "no PKCS#11 module is registered");
    }
    return modules;
}

Modules::~Modules() {
    for (auto* module : mModules) module->C_Finalize(nullptr);
}

} // namespace plugins
