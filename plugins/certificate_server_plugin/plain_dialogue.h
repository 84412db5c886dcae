// SPDX-License-Identifier: MIT
#pragma once

#include "connection.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace plugins {

/// The part of a conversation that precedes TLS. All operations throw Failure: TimedOut; NoTls if
/// the server closes the connection or sends more than 64 KiB.
class PlainDialogue {
public:
    explicit PlainDialogue(Connection& aConnection) : mConnection(aConnection) {}

    void send(std::string_view aText) { mConnection.send(aText); }

    /// Receives up to the next @p aEnd; returns the text including it.
    std::string receiveThrough(std::string_view aEnd);
    /// Receives a line; returns it without the line feed and a carriage return before it.
    std::string receiveLine();
    std::string receiveBytes(std::size_t aCount);

    /// To be called before the handshake, in which the client speaks first. Throws Failure (NoTls)
    /// if the server has sent more than was received: it would count as protected by TLS.
    void finish() const;

private:
    void receiveMore();
    std::string take(std::size_t aCount);

    Connection& mConnection;
    std::string mPending;
    std::size_t mReceived = 0; // bytes in total
};

} // namespace plugins
