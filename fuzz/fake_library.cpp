// SPDX-License-Identifier: MIT

// The only library is the fuzz target itself.
#include "vexil/platform/platform.h"

#include <certbridge/plugin.h>

namespace vexil::platform {

ModuleHandle openModule(const char*, long&) {
    static int module = 0;
    return &module;
}

std::uint32_t getModuleFileName(ModuleHandle, std::uint16_t* aDest, std::uint32_t, long&) {
    aDest[0] = 'p';
    aDest[1] = 0;
    return 1;
}

void* findSymbol(ModuleHandle, const char*, long&) {
    return reinterpret_cast<void*>(&GetPlugin);
}

void closeModule(ModuleHandle) {
}

} // namespace vexil::platform
