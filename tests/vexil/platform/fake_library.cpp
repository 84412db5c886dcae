// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/fake_platform.h"

FakeLibrary fakeLibrary;

namespace vexil::platform {

ModuleHandle openModule(const char* aFileName, long& aError) {
    return fakeLibrary.openModule(aFileName, aError);
}

std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest, std::uint32_t aSize,
                                long& aError) {
    return fakeLibrary.getModuleFileName(aModule, aDest, aSize, aError);
}

void* findSymbol(ModuleHandle, const char*, long& aError) {
    aError = errorSymbolNotFound;
    return nullptr;
}

void closeModule(ModuleHandle aModule) {
    fakeLibrary.closeModule(aModule);
}

} // namespace vexil::platform
