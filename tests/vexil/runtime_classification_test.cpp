// SPDX-License-Identifier: MIT

// The runtime's formatting is classified once per process, so this program has a single test.
#include "vexil/format_to_memory.h"

#include "tests/table.h"
#include "tests/vexil/platform/fake_platform.h"

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

using vexil::FormatToMemory;

namespace {

TEST(RuntimeClassification, IsRepeatedUntilItSucceedsOnceForAllThreads) {
    std::atomic<int> probes = 0;
    const auto answerProbe = [&probes](int aResult, const std::string& aBytes) {
        fakeFormatting = [=, &probes](char* aDest, auto...) {
            ++probes;
            std::memcpy(aDest, aBytes.data(), 8);
            return aResult;
        };
    };
    int brokenRuntimes = 0;
    forEachRow("broken_runtimes.txt", 2, [&](const Columns& aRow) {
        answerProbe(std::stoi(aRow[0]), aRow[1]);
        EXPECT_EQ(failureOf([] { FormatToMemory(0); }),
                  "Exception FormatToMemory: snprintf() broken");
        EXPECT_EQ(probes, ++brokenRuntimes);
    });

    answerProbe(6, std::string("123\0xxxx", 8));
    probes = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([] { FormatToMemory(0); });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(probes, 1);
}

} // namespace
