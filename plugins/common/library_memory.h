// SPDX-License-Identifier: MIT
#pragma once

namespace plugins {

// Failed allocations of the library that decodes certificates. OpenSSL does not report every one as
// such: a handshake, which cannot be repeated for confirmation, would then seem to have failed for
// another reason. The library of Windows does, and there both functions do nothing.

/// Makes OpenSSL allocate memory with functions that record a failure, if OpenSSL has not been used
/// in this process yet, and prepares the calling thread for reports of failures. To be called in
/// each thread that uses OpenSSL. The plugin must stay mapped, since OpenSSL frees memory when the
/// process ends.
void recordFailedAllocations();

/// Throws std::bad_alloc if an allocation has failed since the last call, as far as recorded or
/// reported in OpenSSL's queue of errors.
void requireMemory();

} // namespace plugins
