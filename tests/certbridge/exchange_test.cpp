#include "tests/vexil/json/json_helpers.h"
#include "tool/certificate_exchange.h"

#include <gmock/gmock.h>

#include <filesystem>

TEST(CertificateExchange, UnloadsTheLibraryBeforeItReturns) {
    const auto request =
        parseText(R"({"note":"fixture_was_unloaded","response":"{'response':[]}"})");
    std::filesystem::remove("fixture_was_unloaded");
    performGetCertificate(*request, FIXTURE_PLUGIN);
    EXPECT_TRUE(std::filesystem::remove("fixture_was_unloaded"));
}
