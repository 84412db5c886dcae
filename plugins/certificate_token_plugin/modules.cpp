// SPDX-License-Identifier: MIT
#include "modules.h"

#include "return_values.h"

#include "plugins/common/failure.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

namespace plugins {

namespace {

struct Free {
    void operator()(char* aText) const { std::free(aText); }
};
using Text = std::unique_ptr<char, Free>;

std::string takeMessage() {
    const char* const message = p11_kit_message();
    return message != nullptr ? message : "no reason given";
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
    std::error_code ignored; // reported when the module is loaded
    if (!std::filesystem::exists(aPath, ignored) && !ignored) {
        throw Failure(ErrorCode::NotFound, aPath + ": no such module");
    }
    p11_kit_be_quiet();
    CK_FUNCTION_LIST* const module = p11_kit_module_load(aPath.c_str(), 0);
    if (module == nullptr) {
        throw Failure(ErrorCode::NotReadable, aPath + ": " + takeMessage());
    }
    Modules modules;
    modules.mModules.reserve(1);
    requireSuccess(p11_kit_module_initialize(module), aPath, "C_Initialize");
    modules.mModules.push_back(module);
    return modules;
}

Modules Modules::loadRegistered(const std::optional<std::string>& aName) {
    CK_FUNCTION_LIST** const registered = registeredModules();
    Modules modules;
    for (auto** module = registered; *module != nullptr; ++module) {
        if (aName && !hasName(*module, *aName)) continue;
        modules.mModules.reserve(modules.mModules.size() + 1);
        const CK_RV result = p11_kit_module_initialize(*module);
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
    for (auto* module : mModules) p11_kit_module_finalize(module);
}

} // namespace plugins
