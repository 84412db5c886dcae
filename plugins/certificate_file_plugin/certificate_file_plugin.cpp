// SPDX-License-Identifier: MIT

// Shows certificates in a file: "file" is its name, "password" or "passwordFile" opens it; the
// selectors of plugins/common choose among its certificates.
#include "certificate_file.h"

#include "plugins/common/library_memory.h"
#include "plugins/common/replying_plugin.h"
#include "plugins/common/selection.h"

namespace {

using namespace plugins;

class CertificateFilePlugin final : public ReplyingPlugin {
    Members answer(Request& aRequest) override {
        recordFailedAllocations();
        const auto fileName = aRequest.getText("file");
        const auto selectors = readSelectors(aRequest);
        const auto password = findSecret(aRequest, "password", "passwordFile").value_or(Secret());
        const bool isSearch = isFolder(fileName) && isSelective(selectors);
        return answerSelection(selectors, isSearch ? readCertificateFolder(fileName, password)
                                                   : readCertificateFile(fileName, password));
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateFilePlugin plugin;
    return &plugin;
}
