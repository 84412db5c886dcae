#pragma once

#include "certbridge/exchange.h"

#include <string>

/// Takes the reply in @p aTexts as certbridge would. Throws CheckFailure where certbridge ends with
/// an error, and more strictly
/// - where it would leave an element out without a word: one without "value" or without a string
///   "name", or would cut its name at a NUL character,
/// - if an error reply has no number "errorCode" or no string "erroMessage", from which callers get
///   "code" and "message".
/// Returns a note for the report, mostly empty.
std::string checkReply(const PluginTexts& aTexts);
