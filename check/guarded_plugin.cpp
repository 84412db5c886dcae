// SPDX-License-Identifier: MIT
#include "check/guarded_plugin.h"

#include "check/platform/process_state.h"
#include "check/readable_text.h"

CheckFailure makeEscapeFailure(const std::exception* aException) {
    const std::string text = "an exception left the plugin; it must catch all of them";
    return CheckFailure(aException ? text + ": " + quotedExcerpt(aException->what()) : text);
}

std::int32_t GuardedPlugin::getPluginType() {
    return callGuarded([this] { return mPlugin.getPluginType(); });
}

void GuardedPlugin::getCertificate(const char* aRequest, const char** aResponse,
                                   const char** aError) {
    const FloatingPointState before = FloatingPointState::inspect();
    callGuarded([&] {
        // Released before an exception of the plugin is examined, which takes memory.
        std::optional<MemoryLimit> limit;
        if (mMemoryLimit) limit.emplace(*mMemoryLimit);
        mPlugin.getCertificate(aRequest, aResponse, aError);
    });
    mChange = FloatingPointState::inspect().describeChangeSince(before);
}
