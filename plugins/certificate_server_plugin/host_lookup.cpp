// SPDX-License-Identifier: MIT
#include "host_lookup.h"

#include "plugins/common/failure.h"
#include "plugins/common/limited_call.h"
#include "vexil/assert.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>

#include <netdb.h>

namespace plugins {

namespace {

struct FreeAddresses {
    void operator()(addrinfo* aAddresses) const { freeaddrinfo(aAddresses); }
};

using AddressesHandle = std::unique_ptr<addrinfo, FreeAddresses>;

// The result of getaddrinfo(): a list, or an error and the value of errno.
struct Resolution {
    AddressesHandle addresses;
    int error = 0;
    int systemError = 0;
};

Resolution resolve(const std::string& aHost, const std::string& aPort, int aFlags) {
    addrinfo hints = {};
    hints.ai_flags = aFlags;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* addresses = nullptr;
    Resolution resolution;
    resolution.error = getaddrinfo(aHost.c_str(), aPort.c_str(), &hints, &addresses);
    resolution.systemError = errno;
    if (resolution.error == 0) resolution.addresses.reset(addresses);
    return resolution;
}

[[noreturn]] void failLookup(const Resolution& aResolution) {
    switch (aResolution.error) {
    case EAI_MEMORY:
        throw std::bad_alloc();
    case EAI_NONAME:
#ifdef EAI_NODATA // a name without addresses; an extension of some systems
    case EAI_NODATA:
#endif
        throw Failure(ErrorCode::NotFound, "no such host");
    case EAI_SYSTEM:
        if (aResolution.systemError == ENOMEM) throw std::bad_alloc();
        throw Failure(ErrorCode::ConnectionFailed,
                      "the name lookup failed: " +
                          std::generic_category().message(aResolution.systemError));
    default:
        throw Failure(ErrorCode::ConnectionFailed,
                      std::string("the name lookup failed: ") + gai_strerror(aResolution.error));
    }
}

std::vector<SocketAddress> copyAddresses(const Resolution& aResolution) {
    if (aResolution.error != 0) failLookup(aResolution);
    std::vector<SocketAddress> copies;
    for (const auto* item = aResolution.addresses.get(); item != nullptr; item = item->ai_next) {
        auto& copy = copies.emplace_back();
        VEXIL_ASSERT(item->ai_addrlen <= sizeof copy.storage);
        std::memcpy(&copy.storage, item->ai_addr, item->ai_addrlen);
        copy.size = item->ai_addrlen;
    }
    return copies;
}

// Repeats a lookup that has failed: the C library reports some failed allocations as a temporary
// failure or as a missing host.
std::vector<SocketAddress> resolveName(const std::string& aHost, const std::string& aPort) {
    auto resolution = resolve(aHost, aPort, AI_NUMERICSERV);
    if (resolution.error != 0) resolution = resolve(aHost, aPort, AI_NUMERICSERV);
    return copyAddresses(resolution);
}

// getaddrinfo() has no time limit and cannot be interrupted.
std::vector<SocketAddress> resolveInThread(const std::string& aHost, const std::string& aPort,
                                           const Deadline& aDeadline) {
    return callUntil(aDeadline.getEnd(), "the name lookup timed out",
                     [=] { return resolveName(aHost, aPort); });
}

} // namespace

bool isAddress(const std::string& aHost) {
    const auto resolution = resolve(aHost, "0", AI_NUMERICHOST | AI_NUMERICSERV);
    if (resolution.error != 0 && resolution.error != EAI_NONAME) failLookup(resolution);
    return resolution.error == 0;
}

std::vector<SocketAddress> lookUpHost(const std::string& aHost, std::int32_t aPort,
                                      const Deadline& aDeadline) {
    const auto port = std::to_string(aPort);
    if (!isAddress(aHost)) return resolveInThread(aHost, port, aDeadline);
    return copyAddresses(resolve(aHost, port, AI_NUMERICHOST | AI_NUMERICSERV));
}

} // namespace plugins
