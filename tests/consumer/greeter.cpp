#include <tool/plugin.h>

#include <string>

namespace {

class Greeter final : public Plugin {
    std::int32_t getPluginType() override { return 1; }

    void getCertificate(const char* aRequest, const char** aResponse, const char**) override {
        const bool sent =
            std::string(aRequest) == R"({"request":[{"name":"names","value":["Zoë"]}]})";
        *aResponse = sent ? R"({"response":[{"name":"greeting","value":"hello"}]})" : "";
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static Greeter plugin;
    return &plugin;
}
