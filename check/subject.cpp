// SPDX-License-Identifier: MIT
#include "check/subject.h"

#include "certbridge/request.h"
#include "check/platform/process_state.h"
#include "check/readable_text.h"
#include "check/reply_check.h"
#include "vexil/platform/platform.h"

#include <new>
#include <string_view>

namespace platform = vexil::platform;

namespace {

ThrowingPort port;

bool endsWithNumber(std::string_view aText, long aNumber) {
    return aText.ends_with(" " + std::to_string(aNumber));
}

} // namespace

void loadLibrary(Subject& aSubject) {
    vexil::DynamicLibrary& library = *aSubject.library;
    try {
        callGuarded([&] { loadPluginLibrary(port, library, aSubject.libraryName); });
    } catch (const CheckFailure& failure) {
        const std::string_view text = library.getErrorText();
        if (endsWithNumber(text, platform::errorOutOfMemory)) throw std::bad_alloc();
        if (!endsWithNumber(text, platform::errorModuleNotFound) &&
            !endsWithNumber(text, platform::errorSymbolNotFound)) {
            throw;
        }
        const std::string reason = describeLoadFailure(aSubject.libraryName);
        if (reason.empty()) throw;
        throw CheckFailure(failure.what() + ("; the system reports " + quotedExcerpt(reason)));
    }
}

GetPluginFunction loadExport(Subject& aSubject) {
    loadLibrary(aSubject);
    return findGetPlugin(port, *aSubject.library);
}

GuardedPlugin& loadPlugin(Subject& aSubject) {
    const GetPluginFunction function = loadExport(aSubject);
    Plugin& plugin =
        callGuarded([function]() -> Plugin& { return getPluginObject(port, function); });
    return aSubject.plugin.emplace(plugin);
}

GuardedPlugin& openPlugin(Subject& aSubject) {
    GuardedPlugin& plugin = loadPlugin(aSubject);
    requireCertificatePlugin(port, plugin);
    return plugin;
}

std::string sendRequest(Plugin& aPlugin, const vexil::JsonValue& aRequest) {
    const PluginRequest request(aRequest);
    return checkReply(callPlugin(aPlugin, request.text));
}
