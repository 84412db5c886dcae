// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/exchange.h"

#include <string>

/// Translates the reply in @p aTexts as certbridge would, once, and examines the result. Throws
/// CheckFailure where certbridge would report an error, and also
/// - if an element would be skipped, its name would be cut at a NUL, or one of its numbers would
///   lose digits, all of which certbridge does silently,
/// - if an error reply has no number "errorCode" or no string "erroMessage", which become the
/// "code"
///   and "message" that callers read.
/// Returns a note for the report, usually empty.
[[nodiscard]] std::string checkReply(const PluginTexts& aTexts);
