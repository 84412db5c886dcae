// SPDX-License-Identifier: MIT
#include "check/platform/child_process.h"

#include "vexil/assert.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void throwError(int aError, const char* aProblem) {
    throw std::system_error(aError, std::generic_category(), aProblem);
}

// Owns a descriptor; -1 if there is none.
class Descriptor : private vexil::NonCopyable {
public:
    ~Descriptor() { reset(-1); }
    [[nodiscard]] int get() const { return mNumber; }
    void reset(int aNumber) {
        if (mNumber != -1) close(mNumber);
        mNumber = aNumber;
    }

private:
    int mNumber = -1;
};

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throwError(errno, "no pipe");
        reader.reset(ends[0]);
        writer.reset(ends[1]);
        fcntl(reader.get(), F_SETFL, O_NONBLOCK);
    }

    Descriptor reader, writer;
};

// The descriptors of a child.
class FileActions : private vexil::NonCopyable {
public:
    FileActions(int aOutput, int aMemory) {
        posix_spawn_file_actions_init(&mActions);
        posix_spawn_file_actions_addopen(&mActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&mActions, aOutput, STDOUT_FILENO);
        // Duplicated to its own number, a descriptor stays open in the child.
        posix_spawn_file_actions_adddup2(&mActions, aMemory, aMemory);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&mActions); }
    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &mActions; }

private:
    posix_spawn_file_actions_t mActions{};
};

// A process group for each child, so that processes started by the plugin end with it.
class SpawnAttributes : private vexil::NonCopyable {
public:
    SpawnAttributes() {
        posix_spawnattr_init(&mAttributes);
        posix_spawnattr_setflags(&mAttributes, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&mAttributes, 0);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&mAttributes); }
    [[nodiscard]] const posix_spawnattr_t* get() const { return &mAttributes; }

private:
    posix_spawnattr_t mAttributes{};
};

volatile pid_t runningGroup = 0;

extern "C" void endGroupAndReraise(int aSignal) {
    if (runningGroup != 0) kill(-runningGroup, SIGKILL);
    std::signal(aSignal, SIG_DFL);
    std::raise(aSignal);
}

// A terminal sends its signals to the group of this process only, not to that of the child.
void endChildOnSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        if (std::signal(signal, endGroupAndReraise) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

} // namespace

struct ChildProcess::State {
    Pipe output;
    pid_t process = -1;
    bool hasEnded = false;
    int status = 0;

    // Before the process is waited for: until then its number cannot be reused.
    void endGroup() const {
        kill(-process, SIGKILL);
        runningGroup = 0;
    }
};

ChildProcess::ChildProcess(const std::string& aOption, const std::string& aMemoryOption,
                           const SharedMemory& aMemory)
    : mState(std::make_unique<State>()) {
    std::string program = "certbridge-check";
    std::string option = aOption;
    std::string memory = aMemoryOption + aMemory.getName();
    const std::array<char*, 4> arguments{program.data(), option.data(), memory.data(), nullptr};

    std::signal(SIGCHLD, SIG_DFL); // some callers ignore it, which would discard the status
    endChildOnSignals();
    const FileActions actions(mState->output.writer.get(), std::stoi(aMemory.getName()));
    const SpawnAttributes attributes;
    const int error = posix_spawn(&mState->process, "/proc/self/exe", actions.get(),
                                  attributes.get(), arguments.data(), environ);
    if (error != 0) throwError(error, "cannot start a process for a check");
    runningGroup = mState->process;
    mState->output.writer.reset(-1);
}

ChildProcess::~ChildProcess() {
    if (mState->hasEnded) return;
    mState->endGroup();
    while (waitpid(mState->process, nullptr, 0) == -1 && errno == EINTR) {
    }
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds aTime) {
    pollfd output{mState->output.reader.get(), POLLIN, 0};
    poll(&output, 1, static_cast<int>(aTime.count()));
    siginfo_t information{};
    const auto process = static_cast<id_t>(mState->process);
    if (waitid(P_PID, process, &information, WEXITED | WNOHANG | WNOWAIT) != 0 && errno != EINTR) {
        throwError(errno, "cannot wait for a check");
    }
    if (information.si_pid != mState->process) return false;
    mState->endGroup();
    mState->hasEnded = waitpid(mState->process, &mState->status, 0) == mState->process;
    return mState->hasEnded;
}

void ChildProcess::readOutput(std::string& aOutput) {
    constexpr std::size_t pipeSize = 65536; // no pipe contains more, so one call reads everything
    Descriptor& reader = mState->output.reader;
    if (reader.get() == -1) return;
    std::array<char, pipeSize> block;
    const auto count = ::read(reader.get(), block.data(), block.size());
    if (count > 0) aOutput.append(block.data(), static_cast<std::size_t>(count));
    if (count == 0) reader.reset(-1); // otherwise poll() would report the end of the file each time
}

std::string ChildProcess::describeEnd() const {
    VEXIL_ASSERT(mState->hasEnded);
    const int status = mState->status;
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return std::string("crashed: ") + strsignal(signal) + " (signal " + std::to_string(signal) +
               ')';
    }
    if (WEXITSTATUS(status) == 0) return {};
    return "ended the process with status " + std::to_string(WEXITSTATUS(status));
}

void endWithParent() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Processes that a plugin detaches become children of this one, where they are noticed.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // If the parent ended before the first call, the pipe has no reader.
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0) std::_Exit(EXIT_FAILURE);
}

void endAtOnce() {
    std::_Exit(EXIT_SUCCESS);
}
