// SPDX-License-Identifier: MIT
#include "vexil/dynamic_library.h"

#include "vexil/format_to_memory.h"
#include "vexil/platform/platform.h"

#include <array>
#include <string>
#include <utility>

namespace vexil {
namespace {

constexpr std::uint32_t largestPath = 260; // UTF-16 units

struct ModuleCloser {
    using pointer = platform::ModuleHandle;
    void operator()(platform::ModuleHandle aModule) const { platform::closeModule(aModule); }
};
using ModuleHolder = std::unique_ptr<void, ModuleCloser>;

} // namespace

struct DynamicLibrary::State {
    std::string lastError;
    UnicodeString16 path;
    ModuleHolder module; ///< null unless load() succeeded; unloaded before the others are released
};

DynamicLibrary::DynamicLibrary() : mState(std::make_unique<State>()) {
}

DynamicLibrary::~DynamicLibrary() = default;

bool DynamicLibrary::load(const char* aFileName) {
    if (mState->module) {
        mState->lastError = "already loaded";
        return false;
    }
    mState->lastError.clear();
    long error = 0;
    ModuleHolder module(platform::openModule(aFileName, error));
    if (!module) {
        mState->lastError = FormatToMemory::format("LoadLibrary failed, error %ld", error);
        return false;
    }
    // The last unit stays zero: a path that fills the buffer is not terminated.
    std::array<std::uint16_t, largestPath + 1> path{};
    if (platform::getModuleFileName(module.get(), path.data(), largestPath, error) == 0) {
        module.reset();
        mState->lastError = FormatToMemory::format("GetModuleFileName failed, error %ld", error);
        return false;
    }
    mState->path.assign(path.data());
    mState->module = std::move(module);
    return true;
}

void* DynamicLibrary::getSymbol(const char* aName) {
    if (!mState->module) {
        mState->lastError = "not loaded";
        return nullptr;
    }
    mState->lastError.clear();
    long error = 0;
    void* const address = platform::findSymbol(mState->module.get(), aName, error);
    if (!address) {
        mState->lastError = FormatToMemory::format("GetProcAddress failed, error %ld", error);
    }
    return address;
}

const char* DynamicLibrary::getErrorText() const {
    return mState->lastError.c_str();
}

const UnicodeString16& DynamicLibrary::getPath() const {
    return mState->path;
}

} // namespace vexil
