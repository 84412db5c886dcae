// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/output_guard.h"

#include "plugins/common/failure.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace plugins {

OutputGuard::OutputGuard(std::FILE* aStream)
    : mStream(aStream), mOriginal(fcntl(fileno(aStream), F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    if (mOriginal < 0) return;
    std::fflush(mStream); // the text belongs to the original
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const bool isRedirected = nothing >= 0 && dup2(nothing, fileno(mStream)) >= 0;
    if (nothing >= 0) close(nothing);
    if (isRedirected) return;
    close(mOriginal);
    throw Failure(ErrorCode::InternalError, "output cannot be redirected to /dev/null");
}

OutputGuard::~OutputGuard() {
    if (mOriginal < 0) return;
    std::fflush(mStream); // discards the text that modules have left in the buffer
    dup2(mOriginal, fileno(mStream));
    close(mOriginal);
}

} // namespace plugins
