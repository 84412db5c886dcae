#include "check/plugin_checks.h"

#include "certbridge/exchange.h"
#include "certbridge/request.h"
#include "check/readable_text.h"
#include "check/reply_check.h"
#include "check/sample_requests.h"
#include "check/throwing_port.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <thread>
#include <vector>

using vexil::JsonValue;

namespace {

ThrowingPort port;

// ---- Loading the plugin

std::string checkLoading(Subject& aSubject) {
    loadPluginLibrary(port, *aSubject.library, aSubject.libraryName);
    return {};
}

GetPluginFunction loadExport(Subject& aSubject) {
    checkLoading(aSubject);
    return findGetPlugin(port, *aSubject.library);
}

std::string checkExport(Subject& aSubject) {
    loadExport(aSubject);
    return {};
}

std::string checkObject(Subject& aSubject) {
    getPluginObject(port, loadExport(aSubject));
    return {};
}

Plugin& openPlugin(Subject& aSubject) {
    Plugin& plugin = getPluginObject(port, loadExport(aSubject));
    requireCertificatePlugin(port, plugin);
    return plugin;
}

std::string checkType(Subject& aSubject) {
    openPlugin(aSubject);
    return {};
}

// ---- Requests

std::string ask(Plugin& aPlugin, const JsonValue& aRequest) {
    const PluginRequest request(aRequest);
    return checkReply(callPlugin(aPlugin, request.text));
}

template <ValueHolder (*makeRequest)()>
std::string checkReplyTo(Subject& aSubject) {
    return ask(openPlugin(aSubject), *makeRequest());
}

std::string checkTypicalRequest(Subject& aSubject) {
    return ask(openPlugin(aSubject), aSubject.typicalRequest);
}

// The first reply may go with the second call, as nobody reads it any more.
std::string checkSecondCall(Subject& aSubject) {
    Plugin& plugin = openPlugin(aSubject);
    ask(plugin, aSubject.typicalRequest);
    return ask(plugin, aSubject.typicalRequest);
}

// ---- The life of its texts

constexpr std::size_t largestBlock = 262144;

// Takes memory of all sizes that a reply of this one may have had, writes to it and gives it back.
void overwriteFreeMemory(std::size_t aReplySize) {
    constexpr std::size_t step = 16; // of the blocks that allocators make
    const auto largest = std::min(4 * (aReplySize + step), largestBlock);
    std::vector<std::string> blocks;
    for (std::size_t size = step; size <= largest; size += std::max(size / 8, step)) {
        blocks.insert(blocks.end(), 8, std::string(size, '#'));
    }
}

void compareReply(const char* aText, const std::string& aBefore, const char* aWhen) {
    if (std::strncmp(aText, aBefore.c_str(), aBefore.size() + 1) == 0) return;
    throw CheckFailure(std::string("the reply has changed ") + aWhen + "; it was " +
                       quotedExcerpt(aBefore));
}

std::string checkReplyLifetime(Subject& aSubject) {
    Plugin& plugin = openPlugin(aSubject);
    auto request = std::make_unique<PluginRequest>(aSubject.typicalRequest);
    const PluginTexts texts = callPlugin(plugin, request->text);
    const char* const text = selectReply(port, texts).text;
    const std::string before = text;

    std::fill(request->text.begin(), request->text.end(), '#');
    compareReply(text, before, "with the text of the request, which is gone after the call");
    request.reset();
    overwriteFreeMemory(before.size());
    auto note = checkReply(texts);
    compareReply(text, before, "while other memory was used; it must stay in memory of its own");
    return note;
}

// ---- The end

// Time for a thread that was left behind to run into code that is not there any more.
constexpr std::chrono::milliseconds timeToCrash{100};

std::string checkUnloading(Subject& aSubject) {
    checkTypicalRequest(aSubject);
    aSubject.library.reset();
    std::this_thread::sleep_for(timeToCrash);
    return {};
}

constexpr std::array checks{
    Check{
        "load", "the library loads", checkLoading, nullptr,
        "126 means that it or a library that it needs is not found, 127 that a symbol is missing, "
        "193 that it is no library for the processor and word size of this program"},
    Check{"export", "it exports GetPlugin", checkExport, "load",
          "the name must be exported as it is, without C++ or other decoration"},
    Check{"object", "GetPlugin returns an object", checkObject, "export",
          "return the address of an object that lives as long as the library is loaded"},
    Check{"type", "getPluginType returns 1", checkType, "object",
          "it must be the ninth entry in the object's table of operations"},
    Check{"typical-request", "a typical request gets a valid reply", checkTypicalRequest, "type"},
    Check{"empty-request", "a request without members gets a valid reply",
          checkReplyTo<makeEmptyRequest>, "type"},
    Check{"hostile-request", "names and values of every kind get a valid reply",
          checkReplyTo<makeHostileRequest>, "type"},
    Check{"deep-request", "a value of 100000 nested arrays gets a valid reply",
          checkReplyTo<makeDeepRequest>, "type"},
    Check{"large-request", "10000 members and a text of 1 MiB get a valid reply",
          checkReplyTo<makeLargeRequest>, "type"},
    Check{"second-call", "a second call gets a valid reply", checkSecondCall, "typical-request"},
    Check{"reply-lifetime", "the reply stays as it is until the library is unloaded",
          checkReplyLifetime, "typical-request"},
    Check{"unload", "the process ends well after the library was unloaded", checkUnloading,
          "typical-request", nullptr, true},
    Check{"exit", "the process ends well while the library is loaded", checkTypicalRequest,
          "typical-request", nullptr, true},
    Check{"standard-output", "standard output is left alone in all of this", nullptr, "load"},
};

Outcome failed(const std::string& aText) {
    return {Outcome::Failed, aText};
}

} // namespace

std::span<const Check> getChecks() {
    return checks;
}

const Check* findCheck(const std::string& aId) {
    const auto found = std::find_if(checks.begin(), checks.end(),
                                    [&](const Check& aCheck) { return aCheck.id == aId; });
    return found == checks.end() ? nullptr : &*found;
}

Outcome performCheck(const Check& aCheck, Subject& aSubject) {
    constexpr const char* escaped = "an exception left the plugin; it must catch all of them";
    try {
        return {Outcome::Passed, aCheck.run(aSubject)};
    } catch (const CheckFailure& failure) {
        const std::string text = failure.what();
        return failed(aCheck.advice ? text + "; " + aCheck.advice : text);
    } catch (const std::exception& exception) {
        return failed(std::string(escaped) + ": " + quotedExcerpt(exception.what()));
    } catch (...) {
        return failed(escaped);
    }
}
