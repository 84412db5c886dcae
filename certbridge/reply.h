// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"

#include <cstdint>
#include <optional>

class FailurePort;

/// The two kinds of reply of a plugin.
struct ReplyMode {
    const char* listName;  ///< the member of the reply that holds the list
    const char* resultKey; ///< the only member of the result document
    bool isError;
};

inline constexpr ReplyMode errorMode{"error", "error", true};
inline constexpr ReplyMode responseMode{"response", "getCertificate", false};

/// The reply text that counts; owned by the plugin.
struct Reply {
    const ReplyMode& mode;
    const char* text; ///< NUL-terminated
};

/// An element of a reply's list that does not reach the caller unchanged.
struct AlteredElement {
    enum Reason {
        NameMissing,     ///< skipped: no member "name"
        NameNotAString,  ///< skipped: "name" is not a string
        ValueMissing,    ///< skipped: no member "value"
        NameContainsNul, ///< kept, but its name is cut at the first NUL
    };

    std::uint32_t index; ///< in the list, from 0
    Reason reason;
};

/// A translated reply; the document is released before the tree.
struct ReplyResult {
    ValueHolder tree; ///< the parsed reply
    /// {"getCertificate":{...}} or {"error":{...}} with one member for each element that counts.
    ValueHolder document;
    std::optional<AlteredElement> firstAltered;
};

/// Parses @p aReply and translates its list of names and values into the result document. In an
/// error reply, "errorCode" becomes "code" and "erroMessage" becomes "message". Reports
/// - with code 100: the parser's message for a text that does not parse,
/// - with code 102: "invalid or missing \"%s\" member" and
///   "element %u of \"%s\" is not a structure object".
/// Throws std::bad_alloc.
[[nodiscard]] ReplyResult translateReply(FailurePort& aPort, const Reply& aReply);
