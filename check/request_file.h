// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"

#include <string>

/// Reads a request, which is a JSON object, from a file named in the active code page. Throws
/// std::runtime_error with the name and the reason.
[[nodiscard]] ValueHolder readRequestFile(const std::string& aFileName);
