// SPDX-License-Identifier: MIT
#include "connection.h"

#include "plugins/common/failure.h"
#include "vexil/assert.h"

#include <cerrno>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace plugins {

namespace {

std::string messageOf(int aError) {
    return std::generic_category().message(aError);
}

// Waits for one of the events; returns false if the deadline has passed, even if one is pending, so
// that a server which always has more to send cannot extend it.
bool isReadyInTime(const Socket& aSocket, short aEvents, const Deadline& aDeadline) {
    pollfd entry = {aSocket.get(), aEvents, 0};
    for (;;) {
        const auto remaining =
            std::chrono::ceil<std::chrono::milliseconds>(aDeadline.getRemaining());
        if (remaining.count() == 0) return false;
        const int count = poll(&entry, 1, static_cast<int>(remaining.count()));
        if (count > 0) return true;
        if (count < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category());
    }
}

struct ConnectAttempt {
    Socket socket;
    std::optional<Failure> failure;
};

ConnectAttempt failed(int aError) {
    if (aError == ENOMEM || aError == ENOBUFS) throw std::bad_alloc();
    return {Socket(-1), Failure(ErrorCode::ConnectionFailed, messageOf(aError))};
}

int takeSocketError(const Socket& aSocket) {
    int error = 0;
    socklen_t size = sizeof error;
    return getsockopt(aSocket.get(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

ConnectAttempt attemptConnection(const SocketAddress& aAddress, const Deadline& aDeadline) {
    Socket socket(
        ::socket(aAddress.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (socket.get() < 0) return failed(errno);
    const auto* const address = reinterpret_cast<const sockaddr*>(&aAddress.storage);
    // A connection attempt that a signal interrupts continues as a non-blocking one does.
    if (connect(socket.get(), address, aAddress.size) == 0) return {std::move(socket), {}};
    if (errno != EINPROGRESS && errno != EINTR) {
        return failed(errno);
    }
    if (!isReadyInTime(socket, POLLOUT, aDeadline)) {
        return {Socket(-1), Failure(ErrorCode::TimedOut, "connecting timed out")};
    }
    if (const int error = takeSocketError(socket)) {
        return failed(error);
    }
    return {std::move(socket), {}};
}

Socket connectToAny(const std::vector<SocketAddress>& aAddresses, const Deadline& aDeadline) {
    VEXIL_ASSERT(!aAddresses.empty());
    std::optional<Failure> failure;
    for (auto address = aAddresses.begin(); address != aAddresses.end(); ++address) {
        const Deadline share(aDeadline.getRemaining() / (aAddresses.end() - address));
        auto attempt = attemptConnection(*address, share);
        if (!attempt.failure) return std::move(attempt.socket);
        failure = std::move(attempt.failure);
    }
    throw Failure(*failure);
}

} // namespace

Socket::~Socket() {
    if (mDescriptor >= 0) close(mDescriptor);
}

Socket::Socket(Socket&& aOther) noexcept : mDescriptor(std::exchange(aOther.mDescriptor, -1)) {
}

Connection::Connection(const std::vector<SocketAddress>& aAddresses, const Deadline& aDeadline)
    : mDeadline(aDeadline), mSocket(connectToAny(aAddresses, aDeadline)) {
}

void Connection::waitFor(short aEvents) {
    if (!isReadyInTime(mSocket, aEvents, mDeadline)) {
        throw Failure(ErrorCode::TimedOut, "the server did not answer in time");
    }
}

void Connection::send(std::string_view aBytes) {
    while (!aBytes.empty()) {
        waitFor(POLLOUT);
        const auto count = ::send(mSocket.get(), aBytes.data(), aBytes.size(), MSG_NOSIGNAL);
        if (count >= 0) aBytes.remove_prefix(static_cast<std::size_t>(count));
        if (count < 0 && errno != EINTR && errno != EAGAIN) return;
    }
}

std::string Connection::receive() {
    std::string bytes(16 * 1024, '\0');
    for (;;) {
        waitFor(POLLIN);
        const auto count = recv(mSocket.get(), bytes.data(), bytes.size(), 0);
        if (count >= 0) {
            bytes.resize(static_cast<std::size_t>(count));
            return bytes;
        }
        if (errno != EINTR && errno != EAGAIN) {
            throw Failure(ErrorCode::NoTls, "the connection was lost: " + messageOf(errno));
        }
    }
}

} // namespace plugins
