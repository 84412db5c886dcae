// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/reply.h"

#include <certbridge/plugin.h>

#include <string>

namespace vexil {
class DynamicLibrary;
class JsonValue;
} // namespace vexil

// The steps of an exchange, in the order in which they are called. A step that fails reports to the
// port and does not return.

class FailurePort;

using GetPluginFunction = decltype(&GetPlugin);

/// Loads the library named @p aLibraryName, in the system's active code page. Reports
/// "cannot load DLL, %s" with the loader's text, code 100. Throws std::bad_alloc.
void loadPluginLibrary(FailurePort& aPort, vexil::DynamicLibrary& aLibrary,
                       const char* aLibraryName);

/// Finds the export of a loaded library. Reports "cannot get DLL's GetPlugin function", code 100.
[[nodiscard]] GetPluginFunction findGetPlugin(FailurePort& aPort, vexil::DynamicLibrary& aLibrary);

/// Calls the export. Reports a null result with code 100 as
/// "no plugin object from DLL's GetPlugin function". Exceptions of the plugin pass through.
[[nodiscard]] Plugin& getPluginObject(FailurePort& aPort, GetPluginFunction aGetPlugin);

/// Asks for the plugin's type, once. Reports a type other than 1 as "wrong plugin type", code 100.
/// Exceptions of the plugin pass through.
void requireCertificatePlugin(FailurePort& aPort, Plugin& aPlugin);

/// The texts that a plugin has set, owned by the plugin; null if not set.
struct PluginTexts {
    const char* response;
    const char* error;
};

/// Sends the request text and returns the plugin's texts. Exceptions of the plugin pass through.
[[nodiscard]] PluginTexts callPlugin(Plugin& aPlugin, const std::string& aRequestText);

/// Returns the reply that counts: the error text if it is set, else the response. Reports a plugin
/// that has set neither as "no output from plugin's getCertificate()", code 100.
[[nodiscard]] Reply selectReply(FailurePort& aPort, const PluginTexts& aTexts);

/// Loads the plugin library @p aLibraryName, sends the plugin every member of the object @p
/// aRequest except "action", and prints its reply through the port. Returns only after a response
/// has been printed, everything released and the library unloaded. An error reply, every failure,
/// and every exception of a plugin or for lack of memory leave through the port with the library
/// still loaded.
void performGetCertificate(FailurePort& aPort, const vexil::JsonValue& aRequest,
                           const char* aLibraryName);

/// Serves one caller: parses @p aRequestText, releases it, validates the request and performs the
/// exchange that it asks for. Returns as performGetCertificate() does.
void serveRequest(FailurePort& aPort, std::string aRequestText, const char* aLibraryName);
