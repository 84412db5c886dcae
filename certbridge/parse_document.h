// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/failure_port.h"
#include "certbridge/name_value_list.h"

#include <string_view>

/// Parses a text that holds exactly one JSON value. Any exception of the std::runtime_error family
/// is reported with @p aCode and its message. Throws std::bad_alloc.
[[nodiscard]] ValueHolder parseDocument(FailurePort& aPort, FatalErrorCode aCode,
                                        std::string_view aText);
