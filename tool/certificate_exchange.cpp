#include "tool/certificate_exchange.h"

#include "tool/name_value_list.h"
#include "tool/output.h"
#include "tool/plugin.h"
#include "vexil/dynamic_library.h"
#include "vexil/json/json_parser.h"
#include "vexil/json/json_value.h"
#include "vexil/json/json_writer.h"
#include "vexil/streams.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

using vexil::DynamicLibrary;
using vexil::JsonType;
using vexil::JsonValue;

namespace {

constexpr std::int32_t certificatePluginType = 1;

Plugin& loadPlugin(DynamicLibrary& aLibrary, const char* aLibraryName) {
    if (!aLibrary.load(aLibraryName)) {
        fatalErrorFormat(EnvironmentError, "cannot load DLL, %s", aLibrary.getErrorText());
    }
    void* const symbol = aLibrary.getSymbol("GetPlugin");
    if (!symbol) fatalError(EnvironmentError, "cannot get DLL's GetPlugin function");

    Plugin* const plugin = reinterpret_cast<decltype(&GetPlugin)>(symbol)();
    if (!plugin) fatalError(EnvironmentError, "no plugin object from DLL's GetPlugin function");
    if (plugin->getPluginType() != certificatePluginType) {
        fatalError(EnvironmentError, "wrong plugin type");
    }
    return *plugin;
}

// A name is cut at its first NUL when it is copied, but "action" means the whole name.
ValueHolder makeRequestList(const JsonValue& aRequest) {
    ValueHolder list(JsonValue::createArray());
    for (std::uint32_t index = 0; index < aRequest.getSize(); ++index) {
        const JsonValue* const name = aRequest.getNameAt(index);
        if (name->getType() != JsonType::String || name->getString() == "action") continue;
        appendNameValue(list, name->getString().c_str(), aRequest.getValueAt(index)->clone());
    }
    return list;
}

ValueHolder makeEnvelope(const JsonValue& aRequest) {
    ValueHolder list = makeRequestList(aRequest);
    ValueHolder envelope(JsonValue::createObject());
    appendMember(envelope, "request", list);
    return envelope;
}

// The text sent to the plugin and all that it is made with, released from the last to the first.
struct PluginRequest {
    explicit PluginRequest(const JsonValue& aRequest)
        : envelope(makeEnvelope(aRequest)), stream(&text), writer(stream, 0) {
        writer.write(*envelope);
    }

    ValueHolder envelope;
    std::string text;
    vexil::StringOutputStream stream;
    vexil::JsonWriter writer;
};

// The two ways a plugin answers.
struct ReplyMode {
    const char* listName;  // the member of the reply that holds the list
    const char* resultKey; // the member of the result document
    bool isError;
};
constexpr ReplyMode errorMode{"error", "error", true};
constexpr ReplyMode responseMode{"response", "getCertificate", false};

struct Reply {
    const ReplyMode& mode;
    const char* text; // the plugin's
};

Reply askPlugin(Plugin& aPlugin, const std::string& aRequestText) {
    const char* response = nullptr;
    const char* error = nullptr;
    aPlugin.getCertificate(aRequestText.c_str(), &response, &error);
    if (error) return {errorMode, error};
    if (response) return {responseMode, response};
    fatalError(EnvironmentError, "no output from plugin's getCertificate()");
}

ValueHolder parseReply(const char* aText) {
    try {
        return vexil::parseJsonText(vexil::ByteRange(aText, std::strlen(aText)));
    } catch (const std::runtime_error& failure) {
        fatalError(EnvironmentError, failure.what());
    }
}

const JsonValue& findList(const JsonValue& aReply, const char* aListName) {
    const JsonValue* const list = findMember(&aReply, aListName);
    if (!list || list->getType() != JsonType::Array) {
        fatalErrorFormat(ContentError, "invalid or missing \"%s\" member", aListName);
    }
    return *list;
}

// Plugins spell it "erroMessage"; "errorMessage" passes as it is.
const char* renamedErrorKey(const char* aKey) {
    const std::string_view key(aKey);
    if (key == "errorCode") return "code";
    if (key == "erroMessage") return "message";
    return aKey;
}

// Adds what one element of the list says, if it says anything.
void translateElement(const JsonValue& aElement, const ReplyMode& aMode, ValueHolder& aResult) {
    const JsonValue* const name = findMember(&aElement, "name");
    const JsonValue* const value = findMember(&aElement, "value");
    if (!name || !value || name->getType() != JsonType::String) return;
    const char* const key = name->getString().c_str();
    appendMember(aResult, aMode.isError ? renamedErrorKey(key) : key, value->clone());
}

ValueHolder makeResult(const JsonValue& aReply, const ReplyMode& aMode) {
    const JsonValue& list = findList(aReply, aMode.listName);
    ValueHolder result(JsonValue::createObject());
    for (std::uint32_t index = 0; index < list.getSize(); ++index) {
        const JsonValue& element = *list.getValueAt(index);
        if (element.getType() != JsonType::Object) {
            fatalErrorFormat(ContentError, "element %u of \"%s\" is not a structure object", index,
                             aMode.listName);
        }
        translateElement(element, aMode, result);
    }
    ValueHolder document(JsonValue::createObject());
    appendMember(document, aMode.resultKey, result);
    return document;
}

// Returns after a response, with everything but the library released.
void exchange(DynamicLibrary& aLibrary, const JsonValue& aRequest, const char* aLibraryName) {
    Plugin& plugin = loadPlugin(aLibrary, aLibraryName);
    const PluginRequest request(aRequest);
    const Reply reply = askPlugin(plugin, request.text);
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
