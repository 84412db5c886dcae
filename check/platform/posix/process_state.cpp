// SPDX-License-Identifier: MIT
#include "check/platform/process_state.h"

#include <array>
#include <cerrno>
#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::size_t countThreads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

// Finished children count until the plugin has waited for them.
bool hasChild() {
    siginfo_t information{};
    return waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

bool hasArmedTimer() {
    for (const auto which : {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF}) {
        itimerval timer{};
        if (getitimer(which, &timer) == 0 && timerisset(&timer.it_value)) return true;
    }
    // Timers created by timer_create(), where the kernel lists them.
    std::ifstream list("/proc/self/timers");
    return list.peek() != std::ifstream::traits_type::eof();
}

} // namespace

RunningWork RunningWork::inspect() {
    return {countThreads(), hasChild(), hasArmedTimer()};
}

bool hasFloatingPointTraps() {
#if defined(__GLIBC__)
    return fegetexcept() != 0;
#else
    return false;
#endif
}

OutputState OutputState::inspect() {
    struct stat status = {};
    if (fstat(STDOUT_FILENO, &status) != 0) return {0, 0, 0, false};
    return {status.st_dev, status.st_ino, fcntl(STDOUT_FILENO, F_GETFL), std::fwide(stdout, 0) > 0};
}

bool isColourTerminal() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && terminal && std::strcmp(terminal, "dumb") != 0;
}

bool isMapped(const void* aAddress) {
    Dl_info information;
    return dladdr(aAddress, &information) != 0;
}

std::string describeLoadFailure(const char* aLibraryName) {
    void* const library = dlopen(aLibraryName, RTLD_NOW);
    if (library) {
        dlclose(library);
        return {};
    }
    const char* const text = dlerror();
    return text ? text : "";
}

bool canLimitMemory() {
    return true;
}

MemoryLimit::MemoryLimit(std::size_t aBytes) {
    // The stack grows within the limit as well: give it its pages now.
    std::array<volatile char, 1048576> stack;
    for (std::size_t index = 0; index < stack.size(); index += 4096) stack[index] = 0;

    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    mPrevious = limit.rlim_cur;
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    limit.rlim_cur =
        static_cast<rlim_t>(pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + aBytes);
    setrlimit(RLIMIT_AS, &limit);
}

MemoryLimit::~MemoryLimit() {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = static_cast<rlim_t>(mPrevious);
    setrlimit(RLIMIT_AS, &limit);
}
