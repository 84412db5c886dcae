// The plugin that the tests talk to; each request tells it what to do. It is built several times,
// with other types and objects, and once without its export (see CMakeLists.txt).
#include "tool/plugin.h"

#include <algorithm>
#include <cerrno>
#include <cfenv>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace {

// The text of a request member with ' for ", ^ for \, ~ for a byte that no UTF-8 text has and # for
// 256 MiB of blanks.
std::optional<std::string> findText(std::string_view aRequest, const std::string& aName) {
    const auto start = "{\"name\":\"" + aName + "\",\"value\":\"";
    const auto begin = aRequest.find(start);
    if (begin == std::string_view::npos) return std::nullopt;
    aRequest.remove_prefix(begin + start.size());
    std::string text(aRequest.substr(0, aRequest.find('"')));
    std::replace(text.begin(), text.end(), '\'', '"');
    std::replace(text.begin(), text.end(), '^', '\\');
    std::replace(text.begin(), text.end(), '~', '\xFF');
    if (const auto mark = text.find('#'); mark != text.npos) text.replace(mark, 1, 1U << 28, ' ');
    return text;
}

std::string quoted(std::string_view aText) {
    std::string result = "\"";
    for (const char character : aText) {
        if (character == '"' || character == '\\') result += '\\';
        result += character;
    }
    return result + '"';
}

volatile char* nowhere = nullptr;

class FixturePlugin final : public Plugin {
public:
    ~FixturePlugin() {
        if (mNote) std::ofstream(mNote->c_str());
    }

    std::int32_t getPluginType() override { return FIXTURE_TYPE; }

    // Members of the request: "do" (print, throw, both, crash, exit, hang, close standard output,
    // reply in the memory of the request, nothing), "locale" to set (and another rounding with it),
    // "note" (a file to create on unloading), "response" and "error". Without any of these two the
    // request comes back, quoted.
    void getCertificate(const char* aRequest, const char** aResponse,
                        const char** aError) override {
        const auto what = findText(aRequest, "do").value_or("");
        if (what.starts_with("print")) std::puts("from the plugin");
        if (what.ends_with("throw")) throw *this; // of a type that only this library knows
        if (what == "crash") *nowhere = 0;
        if (what == "exit") std::exit(0);
        if (what == "close") std::fclose(stdout);
        while (what == "hang") std::this_thread::sleep_for(std::chrono::seconds(1));
        const auto locale = findText(aRequest, "locale");
        const bool isSet =
            !locale || (std::setlocale(LC_ALL, locale->c_str()) && std::fesetround(FE_UPWARD) == 0);
        if (*aResponse || *aError || !isSet) std::abort();
        mNote = findText(aRequest, "note");
        mResponse = findText(aRequest, "response");
        mError = findText(aRequest, "error");
        if (!mResponse && !mError && what != "nothing") {
            mResponse =
                "{\"response\":[{\"name\":\"request\",\"value\":" + quoted(aRequest) + "}]}";
        }
        if (mResponse) *aResponse = mResponse->c_str();
        if (mError) *aError = mError->c_str();
        if (what == "borrow")
            *aResponse = std::strcpy(const_cast<char*>(aRequest), "{\"response\":[]}");
        mFile = std::tmpfile(); // where a closed standard stream was, unless somebody is there
        errno = ERANGE;         // which no later conversion may take for its own
    }

private:
    std::optional<std::string> mNote, mResponse, mError;
    std::FILE* mFile = nullptr;
};

[[maybe_unused]] FixturePlugin plugin;

} // namespace

extern "C" Plugin* GetPlugin() {
    return FIXTURE_OBJECT;
}
