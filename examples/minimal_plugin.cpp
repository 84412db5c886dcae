// SPDX-License-Identifier: MIT

// Answers every request with the members of the request: the smallest plugin there is, useful for
// trying out a caller. A plugin that reads its request parses it with a JSON library.
#include <certbridge/plugin.h>

#include <cstring>
#include <exception>
#include <string>

namespace {

class MinimalPlugin final : public Plugin {
public:
    std::int32_t getPluginType() override { return 1; }

    void getCertificate(const char* aRequest, const char** aResponse,
                        const char** aError) override {
        try {
            mReply = std::string("{\"response\":") + std::strchr(aRequest, '[');
            *aResponse = mReply.c_str();
        } catch (const std::exception&) {
            *aError = R"({"error":[{"name":"errorCode","value":1},)"
                      R"({"name":"erroMessage","value":"out of memory"}]})"; // sic
        }
    }

private:
    std::string mReply; // certbridge reads it right after the call
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static MinimalPlugin plugin;
    return &plugin;
}
