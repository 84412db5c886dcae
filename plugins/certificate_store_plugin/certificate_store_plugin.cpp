// SPDX-License-Identifier: MIT

// Shows certificates of a store of the system: "store" is its name, "location" its owner; the
// selectors of plugins/common choose among its certificates.
#include "certificate_store.h"

#include "plugins/common/replying_plugin.h"
#include "plugins/common/selection.h"

namespace {

using namespace plugins;

StoreLocation findLocation(const Request& aRequest) {
    const auto location = aRequest.findText("location").value_or("currentUser");
    if (location == "currentUser") return StoreLocation::CurrentUser;
    if (location == "localMachine") return StoreLocation::LocalMachine;
    throw Failure(ErrorCode::InvalidRequest,
                  "member \"location\" must be \"currentUser\" or \"localMachine\"");
}

class CertificateStorePlugin final : public ReplyingPlugin {
    Members answer(Request& aRequest) override {
        const auto selectors = readSelectors(aRequest);
        if (!isSelective(selectors)) {
            throw Failure(ErrorCode::InvalidRequest, "member \"subject\" is missing");
        }
        const auto store = aRequest.findText("store").value_or("MY");
        return answerSelection(selectors, readStore(store, findLocation(aRequest)));
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateStorePlugin plugin;
    return &plugin;
}
