// SPDX-License-Identifier: MIT
#include "certificate_der.h"

#include "openssl_handles.h"

namespace plugins {

std::vector<unsigned char> toDer(const X509& aCertificate) {
    unsigned char* bytes = nullptr;
    const auto length = i2d_X509(&aCertificate, &bytes);
    require(length > 0);
    const MemoryHandle owner(bytes);
    return {bytes, bytes + length};
}

} // namespace plugins
