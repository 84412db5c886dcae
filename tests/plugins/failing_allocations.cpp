// SPDX-License-Identifier: MIT

// failing_allocations PLUGIN cold|warm STRIDE REQUEST: asks the plugin with one allocation
// of each STRIDE failing, first that one alone and then all from that one on, each in a separate
// process. The reply must be the one given with enough memory or an error of code 6. "warm" asks
// once before, so that the back end's library has been initialised. Prints the first wrong outcome.
#include <certbridge/plugin.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

long allowedAllocations = -1; // negative: no limit
bool failsOnce = false;
bool hasFailed = false;

bool mayAllocate() {
    if (allowedAllocations < 0 || allowedAllocations-- > 0) return true;
    allowedAllocations = failsOnce ? -1 : 0;
    hasFailed = true;
    errno = ENOMEM;
    return false;
}

} // namespace

// Replace the C library's functions in all libraries of the process.
extern "C" {
void* __libc_malloc(std::size_t aSize);
void* __libc_calloc(std::size_t aCount, std::size_t aSize);
void* __libc_realloc(void* aBlock, std::size_t aSize);

void* malloc(std::size_t aSize) {
    return mayAllocate() ? __libc_malloc(aSize) : nullptr;
}
void* calloc(std::size_t aCount, std::size_t aSize) {
    return mayAllocate() ? __libc_calloc(aCount, aSize) : nullptr;
}
void* realloc(void* aBlock, std::size_t aSize) {
    return mayAllocate() ? __libc_realloc(aBlock, aSize) : nullptr;
}
}

namespace {

enum class Outcome { Same, OutOfMemory, Wrong };

// Shared with the child processes.
struct Report {
    Outcome outcome;
    bool hasFailed;
    char text[4096]; ///< a wrong reply
};

const char* ask(Plugin& aPlugin, const char* aRequest) {
    const char* response = nullptr;
    const char* error = nullptr;
    aPlugin.getCertificate(aRequest, &response, &error);
    return error != nullptr ? error : response;
}

void askWithFailure(Plugin& aPlugin, const char* aRequest, const std::string& aExpected,
                    Report& aReport) {
    const char* const reply = ask(aPlugin, aRequest);
    allowedAllocations = -1;
    aReport.hasFailed = hasFailed;
    aReport.outcome = Outcome::Wrong;
    if (aExpected == reply) aReport.outcome = Outcome::Same;
    if (std::strstr(reply, R"({"error":[{"name":"errorCode","value":6})") == reply) {
        aReport.outcome = Outcome::OutOfMemory;
    }
    std::snprintf(aReport.text, sizeof aReport.text, "%s", reply);
}

// Runs a function in a child process; returns its wait status.
template <typename Work>
int runInChild(const Work& aWork) {
    const pid_t child = fork();
    if (child == 0) {
        aWork();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

// Returns the number of allocations, rounded up to the stride, or -1 after a wrong outcome.
long failEach(Plugin& aPlugin, const char* aRequest, const std::string& aExpected, long aStride,
              Report& aReport) {
    for (long count = 0;; count += aStride) {
        const int status = runInChild([&] {
            allowedAllocations = count;
            askWithFailure(aPlugin, aRequest, aExpected, aReport);
        });
        if (status != 0 || aReport.outcome == Outcome::Wrong) {
            std::printf("allocation %ld%s: wait status %d, reply %s\n", count,
                        failsOnce ? "" : " and all later ones", status, aReport.text);
            return -1;
        }
        if (!aReport.hasFailed) return count;
    }
}

} // namespace

int main(int, char** argv) {
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return std::puts(dlerror()), 1;
    const auto getPlugin = reinterpret_cast<Plugin* (*)()>(dlsym(library, "GetPlugin"));
    Plugin& plugin = *getPlugin();
    auto& report = *static_cast<Report*>(
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const long stride = std::atol(argv[3]);
    const char* const request = argv[4];
    if (std::strcmp(argv[2], "warm") == 0) ask(plugin, request);
    runInChild([&] { askWithFailure(plugin, request, "", report); });
    const std::string expected = report.text;
    for (const bool once : {true, false}) {
        failsOnce = once;
        const long count = failEach(plugin, request, expected, stride, report);
        if (count < 0) return 1;
        if (count == 0) return std::puts("no allocation failed"), 1;
    }
    return 0;
}
