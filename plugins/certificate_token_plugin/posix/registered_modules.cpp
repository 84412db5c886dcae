// SPDX-License-Identifier: MIT
#include "free_memory.h"
#include "module_configuration.h"

#include "plugins/certificate_token_plugin/modules.h"
#include "plugins/certificate_token_plugin/return_values.h"
#include "plugins/common/failure.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>

#include <p11-kit/p11-kit.h>

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

// Loads the registered modules once in the process, since they stay loaded.
CK_FUNCTION_LIST** registeredModules() {
    static CK_FUNCTION_LIST** const modules = [] {
        requireFreeMemoryForModules();
        p11_kit_be_quiet();
        auto** const loaded = p11_kit_modules_load(nullptr, 0);
        if (loaded == nullptr) throw Failure(ErrorCode::BackEndFailed, takeMessage());
        return loaded;
    }();
    return modules;
}

} // namespace

Modules Modules::loadRegistered(const std::optional<std::string>& aName) {
    if (aName) {
        if (const auto path = findConfiguredModule(*aName)) return loadFile(*path);
    }
    CK_FUNCTION_LIST** const registered = registeredModules();
    Modules modules;
    for (auto** module = registered; *module != nullptr; ++module) {
        if (aName && !hasName(*module, *aName)) continue;
        modules.mModules.reserve(modules.mModules.size() + 1);
        const CK_RV result = initializeModule(**module);
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

} // namespace plugins
