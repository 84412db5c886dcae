// SPDX-License-Identifier: MIT
#include "modules.h"

#include "module_library.h"
#include "return_values.h"

#include "plugins/common/failure.h"

namespace plugins {

namespace {

bool hasUsedFunctions(const CK_FUNCTION_LIST& aList) {
    return aList.C_Initialize != nullptr && aList.C_Finalize != nullptr &&
           aList.C_GetSlotList != nullptr && aList.C_GetTokenInfo != nullptr &&
           aList.C_OpenSession != nullptr && aList.C_CloseSession != nullptr &&
           aList.C_Login != nullptr && aList.C_Logout != nullptr &&
           aList.C_FindObjectsInit != nullptr && aList.C_FindObjects != nullptr &&
           aList.C_FindObjectsFinal != nullptr && aList.C_GetAttributeValue != nullptr;
}

// p11-kit is not used: it crashes for a module without functions, and if memory runs out.
CK_FUNCTION_LIST& load(const std::string& aPath) {
    CK_FUNCTION_LIST* list = nullptr;
    requireSuccess(loadModuleLibrary(aPath)(&list), aPath, "C_GetFunctionList");
    if (list == nullptr || !hasUsedFunctions(*list)) {
        throw Failure(ErrorCode::BackEndFailed, aPath + ": the PKCS#11 module lacks functions");
    }
    return *list;
}

} // namespace

CK_RV initializeModule(CK_FUNCTION_LIST& aModule) {
    CK_C_INITIALIZE_ARGS arguments = {};
    arguments.flags = CKF_OS_LOCKING_OK;
    return aModule.C_Initialize(&arguments);
}

Modules Modules::loadFile(const std::string& aPath) {
    Modules modules;
    modules.mModules.reserve(1);
    auto& module = load(aPath);
    requireSuccess(initializeModule(module), aPath, "C_Initialize");
    modules.mModules.push_back(&module);
    return modules;
}

Modules::~Modules() {
    for (auto* module : mModules) module->C_Finalize(nullptr);
}

} // namespace plugins
