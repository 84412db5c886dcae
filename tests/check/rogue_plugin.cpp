// SPDX-License-Identifier: MIT

// A plugin that breaks the rules of its process. The request's member "do" selects the rule;
// requests without it are answered, except that ROGUE_ON_NULL makes a null in a request fatal.
#include <certbridge/plugin.h>

#include <cfenv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <thread>

#ifdef _WIN32
#include <float.h>
#else
#include <cwchar>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>
#endif

namespace {

using std::chrono::seconds;

void startThread() {
    std::thread([] { std::this_thread::sleep_for(seconds(60)); }).detach();
}

#ifdef _WIN32
void trapFloatingPoint() {
    _clearfp();
    _controlfp(0, _EM_ZERODIVIDE | _EM_INVALID);
}

void perform(const std::string&) {
}
#else
void trapFloatingPoint() {
    feenableexcept(FE_DIVBYZERO | FE_INVALID);
}

void startChild(bool aIsDetached) {
    if (fork() != 0) return;
    if (aIsDetached && (setsid() == -1 || fork() != 0)) _exit(0);
    for (int descriptor = 0; descriptor < 16; ++descriptor) close(descriptor);
    sleep(60);
    _exit(0);
}

void perform(const std::string& aRule) {
    if (aRule == "child") startChild(false);
    if (aRule == "daemon") startChild(true);
    if (aRule == "alarm") alarm(60);
    if (aRule == "wide") std::fwide(stdout, 1);
    if (aRule == "nonblocking") fcntl(STDOUT_FILENO, F_SETFL, O_WRONLY | O_NONBLOCK);
    if (aRule == "redirect") dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    if (aRule == "hang") startChild(false), std::this_thread::sleep_for(seconds(60));
    if (aRule == "stay") {
        Dl_info information;
        dladdr(reinterpret_cast<void*>(&GetPlugin), &information);
        dlopen(information.dli_fname, RTLD_NOW | RTLD_NODELETE);
        startThread();
    }
    for (int descriptor = 3; aRule == "close" && descriptor < 1024; ++descriptor) {
        close(descriptor);
    }
}
#endif

class RoguePlugin final : public Plugin {
public:
    ~RoguePlugin() {
        if (mIsAbortingAtEnd) std::abort();
    }

    std::int32_t getPluginType() override { return 1; }

    void getCertificate(const char* aRequest, const char** aResponse, const char**) override {
        const std::string start = "{\"name\":\"do\",\"value\":\"";
        const char* const begin = std::strstr(aRequest, start.c_str());
        const std::string rule = begin ? begin + start.size() : "";
        const std::string name = rule.substr(0, rule.find('"'));
        if (name == "throw_bad_alloc") throw std::bad_alloc();
        if (name == "thread") startThread();
        if (name == "trap") trapFloatingPoint();
        if (name == "round") std::fesetround(FE_UPWARD);
        if (name == "allocate") mBlock.resize(1 << 24);
        mIsAbortingAtEnd = name == "abort_at_end";
#ifdef ROGUE_ON_NULL
        if (std::strstr(aRequest, "\"value\":null")) std::abort();
#endif
        perform(name);
        *aResponse = "{\"response\":[]}";
    }

private:
    std::string mBlock;
    bool mIsAbortingAtEnd = false;
};

RoguePlugin plugin;

} // namespace

extern "C" Plugin* GetPlugin() {
    return &plugin;
}
