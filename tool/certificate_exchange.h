#pragma once

namespace vexil {
class JsonValue;
}

/// Loads the plugin library @p aLibraryName (in the system's ANSI code page), sends it every member
/// of the object @p aRequest but "action", and writes its answer to standard output. Returns only
/// after a response has been written and the library has been unloaded. After an error reply, and
/// on every failure once its document is written, the process ends here with status 2.
void performGetCertificate(const vexil::JsonValue& aRequest, const char* aLibraryName);
