// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <io.h>

namespace vexil::platform {
namespace {

void discardStandardOutput() {
    const int output = _fileno(stdout);
    const int null = _open("NUL", _O_WRONLY);
    if (null == -1) {
        _close(output);
        return;
    }
    _dup2(null, output);
    _close(null);
}

bool writeAll(int aDescriptor, std::string_view aText) {
    constexpr std::size_t largestWrite = 0x10000000;
    while (!aText.empty()) {
        const auto size = static_cast<unsigned>(std::min(aText.size(), largestWrite));
        const int count = _write(aDescriptor, aText.data(), size);
        if (count <= 0) return false;
        aText.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

void reserveStandardStreams() {
    // The handle of a closed standard stream is not reused for another file.
}

bool writeStandardOutput(std::string_view aText) {
    // By the descriptor: the stream writes nothing, and reports no error, if it is wide-oriented.
    const bool isWritten =
        std::ferror(stdout) == 0 && std::fflush(stdout) == 0 && writeAll(_fileno(stdout), aText);
    if (!isWritten) discardStandardOutput();
    return isWritten;
}

// Windows has no such signals; a failed write is only an error.
WriteSignalBlocker::WriteSignalBlocker() = default;

WriteSignalBlocker::~WriteSignalBlocker() = default;

} // namespace vexil::platform
