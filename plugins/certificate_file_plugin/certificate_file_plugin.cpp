// Shows the certificate in a file: "file" names it, "password" opens a PKCS#12 file.
#include "certificate_fields.h"
#include "certificate_file.h"

namespace {

class CertificateFilePlugin final : public example::ReplyingPlugin {
    example::Response answer(const example::Request& aRequest) override {
        const auto fileName = aRequest.getText("file");
        if (fileName.empty()) {
            throw example::Failure(example::ErrorCode::InvalidRequest, "member \"file\" is empty");
        }
        const auto password = aRequest.findText("password").value_or("");
        try {
            return example::describeCertificate(*example::readCertificate(fileName, password));
        } catch (const example::Failure& failure) {
            throw example::Failure(failure.getCode(), fileName + ": " + failure.what());
        }
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateFilePlugin plugin;
    return &plugin;
}
