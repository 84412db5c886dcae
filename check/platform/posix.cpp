#include "check/platform/platform.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void throwError(int aError, const char* aWhat) {
    throw std::system_error(aError, std::generic_category(), aWhat);
}

// Owns one end of a pipe; -1 is none.
class Descriptor : private vexil::NonCopyable {
public:
    ~Descriptor() { reset(-1); }
    int get() const { return mNumber; }
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

// What a child finds changed in its descriptors.
class FileActions : private vexil::NonCopyable {
public:
    FileActions(int aOutcome, int aOutput) {
        posix_spawn_file_actions_init(&mActions);
        posix_spawn_file_actions_addopen(&mActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&mActions, aOutput, STDOUT_FILENO);
        // To its own place: that makes it stay open.
        posix_spawn_file_actions_adddup2(&mActions, aOutcome, aOutcome);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&mActions); }
    const posix_spawn_file_actions_t* get() const { return &mActions; }

private:
    posix_spawn_file_actions_t mActions{};
};

// A pipe holds no more, so that the last call gets all there is; and a child that never stops
// writing cannot keep its parent here.
constexpr std::size_t pipeSize = 65536;

void readAvailable(Descriptor& aReader, std::string& aText) {
    if (aReader.get() == -1) return;
    std::array<char, pipeSize> block;
    const auto count = ::read(aReader.get(), block.data(), block.size());
    if (count > 0) aText.append(block.data(), static_cast<std::size_t>(count));
    if (count == 0) aReader.reset(-1); // or poll() would tell of its end for ever
}

} // namespace

bool isColourTerminal() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && terminal && std::strcmp(terminal, "dumb") != 0;
}

struct ChildProcess::State {
    Pipe outcome, output;
    pid_t process = -1;
    bool hasEnded = false;
    int status = 0;
};

ChildProcess::ChildProcess(char** aArguments, const std::string& aOption)
    : mState(std::make_unique<State>()) {
    auto option = aOption;
    auto outcome = outcomeOption + std::to_string(mState->outcome.writer.get());
    std::vector<char*> arguments{aArguments[0], option.data(), outcome.data()};
    do {
        arguments.push_back(*++aArguments);
    } while (*aArguments);

    std::signal(SIGCHLD, SIG_DFL); // ignored, as some callers leave it, there is no status
    const FileActions actions(mState->outcome.writer.get(), mState->output.writer.get());
    const int error = posix_spawn(&mState->process, "/proc/self/exe", actions.get(), nullptr,
                                  arguments.data(), environ);
    if (error != 0) throwError(error, "cannot start a process for a check");
    mState->outcome.writer.reset(-1);
    mState->output.writer.reset(-1);
}

ChildProcess::~ChildProcess() {
    if (mState->hasEnded) return;
    kill(mState->process, SIGKILL);
    while (waitpid(mState->process, nullptr, 0) == -1 && errno == EINTR) {
    }
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds aTime) {
    std::array<pollfd, 2> pipes{
        {{mState->outcome.reader.get(), POLLIN, 0}, {mState->output.reader.get(), POLLIN, 0}}};
    poll(pipes.data(), pipes.size(), static_cast<int>(aTime.count()));
    const pid_t ended = waitpid(mState->process, &mState->status, WNOHANG);
    if (ended == -1 && errno != EINTR) throwError(errno, "cannot wait for a check");
    mState->hasEnded = ended == mState->process;
    return mState->hasEnded;
}

void ChildProcess::read(std::string& aOutcome, std::string& aOutput) {
    readAvailable(mState->outcome.reader, aOutcome);
    readAvailable(mState->output.reader, aOutput);
}

std::string ChildProcess::describeEnd() const {
    const int status = mState->status;
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return std::string("crashed: ") + strsignal(signal) + " (signal " + std::to_string(signal) +
               ')';
    }
    if (WEXITSTATUS(status) == 0) return {};
    return "ended the process with status " + std::to_string(WEXITSTATUS(status));
}

void sendOutcome(const std::string& aPlace, const std::string& aText) {
    const int descriptor = std::stoi(aPlace);
    for (std::size_t sent = 0; sent < aText.size();) {
        const auto count = write(descriptor, aText.data() + sent, aText.size() - sent);
        if (count == -1 && errno != EINTR) throwError(errno, "cannot send the outcome");
        if (count > 0) sent += static_cast<std::size_t>(count);
    }
}
