// SPDX-License-Identifier: MIT
#include "certbridge/exchange.h"
#include "tests/certbridge/recording_port.h"
#include "tests/vexil/json/json_helpers.h"

#include <gmock/gmock.h>

#include <filesystem>

TEST(CertificateExchange, UnloadsTheLibraryBeforeItReturns) {
    const auto request =
        parseText(R"({"note":"fixture_was_unloaded","response":"{\"response\":[]}"})");
    std::filesystem::remove("fixture_was_unloaded");
    RecordingPort port;
    performGetCertificate(port, *request, FIXTURE_PLUGIN);
    EXPECT_TRUE(std::filesystem::remove("fixture_was_unloaded"));
}
