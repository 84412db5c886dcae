// Shows a certificate of the system's store: "subject" is a part of its subject's name, "store"
// the store's name.
#include "plugins/common/windows/describe_certificate.h"
#include "certificate_store.h"

namespace {

class CertificateStorePlugin final : public plugins::ReplyingPlugin {
    plugins::Response answer(const plugins::Request& aRequest) override {
        const auto subject = aRequest.getText("subject");
        if (subject.empty()) { // which every name holds
            throw plugins::Failure(plugins::ErrorCode::InvalidRequest,
                                   "member \"subject\" is empty");
        }
        const auto store = aRequest.findText("store").value_or("MY");
        const auto found = plugins::findCertificate(store, subject);
        auto response = plugins::describeCertificate(*found.certificate);
        if (found.matches > 1) response.add("matches", found.matches);
        return response;
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateStorePlugin plugin;
    return &plugin;
}
