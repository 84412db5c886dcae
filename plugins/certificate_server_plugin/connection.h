// SPDX-License-Identifier: MIT
#pragma once

#include "deadline.h"
#include "host_lookup.h"

#include <string>
#include <string_view>
#include <vector>

namespace plugins {

/// The descriptor of a socket, closed on destruction.
class Socket {
public:
    explicit Socket(int aDescriptor) : mDescriptor(aDescriptor) {}
    ~Socket();
    Socket(Socket&& aOther) noexcept;
    Socket& operator=(Socket&&) = delete;

    int get() const { return mDescriptor; }

private:
    int mDescriptor; // negative: none
};

/// A stream to a server. No operation raises SIGPIPE or takes longer than until the deadline.
class Connection {
public:
    /// Connects to the first of the addresses, at least one, that accepts the connection; each may
    /// take an equal share of the remaining time. Throws Failure: TimedOut or ConnectionFailed, for
    /// the last of the addresses.
    Connection(const std::vector<SocketAddress>& aAddresses, const Deadline& aDeadline);

    /// Sends all bytes. If the connection is lost, the rest is dropped: the server may have sent
    /// the reason before, and the next receive() reports the loss. Throws Failure (TimedOut).
    void send(std::string_view aBytes);

    /// Returns at least one byte, or none if the server has closed its side. Throws Failure:
    /// TimedOut; NoTls if the connection is lost.
    std::string receive();

private:
    void waitFor(short aEvents);

    Deadline mDeadline;
    Socket mSocket;
};

} // namespace plugins
