// SPDX-License-Identifier: MIT
#include "check/random_request.h"
#include "check/request_shrinker.h"
#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

TEST(RandomRequest, DependsOnSeedAndNumberOnly) {
    EXPECT_EQ(writeText(*makeRandomRequest(7, 4)), R"({"error":true,"request":[false]})");
    EXPECT_EQ(writeText(*makeRandomRequest(7, 43)),
              "{\"value\":0,\"format\":\"nullnull\\\\\\u0001\x7F\",\"error\":-1,\"\":255}");
}

class RequestShrinker : public TableTest {};

TEST_P(RequestShrinker, FindsTheSmallestFailingRequest) {
    const Columns& row = GetParam().columns;
    const auto fails = [&](const vexil::JsonValue& aRequest) {
        return writeText(aRequest).find(row[1]) != std::string::npos;
    };
    EXPECT_EQ(writeText(*shrinkRequest(*parseText(row[0]), 100, fails)), row[2]);
}

INSTANTIATE_TABLE(RequestShrinker, "failing_requests.txt", 3);

TEST(RequestShrinker, TestsEachSimplerRequestOnce) {
    const std::pair<const char*, const char*> faults[] = {
        {"", R"({"b":2} {} )"},
        {R"("a":1)", R"({"b":2} {"a":1} {} {"a":null} {"":1} )"},
    };
    for (const auto& [fault, expected] : faults) {
        std::string tested;
        const auto fails = [&tested, text = fault](const auto& aRequest) {
            const auto request = writeText(aRequest);
            tested += request + ' ';
            return request.find(text) != std::string::npos;
        };
        static_cast<void>(shrinkRequest(*parseText(R"({"a":1,"b":2})"), 100, fails));
        EXPECT_EQ(tested, expected);
    }
}

TEST(RequestShrinker, StopsAtTheLimitOfTests) {
    int tests = 0;
    const auto smallest =
        shrinkRequest(*parseText(R"({"a":1,"b":2})"), 1, [&](const auto&) { return ++tests > 0; });
    EXPECT_EQ(tests, 1);
    EXPECT_EQ(writeText(*smallest), R"({"b":2})");
}
