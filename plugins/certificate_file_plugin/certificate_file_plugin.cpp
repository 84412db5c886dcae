// Shows the certificate in a file: "file" names it, "password" opens a PKCS#12 file.
#include "plugins/common/openssl/describe_certificate.h"
#include "certificate_file.h"

namespace {

class CertificateFilePlugin final : public plugins::ReplyingPlugin {
    plugins::Response answer(const plugins::Request& aRequest) override {
        const auto fileName = aRequest.getText("file");
        if (fileName.empty()) {
            throw plugins::Failure(plugins::ErrorCode::InvalidRequest, "member \"file\" is empty");
        }
        const auto password = aRequest.findText("password").value_or("");
        try {
            return plugins::describeCertificate(*plugins::readCertificate(fileName, password));
        } catch (const plugins::Failure& failure) {
            throw plugins::Failure(failure.getCode(), fileName + ": " + failure.what());
        }
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateFilePlugin plugin;
    return &plugin;
}
