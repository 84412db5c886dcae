// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"

#include <functional>

/// Returns whether a request makes the plugin fail.
using FailureTest = std::function<bool(const vexil::JsonValue& aRequest)>;

/// Simplifies @p aRequest, an object that makes the plugin fail, step by step as long as the result
/// still does: removes members and elements, and replaces names and values by simpler ones. Stops
/// after @p aMaxTests calls of @p aFails; the result is the smallest request found. Recursive, so
/// the nesting of the request must be limited, as that of makeRandomRequest() is.
[[nodiscard]] ValueHolder shrinkRequest(const vexil::JsonValue& aRequest, int aMaxTests,
                                        const FailureTest& aFails);
