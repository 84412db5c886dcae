// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/standard_output_guard.h"

#include "plugins/common/failure.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace plugins {

StandardOutputGuard::StandardOutputGuard()
    : mOriginal(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    if (mOriginal < 0) return;
    std::fflush(stdout); // the text belongs to the original
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const bool isRedirected = nothing >= 0 && dup2(nothing, STDOUT_FILENO) >= 0;
    if (nothing >= 0) close(nothing);
    if (isRedirected) return;
    close(mOriginal);
    throw Failure(ErrorCode::InternalError, "standard output cannot be redirected to /dev/null");
}

StandardOutputGuard::~StandardOutputGuard() {
    if (mOriginal < 0) return;
    std::fflush(stdout); // discards the text that modules have left in the buffer
    dup2(mOriginal, STDOUT_FILENO);
    close(mOriginal);
}

} // namespace plugins
