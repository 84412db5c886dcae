// SPDX-License-Identifier: MIT

// A whole exchange with arbitrary requests and replies. An input is a request, a byte 0xFF, a byte
// that selects the behaviour of the plugin, and the text of its reply.
#include "certbridge/exchange.h"
#include "fuzz/recording_port.h"
#include "fuzz/require.h"
#include "tests/vexil/json/json_helpers.h"
#include <certbridge/plugin.h>

using namespace vexil;

namespace {

enum Answer : std::uint8_t { Response = 1, Error = 2, WrongType = 4, NoObject = 8 };

class FuzzedPlugin final : public Plugin {
public:
    std::int32_t getPluginType() override { return (answer & WrongType) != 0 ? 2 : 1; }
    void getCertificate(const char* aRequest, const char** aResponse,
                        const char** aError) override {
        ++calls;
        request = aRequest;
        if ((answer & Response) != 0) *aResponse = reply.c_str();
        if ((answer & Error) != 0) *aError = reply.c_str();
    }

    std::uint8_t answer = 0;
    std::string reply;
    std::string request; ///< as received
    int calls = 0;
};

FuzzedPlugin plugin;

/// Serves @p aRequest and returns the exit status of the program.
int serve(RecordingPort& aPort, const std::string& aRequest) {
    try {
        serveRequest(aPort, aRequest, "plugin");
        return 0;
    } catch (const ProcessEnd&) {
        require(aPort.hasEnded, "an exchange ends through the port");
        return 2;
    }
}

/// The plugin's request is a list of names and values, one for each member but the action.
void checkPluginRequest(const JsonValue& aRequest) {
    const JsonTree envelope = parseText(plugin.request);
    const JsonValue* const list = envelope->findFirst("request");
    require(list != nullptr && envelope->getSize() == 1, "a request has one member");
    std::uint32_t index = 0;
    for (std::uint32_t i = 0; i < aRequest.getSize(); ++i) {
        if (aRequest.getNameAt(i)->getString() == "action") continue;
        const JsonValue& element = *list->getValueAt(index++);
        require(element.getNameAt(0)->getString() == "name" &&
                    element.getNameAt(1)->getString() == "value" && element.getSize() == 2,
                "an element is a name and a value");
        require(element.getValueAt(0)->getString() == aRequest.getNameAt(i)->getString().c_str(),
                "names are in the caller's order");
        require(writeText(*element.getValueAt(1)) == writeText(*aRequest.getValueAt(i)),
                "values are unchanged");
    }
    require(index == list->getSize(), "there are no more elements than members");
}

/// The output is one line with one document, which has the member for its kind.
void checkDocument(const std::string& aLine, const char* aMember) {
    require(aLine.find('\n') == aLine.size() - 1, "a document is one line");
    const JsonTree document = parseText(aLine);
    require(document->getSize() == 1 && document->findFirst(aMember) != nullptr,
            "a document has one member");
}

} // namespace

Plugin* GetPlugin() {
    return (plugin.answer & NoObject) != 0 ? nullptr : &plugin;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    std::string request(aData, aData + aSize);
    const std::size_t split = std::min(request.find('\xFF'), request.size());
    const std::string rest = request.substr(split);
    request.resize(split);
    plugin = FuzzedPlugin();
    if (rest.size() > 1) plugin.answer = static_cast<std::uint8_t>(rest[1]);
    if (rest.size() > 2) plugin.reply = rest.substr(2);
    RecordingPort output;
    const int status = serve(output, request);
    require(output.hasEnded == (status == 2), "all but a response ends with status 2");
    require(output.text.empty() == (output.error != 0), "there is exactly one answer");
    if (plugin.calls != 0) checkPluginRequest(*parseText(request));
    if (output.error != 0) {
        require(!output.message.empty(), "an error has a message");
        require(output.error == 100 || output.error == 102, "an error has one of two codes");
    } else {
        require(plugin.calls == 1, "the plugin is called once");
        checkDocument(output.text, status == 0 ? "getCertificate" : "error");
    }
    return 0;
}
