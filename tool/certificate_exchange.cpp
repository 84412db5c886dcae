#include "tool/certificate_exchange.h"

#include "certbridge/exchange.h"
#include "tool/output.h"

using vexil::DynamicLibrary;
using vexil::JsonValue;

namespace {

Plugin& loadPlugin(DynamicLibrary& aLibrary, const char* aLibraryName) {
    loadPluginLibrary(aLibrary, aLibraryName);
    Plugin& plugin = getPluginObject(findGetPlugin(aLibrary));
    checkPluginType(plugin);
    return plugin;
}

// Returns after a response, with everything but the library released.
void exchange(DynamicLibrary& aLibrary, const JsonValue& aRequest, const char* aLibraryName) {
    Plugin& plugin = loadPlugin(aLibrary, aLibraryName);
    const PluginRequest request(aRequest);
    const Reply reply = chooseReply(callPlugin(plugin, request.text));
    const ValueHolder tree = parseReply(reply.text);
    const ValueHolder document = makeResult(*tree, reply.mode);
    printJson(*document);
    if (reply.mode.isError) endAfterFailure();
}

} // namespace

void performGetCertificate(const JsonValue& aRequest, const char* aLibraryName) {
    DynamicLibrary library;
    try {
        exchange(library, aRequest, aLibraryName);
    } catch (...) {
        // Not left to the caller: on the way there the library would be unloaded, and with it the
        // code of whatever the plugin threw.
        endAfterFailure();
    }
}
