// SPDX-License-Identifier: MIT
#pragma once

#include "deadline.h"

#include <cstdint>
#include <string>
#include <vector>

#include <sys/socket.h>

namespace plugins {

/// The address of a host, with a port, as connect() takes it.
struct SocketAddress {
    sockaddr_storage storage = {};
    socklen_t size = 0;
};

/// Returns whether @p aHost is an IPv4 or IPv6 address instead of a name.
bool isAddress(const std::string& aHost);

/// Returns the addresses of @p aHost, at least one, in the order in which the system recommends
/// them. Throws Failure: NotFound "no such host"; TimedOut; ConnectionFailed with the system's
/// message if the lookup fails in another way. A lookup that has timed out continues in a thread
/// until the system's own limit ends it; the plugin is linked so that it stays mapped.
std::vector<SocketAddress> lookUpHost(const std::string& aHost, std::int32_t aPort,
                                      const Deadline& aDeadline);

} // namespace plugins
