#include "certbridge/exchange.h"

#include "tool/output.h"
#include "vexil/json/json_parser.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

using vexil::DynamicLibrary;
using vexil::JsonType;
using vexil::JsonValue;

namespace {

constexpr std::int32_t certificatePluginType = 1;

constexpr ReplyMode errorMode{"error", "error", true};
constexpr ReplyMode responseMode{"response", "getCertificate", false};

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

} // namespace

void loadPluginLibrary(DynamicLibrary& aLibrary, const char* aLibraryName) {
    if (!aLibrary.load(aLibraryName)) {
        fatalErrorFormat(EnvironmentError, "cannot load DLL, %s", aLibrary.getErrorText());
    }
}

GetPluginFunction findGetPlugin(DynamicLibrary& aLibrary) {
    void* const symbol = aLibrary.getSymbol("GetPlugin");
    if (!symbol) fatalError(EnvironmentError, "cannot get DLL's GetPlugin function");
    return reinterpret_cast<GetPluginFunction>(symbol);
}

Plugin& getPluginObject(GetPluginFunction aGetPlugin) {
    Plugin* const plugin = aGetPlugin();
    if (!plugin) fatalError(EnvironmentError, "no plugin object from DLL's GetPlugin function");
    return *plugin;
}

void checkPluginType(Plugin& aPlugin) {
    if (aPlugin.getPluginType() != certificatePluginType) {
        fatalError(EnvironmentError, "wrong plugin type");
    }
}

PluginRequest::PluginRequest(const JsonValue& aRequest)
    : envelope(makeEnvelope(aRequest)), stream(&text), writer(stream, 0) {
    writer.write(*envelope);
}

PluginTexts callPlugin(Plugin& aPlugin, const std::string& aRequestText) {
    PluginTexts texts{nullptr, nullptr};
    aPlugin.getCertificate(aRequestText.c_str(), &texts.response, &texts.error);
    return texts;
}

Reply chooseReply(const PluginTexts& aTexts) {
    if (aTexts.error) return {errorMode, aTexts.error};
    if (aTexts.response) return {responseMode, aTexts.response};
    fatalError(EnvironmentError, "no output from plugin's getCertificate()");
}

ValueHolder parseReply(const char* aText) {
    try {
        return vexil::parseJsonText(vexil::ByteRange(aText, std::strlen(aText)));
    } catch (const std::runtime_error& failure) {
        fatalError(EnvironmentError, failure.what());
    }
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
