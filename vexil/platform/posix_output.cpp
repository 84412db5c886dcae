// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace vexil::platform {
namespace {

// The signals that a write may raise in its thread.
constexpr std::array writeSignals{SIGPIPE, SIGXFSZ};

sigset_t setOf(int aSignal) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, aSignal);
    return signals;
}

bool isPending(int aSignal) {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, aSignal) == 1;
}

void discardStandardOutput() {
    const int null = open("/dev/null", O_WRONLY);
    if (null == -1) {
        close(STDOUT_FILENO);
        return;
    }
    dup2(null, STDOUT_FILENO);
    close(null);
}

bool waitUntilWritable(int aDescriptor) {
    pollfd writable{aDescriptor, POLLOUT, 0};
    return poll(&writable, 1, -1) != -1 || errno == EINTR;
}

bool writeAll(int aDescriptor, std::string_view aText) {
    while (!aText.empty()) {
        const auto count = write(aDescriptor, aText.data(), aText.size());
        if (count > 0) {
            aText.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0) {
            return false;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!waitUntilWritable(aDescriptor)) return false;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

void reserveStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
        // Takes the lowest free number, which is this one, in the opposite direction: the normal
        // use of the stream continues to fail.
        open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

bool writeStandardOutput(std::string_view aText) {
    const WriteSignalBlocker blocker;
    // By the descriptor: the stream writes nothing, and reports no error, if it is wide-oriented.
    const bool isWritten =
        std::ferror(stdout) == 0 && std::fflush(stdout) == 0 && writeAll(STDOUT_FILENO, aText);
    // Neither the runtime on exit nor a destructor of the plugin may write the rest or raise the
    // signal.
    if (!isWritten) discardStandardOutput();
    return isWritten;
}

WriteSignalBlocker::WriteSignalBlocker() {
    for (std::size_t i = 0; i < writeSignals.size(); ++i) {
        mSignals[i].discard = !isPending(writeSignals[i]);
        const auto signal = setOf(writeSignals[i]);
        sigset_t before;
        if (pthread_sigmask(SIG_BLOCK, &signal, &before) == 0) {
            mSignals[i].unblock = sigismember(&before, writeSignals[i]) == 0;
        }
    }
}

WriteSignalBlocker::~WriteSignalBlocker() {
    for (std::size_t i = 0; i < writeSignals.size(); ++i) {
        const auto signal = setOf(writeSignals[i]);
        const timespec now{};
        while (mSignals[i].discard && sigtimedwait(&signal, nullptr, &now) == -1 &&
               errno == EINTR) {
        }
        if (mSignals[i].unblock) pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);
    }
}

} // namespace vexil::platform
