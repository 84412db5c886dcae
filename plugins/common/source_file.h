// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace plugins {

/// Which files readSourceFile() accepts.
enum class FileAccess {
    Any,
    OwnerOnly, ///< owned by the user or the administrator, and inaccessible to all others
};

/// Returns the bytes of the file @p aFileName (UTF-8). All checks are made on the open file. Never
/// waits: pipes, devices and other special files are refused. Throws Failure: NotFound "no such
/// file"; NotReadable with the system's message or "is a directory", "is not a regular file",
/// "is larger than N bytes", "belongs to another user", "is accessible to other users"; and
/// std::bad_alloc. The messages do not name the file.
std::string readSourceFile(const std::string& aFileName, std::size_t aMaximumSize,
                           FileAccess aAccess = FileAccess::Any);

} // namespace plugins
