// SPDX-License-Identifier: MIT
#include "check/platform/shared_memory.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

struct SharedMemory::State {
    int descriptor = -1;
    void* address = MAP_FAILED;
    std::size_t size = 0;

    void map() {
        address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (address == MAP_FAILED) throwError();
    }

    [[noreturn]] static void throwError() {
        throw std::system_error(errno, std::generic_category(), "no shared memory");
    }

    ~State() {
        if (address != MAP_FAILED) munmap(address, size);
        if (descriptor != -1) close(descriptor);
    }
};

SharedMemory::SharedMemory(std::size_t aSize) : mState(std::make_unique<State>()) {
    mState->size = aSize;
    mState->descriptor = memfd_create("certbridge-check", MFD_CLOEXEC);
    if (mState->descriptor == -1) State::throwError();
    if (ftruncate(mState->descriptor, static_cast<off_t>(aSize)) != 0) State::throwError();
    mState->map();
}

SharedMemory::SharedMemory(const std::string& aName) : mState(std::make_unique<State>()) {
    mState->descriptor = std::stoi(aName);
    struct stat status = {};
    if (fstat(mState->descriptor, &status) != 0) State::throwError();
    mState->size = static_cast<std::size_t>(status.st_size);
    mState->map();
    close(mState->descriptor);
    mState->descriptor = -1;
}

SharedMemory::~SharedMemory() = default;

std::span<char> SharedMemory::getBytes() const {
    return {static_cast<char*>(mState->address), mState->size};
}

std::string SharedMemory::getName() const {
    return std::to_string(mState->descriptor);
}
