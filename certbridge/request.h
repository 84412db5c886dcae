// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"
#include "vexil/json/json_writer.h"
#include "vexil/streams.h"

#include <string>

class FailurePort;

/// Reports a request that does not ask for a certificate, with code 102 and one of
/// - "top-level object must be a structure",
/// - "missing or invalid \"action\" member": absent or not a string,
/// - "invalid \"action\" member": a string other than "getCertificate".
void validateRequest(FailurePort& aPort, const vexil::JsonValue& aRequest);

/// The request text for the plugin and the objects that produce it, destroyed in reverse order.
struct PluginRequest {
    /// @p aRequest is an object: each of its members except "action" becomes an element of the list
    /// in {"request":[{"name":...,"value":...}]}. A name is cut at its first NUL.
    /// Throws what JsonWriter::write() throws, and std::bad_alloc.
    explicit PluginRequest(const vexil::JsonValue& aRequest);

    ValueHolder envelope;
    std::string text; ///< compact UTF-8 JSON
    vexil::StringOutputStream stream;
    vexil::JsonWriter writer;
};
