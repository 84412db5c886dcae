// SPDX-License-Identifier: MIT
#include "certbridge/exchange.h"
#include "tests/certbridge/recording_port.h"
#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"

#include <gmock/gmock.h>

#include <cfenv>
#include <filesystem>
#include <stdexcept>

TEST(CertificateExchange, UnloadsTheLibraryBeforeItReturns) {
    const auto request =
        parseText(R"({"note":"fixture_was_unloaded","response":"{\"response\":[]}"})");
    std::filesystem::remove("fixture_was_unloaded");
    RecordingPort port;
    performGetCertificate(port, *request, FIXTURE_PLUGIN);
    EXPECT_TRUE(std::filesystem::remove("fixture_was_unloaded"));
}

class PluginsThatRoundUpward : public TableTest {};

TEST_P(PluginsThatRoundUpward, LeaveThePortInTheDefaultMode) {
    const Columns& row = GetParam().columns;
    const auto folder = std::filesystem::path(FIXTURE_PLUGIN).parent_path();
    const auto file = row[0] + std::filesystem::path(FIXTURE_PLUGIN).extension().string();
    RecordingPort port;
    try {
        performGetCertificate(port, *parseText(R"({"response":"{\"response\":[]}"})"),
                              (folder / file).string().c_str());
    } catch (const std::logic_error& e) {
        port.printed = e.what();
    }
    EXPECT_EQ(port.printed, row[1]);
    EXPECT_EQ(port.rounding, FE_TONEAREST);
    std::fesetround(FE_TONEAREST);
}

INSTANTIATE_TABLE(PluginsThatRoundUpward, "rounding_plugins.txt", 2);
