// SPDX-License-Identifier: MIT

// Shows certificates on PKCS#11 tokens: "uri", "module" and "token" select the tokens, the
// selectors of plugins/common choose among their certificates, "pin" or "pinFile" opens a token.
#include "output_guard.h"
#include "token_request.h"
#include "token_search.h"

#include "plugins/common/library_memory.h"
#include "plugins/common/limited_call.h"
#include "plugins/common/replying_plugin.h"

#include <memory>
#include <optional>

namespace {

using namespace plugins;

class CertificateTokenPlugin final : public ReplyingPlugin {
    Members answer(Request& aRequest) override {
        const auto request = std::make_shared<TokenRequest>(readTokenRequest(aRequest));
        const OutputGuard output(stdout); // contains nothing but the answer
        std::optional<OutputGuard> errors;
        if (!request->modulePath) errors.emplace(stderr); // several modules may print
        const auto end = std::chrono::steady_clock::now() + request->timeout;
        return callUntil(end, "the PKCS#11 module did not answer in time", [request] {
            recordFailedAllocations();
            return searchTokens(*request);
        });
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateTokenPlugin plugin;
    return &plugin;
}
