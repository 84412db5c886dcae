// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/standard_output_guard.h"

#include "plugins/common/failure.h"

#include <cstdio>

#include <fcntl.h>
#include <io.h>

namespace plugins {

namespace {

constexpr int standardOutput = 1;

} // namespace

// The runtime replaces the handle of the process together with the descriptor.
StandardOutputGuard::StandardOutputGuard() : mOriginal(_dup(standardOutput)) {
    if (mOriginal < 0) return;
    std::fflush(stdout); // the text belongs to the original
    const int nothing = _open("NUL", _O_WRONLY | _O_BINARY);
    const bool isRedirected = nothing >= 0 && _dup2(nothing, standardOutput) == 0;
    if (nothing >= 0) _close(nothing);
    if (isRedirected) return;
    _close(mOriginal);
    throw Failure(ErrorCode::InternalError, "standard output cannot be redirected to NUL");
}

StandardOutputGuard::~StandardOutputGuard() {
    if (mOriginal < 0) return;
    std::fflush(stdout); // discards the text that modules have left in the buffer
    _dup2(mOriginal, standardOutput);
    _close(mOriginal);
}

} // namespace plugins
