// SPDX-License-Identifier: MIT

// Files on POSIX systems.
#include "plugins/common/failure.h"
#include "plugins/common/source_file.h"

#include <cerrno>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plugins {

namespace {

class Descriptor {
public:
    // O_NONBLOCK: opening a pipe must not wait for its writer.
    explicit Descriptor(const std::string& aFileName)
        : mNumber(open(aFileName.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
    ~Descriptor() {
        if (mNumber >= 0) close(mNumber);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return mNumber; }

private:
    int mNumber;
};

[[noreturn]] void failWithSystemError(int aError) {
    if (aError == ENOMEM) throw std::bad_alloc();
    if (aError == ENOENT || aError == ENOTDIR) throw Failure(ErrorCode::NotFound, "no such file");
    if (aError == ENXIO) throw Failure(ErrorCode::NotReadable, "is not a regular file"); // a socket
    throw Failure(ErrorCode::NotReadable, std::generic_category().message(aError));
}

void checkStatus(const struct stat& aStatus, FileAccess aAccess) {
    if (S_ISDIR(aStatus.st_mode)) throw Failure(ErrorCode::NotReadable, "is a directory");
    if (!S_ISREG(aStatus.st_mode)) throw Failure(ErrorCode::NotReadable, "is not a regular file");
    if (aAccess == FileAccess::Any) return;
    if (aStatus.st_uid != geteuid() && aStatus.st_uid != 0) {
        throw Failure(ErrorCode::NotReadable, "belongs to another user");
    }
    if ((aStatus.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw Failure(ErrorCode::NotReadable, "is accessible to other users");
    }
}

// Fills the string from the file; returns the number of bytes read.
std::size_t readBytes(int aDescriptor, std::string& aBytes) {
    std::size_t size = 0;
    while (size < aBytes.size()) {
        const auto count = read(aDescriptor, aBytes.data() + size, aBytes.size() - size);
        if (count == 0) break;
        if (count > 0) size += static_cast<std::size_t>(count);
        if (count < 0 && errno != EINTR) failWithSystemError(errno);
    }
    return size;
}

} // namespace

std::string readSourceFile(const std::string& aFileName, std::size_t aMaximumSize,
                           FileAccess aAccess) {
    const Descriptor file(aFileName);
    if (file.get() < 0) failWithSystemError(errno);
    struct stat status = {};
    if (fstat(file.get(), &status) != 0) failWithSystemError(errno);
    checkStatus(status, aAccess);
    std::string bytes(aMaximumSize + 1, '\0'); // never grows, which would leave a copy of a secret
    bytes.resize(readBytes(file.get(), bytes));
    if (bytes.size() > aMaximumSize) {
        throw Failure(ErrorCode::NotReadable,
                      "is larger than " + std::to_string(aMaximumSize) + " bytes");
    }
    return bytes;
}

} // namespace plugins
