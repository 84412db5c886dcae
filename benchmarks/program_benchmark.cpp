// SPDX-License-Identifier: MIT

// Runs whole programs with a request on standard input, from the spawn to the exit status. The rows
// are called program/SIZE/PROGRAM/LINK/PLUGIN: how the C++ runtime is linked into the program, and
// in which language the plugin is written. Each has counters of the peak memory and page faults of
// one further run.
#include "documents.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

namespace {

using namespace benchmarks;
using nlohmann::json;
using std::filesystem::path;

struct Folder {
    path name = std::filesystem::temp_directory_path() /
                ("certbridge_benchmark." + std::to_string(getpid()));
    Folder() { std::filesystem::create_directory(name); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(name); }
};

struct Size {
    std::string name;
    std::size_t bytes;
};

struct Program {
    std::string name; // as the rows call it
    path file;
    path plugin;
};

int run(const Program& aProgram, const path& aInput, const path& aOutput) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, aInput.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, aOutput.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    auto file = aProgram.file.string();
    auto plugin = aProgram.plugin.string();
    std::array<char*, 3> arguments{file.data(), plugin.data(), nullptr};
    pid_t process;
    int status = -1;
    if (posix_spawn(&process, file.c_str(), &actions, nullptr, arguments.data(), environ) == 0) {
        waitpid(process, &status, 0);
    }
    posix_spawn_file_actions_destroy(&actions);
    return status;
}

struct Usage {
    double peakMegabytes = 0;
    double pageFaults = 0;
};

// The program starts as a copy of this small process: one that shares the memory of its parent, as
// posix_spawn() creates it, would also count the parent's peak.
Usage measureUsage(const Program& aProgram, const path& aInput) {
    const pid_t process = fork();
    if (process == 0) {
        if (dup2(open(aInput.c_str(), O_RDONLY), 0) == 0 &&
            dup2(open("/dev/null", O_WRONLY), 1) == 1) {
            execl(aProgram.file.c_str(), aProgram.file.c_str(), aProgram.plugin.c_str(), nullptr);
        }
        _exit(127);
    }
    int status = -1;
    rusage usage{};
    if (wait4(process, &status, 0, &usage) != process || status != 0) return {};
    return {static_cast<double>(usage.ru_maxrss) * 1024 / 1e6,
            static_cast<double>(usage.ru_minflt)};
}

std::string readFile(const path& aFile) {
    std::ifstream stream(aFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Ends the run unless the program answers as it must: the plugin sends all members back.
void check(const Program& aProgram, const std::string& aRequest, const Folder& aFolder) {
    const auto output = aFolder.name / "output";
    const auto input = aFolder.name / "input";
    std::ofstream(input, std::ios::binary) << aRequest;
    const auto status = run(aProgram, input, output);
    const auto text = readFile(output);
    constexpr std::string_view action = R"({"action":"getCertificate",)";
    const auto expected = R"({"getCertificate":{)" + aRequest.substr(action.size()) + "}\n";
    const bool right = aProgram.name.starts_with("floor")
                           ? text == "{\"response\":" + aRequest.substr(aRequest.find('[')) + '\n'
                       : aProgram.name.starts_with("certbridge")
                           ? text == expected
                           : json::parse(text) == json::parse(expected);
    if (status == 0 && right) return;
    std::fprintf(stderr, "wrong answer: %s, status %d, %zu bytes of request\n",
                 aProgram.name.c_str(), status, aRequest.size());
    std::exit(1);
}

void addRow(const Program& aProgram, const Size& aSize, const path& aInput) {
    const auto name = "program/" + aSize.name + '/' + aProgram.name;
    auto* row =
        benchmark::RegisterBenchmark(name.c_str(), [aProgram, aInput](benchmark::State& aState) {
            for (auto _ : aState) {
                if (run(aProgram, aInput, "/dev/null") != 0) aState.SkipWithError("failed");
            }
            const Usage usage = measureUsage(aProgram, aInput);
            aState.counters["peak_megabytes"] = usage.peakMegabytes;
            aState.counters["page_faults"] = usage.pageFaults;
        });
    row->UseRealTime()->Unit(benchmark::kMillisecond);
    if (aSize.bytes > 10'000'000) row->Repetitions(3);
}

// The small request goes through every combination, the others through the shipped link only.
std::vector<Program> makePrograms(std::size_t aSize) {
    const auto folder = std::filesystem::canonical("/proc/self/exe").parent_path();
    std::vector<Program> programs;
    for (const std::string name : {"certbridge", "floor", "handwritten"}) {
        for (const std::string link : {"shared", "static"}) {
            for (const std::string plugin : {"c", "cpp"}) {
                if (aSize > 1000 && (link != SHIPPED_LINK || plugin != "cpp")) continue;
                if (aSize > 10'000'000 && name == "handwritten") continue;
                programs.push_back({name + '/' + link + '/' + plugin, folder / (name + '_' + link),
                                    folder / ("echo_" + plugin + ".so")});
            }
        }
    }
    return programs;
}

} // namespace

int main(int aCount, char** aArguments) {
    benchmark::Initialize(&aCount, aArguments);
    if (benchmark::ReportUnrecognizedArguments(aCount, aArguments)) return 1;
    benchmark::AddCustomContext("shipped_link", SHIPPED_LINK);
    const Folder folder;
    const Size sizes[] = {{"1KB", 1000},
                          {"100KB", 100'000},
                          {"1MB", 1'000'000},
                          {"10MB", 10'000'000},
                          {"100MB", 100'000'000}};
    for (const auto& size : sizes) {
        const auto request = makeRequest(size.bytes);
        const auto input = folder.name / size.name;
        std::ofstream(input, std::ios::binary) << request;
        for (const auto& program : makePrograms(size.bytes)) {
            check(program, request, folder);
            addRow(program, size, input);
        }
    }
    malloc_trim(0); // for measureUsage()
    benchmark::RunSpecifiedBenchmarks();
}
