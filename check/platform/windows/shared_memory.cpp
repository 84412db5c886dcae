// SPDX-License-Identifier: MIT
#include "check/platform/shared_memory.h"

#include "check/platform/windows/handle.h"

#include <cstdint>
#include <stdexcept>

struct SharedMemory::State {
    Handle mapping;
    void* address = nullptr;
    std::size_t size = 0;

    void map() {
        address = MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0);
        if (!address) throwLastError("no shared memory");
        MEMORY_BASIC_INFORMATION information{};
        VirtualQuery(address, &information, sizeof information);
        size = information.RegionSize;
    }

    ~State() {
        if (address) UnmapViewOfFile(address);
    }
};

SharedMemory::SharedMemory(std::size_t aSize) : mState(std::make_unique<State>()) {
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
    const auto size = static_cast<std::uint64_t>(aSize);
    mState->mapping.reset(CreateFileMappingW(INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE,
                                             static_cast<DWORD>(size >> 32),
                                             static_cast<DWORD>(size), nullptr));
    if (!mState->mapping.get()) throwLastError("no shared memory");
    mState->map();
}

SharedMemory::SharedMemory(const std::string& aName) : mState(std::make_unique<State>()) {
    const auto number = static_cast<std::uintptr_t>(std::stoull(aName));
    mState->mapping.reset(reinterpret_cast<HANDLE>(number));
    mState->map();
    mState->mapping.reset(nullptr);
}

SharedMemory::~SharedMemory() = default;

std::span<char> SharedMemory::getBytes() const {
    return {static_cast<char*>(mState->address), mState->size};
}

std::string SharedMemory::getName() const {
    return std::to_string(reinterpret_cast<std::uintptr_t>(mState->mapping.get()));
}
