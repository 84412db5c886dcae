// SPDX-License-Identifier: MIT
#pragma once

namespace plugins {

/// Makes OpenSSL allocate memory with functions that record a failure, if OpenSSL has not been used
/// in this process yet. It does not report every failed allocation as one; a handshake, which
/// cannot be repeated for confirmation, would then seem to have failed for another reason. The
/// plugin must stay mapped, since OpenSSL frees memory when the process ends.
void recordFailedAllocations();

/// Throws std::bad_alloc if an allocation has failed since the last call, as far as recorded or
/// reported in OpenSSL's queue of errors.
void requireMemory();

} // namespace plugins
