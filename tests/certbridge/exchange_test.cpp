// SPDX-License-Identifier: MIT
#include "certbridge/exchange.h"
#include "tests/certbridge/recording_port.h"
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

struct RoundingPlugin {
    const char* name;
    const char* outcome; ///< the printed document or the message of the failure
};

class PluginsThatRoundUpward : public testing::TestWithParam<RoundingPlugin> {};

TEST_P(PluginsThatRoundUpward, LeaveThePortInTheDefaultMode) {
    const auto& row = GetParam();
    const auto folder = std::filesystem::path(FIXTURE_PLUGIN).parent_path();
    const auto file = row.name + std::filesystem::path(FIXTURE_PLUGIN).extension().string();
    RecordingPort port;
    try {
        performGetCertificate(port, *parseText(R"({"response":"{\"response\":[]}"})"),
                              (folder / file).string().c_str());
    } catch (const std::logic_error& e) {
        port.printed = e.what();
    }
    EXPECT_EQ(port.printed, row.outcome);
    EXPECT_EQ(port.rounding, FE_TONEAREST);
    std::fesetround(FE_TONEAREST);
}

INSTANTIATE_TEST_SUITE_P(
    Plugins, PluginsThatRoundUpward,
    testing::Values(RoundingPlugin{"no_export", "cannot get DLL's GetPlugin function"},
                    RoundingPlugin{"no_object", "no plugin object from DLL's GetPlugin function"},
                    RoundingPlugin{"type_0", "wrong plugin type"},
                    RoundingPlugin{"rounds_upward", R"({"getCertificate":{}})"}),
    [](const auto& aRow) { return std::string(aRow.param.name); });
