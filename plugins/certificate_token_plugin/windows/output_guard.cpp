// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/output_guard.h"

#include "plugins/common/failure.h"

#include <cstdio>

#include <fcntl.h>
#include <io.h>

namespace plugins {

// The runtime replaces the handle of the process together with the descriptor.
OutputGuard::OutputGuard(std::FILE* aStream) : mStream(aStream), mOriginal(_dup(_fileno(aStream))) {
    if (mOriginal < 0) return;
    std::fflush(mStream); // the text belongs to the original
    const int nothing = _open("NUL", _O_WRONLY | _O_BINARY);
    const bool isRedirected = nothing >= 0 && _dup2(nothing, _fileno(mStream)) == 0;
    if (nothing >= 0) _close(nothing);
    if (isRedirected) return;
    _close(mOriginal);
    throw Failure(ErrorCode::InternalError, "output cannot be redirected to NUL");
}

OutputGuard::~OutputGuard() {
    if (mOriginal < 0) return;
    std::fflush(mStream); // discards the text that modules have left in the buffer
    _dup2(mOriginal, _fileno(mStream));
    _close(mOriginal);
}

} // namespace plugins
