// SPDX-License-Identifier: MIT

// Files on Windows.
#include "plugins/common/failure.h"
#include "plugins/common/source_file.h"
#include "plugins/common/windows/system_text.h"

#include <memory>

namespace plugins {

namespace {

struct HandleCloser {
    void operator()(void* aHandle) const { CloseHandle(aHandle); }
};
using FileHandle = std::unique_ptr<void, HandleCloser>;

[[noreturn]] void failWithSystemError(DWORD aError) {
    if (aError == ERROR_FILE_NOT_FOUND || aError == ERROR_PATH_NOT_FOUND) {
        throw Failure(ErrorCode::NotFound, "no such file");
    }
    throw Failure(ErrorCode::NotReadable, errorText(aError));
}

FileHandle openFile(const std::string& aFileName) {
    const auto name = toUtf16(aFileName);
    const auto attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) failWithSystemError(GetLastError());
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw Failure(ErrorCode::NotReadable, "is a directory");
    }
    void* const file = CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) failWithSystemError(GetLastError());
    FileHandle handle(file);
    if (GetFileType(file) != FILE_TYPE_DISK) {
        throw Failure(ErrorCode::NotReadable, "is not a regular file");
    }
    return handle;
}

} // namespace

std::string readSourceFile(const std::string& aFileName, std::size_t aMaximumSize, FileAccess) {
    const auto file = openFile(aFileName);
    std::string bytes(aMaximumSize + 1, '\0'); // never grows, which would leave a copy of a secret
    DWORD size = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &size, nullptr)) {
        failWithSystemError(GetLastError());
    }
    bytes.resize(size);
    if (bytes.size() > aMaximumSize) {
        throw Failure(ErrorCode::NotReadable,
                      "is larger than " + std::to_string(aMaximumSize) + " bytes");
    }
    return bytes;
}

} // namespace plugins
