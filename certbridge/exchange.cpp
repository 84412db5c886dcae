// SPDX-License-Identifier: MIT
#include "certbridge/exchange.h"

#include "certbridge/failure_port.h"
#include "certbridge/parse_document.h"
#include "certbridge/request.h"
#include "vexil/dynamic_library.h"
#include "vexil/platform/platform.h"

#include <cstdint>
#include <utility>

using vexil::DynamicLibrary;
using vexil::JsonValue;
using vexil::platform::resetFloatingPoint;

namespace {

constexpr std::int32_t certificatePluginType = 1;

Plugin& loadPlugin(FailurePort& aPort, DynamicLibrary& aLibrary, const char* aLibraryName) {
    loadPluginLibrary(aPort, aLibrary, aLibraryName);
    Plugin& plugin = getPluginObject(aPort, findGetPlugin(aPort, aLibrary));
    requireCertificatePlugin(aPort, plugin);
    return plugin;
}

// Releases the text, which may be large, once it is parsed.
ValueHolder parseRequest(FailurePort& aPort, std::string aText) {
    const std::string text = std::move(aText);
    return parseDocument(aPort, ContentError, text);
}

// Returns after a response, with everything but the library released.
void performWithLibrary(FailurePort& aPort, DynamicLibrary& aLibrary, const JsonValue& aRequest,
                        const char* aLibraryName) {
    Plugin& plugin = loadPlugin(aPort, aLibrary, aLibraryName);
    const PluginRequest request(aRequest);
    const Reply reply = selectReply(aPort, callPlugin(plugin, request.text));
    const ReplyResult result = translateReply(aPort, reply);
    aPort.printJson(*result.document);
    if (reply.mode.isError) aPort.endAfterFailure();
}

} // namespace

void loadPluginLibrary(FailurePort& aPort, DynamicLibrary& aLibrary, const char* aLibraryName) {
    const bool isLoaded = aLibrary.load(aLibraryName);
    resetFloatingPoint(); // the library's constructors may have changed it
    if (!isLoaded) {
        aPort.fatalErrorFormat(EnvironmentError, "cannot load DLL, %s", aLibrary.getErrorText());
    }
}

GetPluginFunction findGetPlugin(FailurePort& aPort, DynamicLibrary& aLibrary) {
    void* const symbol = aLibrary.getSymbol("GetPlugin");
    if (!symbol) aPort.fatalError(EnvironmentError, "cannot get DLL's GetPlugin function");
    return reinterpret_cast<GetPluginFunction>(symbol);
}

Plugin& getPluginObject(FailurePort& aPort, GetPluginFunction aGetPlugin) {
    Plugin* const plugin = aGetPlugin();
    resetFloatingPoint();
    if (!plugin) {
        aPort.fatalError(EnvironmentError, "no plugin object from DLL's GetPlugin function");
    }
    return *plugin;
}

void requireCertificatePlugin(FailurePort& aPort, Plugin& aPlugin) {
    const std::int32_t type = aPlugin.getPluginType();
    resetFloatingPoint();
    if (type != certificatePluginType) aPort.fatalError(EnvironmentError, "wrong plugin type");
}

PluginTexts callPlugin(Plugin& aPlugin, const std::string& aRequestText) {
    PluginTexts texts{nullptr, nullptr};
    aPlugin.getCertificate(aRequestText.c_str(), &texts.response, &texts.error);
    resetFloatingPoint();
    return texts;
}

Reply selectReply(FailurePort& aPort, const PluginTexts& aTexts) {
    if (!aTexts.error && !aTexts.response) {
        aPort.fatalError(EnvironmentError, "no output from plugin's getCertificate()");
    }
    if (aTexts.error) return {errorMode, aTexts.error};
    return {responseMode, aTexts.response};
}

void performGetCertificate(FailurePort& aPort, const JsonValue& aRequest,
                           const char* aLibraryName) {
    DynamicLibrary library;
    try {
        performWithLibrary(aPort, library, aRequest, aLibraryName);
    } catch (...) {
        // Must not reach the caller: unwinding would unload the library, and with it the code that
        // destroys an exception of the plugin's.
        aPort.endAfterFailure();
    }
}

void serveRequest(FailurePort& aPort, std::string aRequestText, const char* aLibraryName) {
    const ValueHolder request = parseRequest(aPort, std::move(aRequestText));
    validateRequest(aPort, *request);
    performGetCertificate(aPort, *request, aLibraryName);
}
