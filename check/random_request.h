// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"

#include <cstdint>

/// Makes a request of up to 12 members with random names and values. The same @p aSeed and
/// @p aNumber give the same request on every system. No name suggests a secret.
[[nodiscard]] ValueHolder makeRandomRequest(std::uint64_t aSeed, std::uint32_t aNumber);
