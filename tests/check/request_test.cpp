// SPDX-License-Identifier: MIT
#include "check/random_request.h"
#include "check/request_shrinker.h"
#include "tests/vexil/json/json_helpers.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

TEST(RandomRequest, DependsOnSeedAndNumberOnly) {
    EXPECT_EQ(writeText(*makeRandomRequest(7, 4)), R"({"error":true,"request":[false]})");
    EXPECT_EQ(writeText(*makeRandomRequest(7, 43)),
              "{\"value\":0,\"format\":\"nullnull\\\\\\u0001\x7F\",\"error\":-1,\"\":255}");
}

struct FailingRequest {
    const char* name;
    const char* request;
    const char* fault; ///< a request that contains it fails
    const char* smallest;
};

void PrintTo(const FailingRequest& aRow, std::ostream* aStream) {
    *aStream << aRow.request;
}

class RequestShrinker : public testing::TestWithParam<FailingRequest> {};

TEST_P(RequestShrinker, FindsTheSmallestFailingRequest) {
    const auto& row = GetParam();
    const auto fails = [&](const vexil::JsonValue& aRequest) {
        return writeText(aRequest).find(row.fault) != std::string::npos;
    };
    const auto smallest = shrinkRequest(*parseText(row.request), 100, fails);
    EXPECT_EQ(writeText(*smallest), row.smallest);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RequestShrinker,
    testing::Values(FailingRequest{"Empty", "{}", "{", "{}"},
                    FailingRequest{"OtherMembers", R"({"a":1,"b":2,"c":3})", "2", R"({"":2})"},
                    FailingRequest{"Name", R"({"abcdef":[1]})", "cd", R"({"cd":null})"},
                    FailingRequest{"BeginOfText", R"({"a":"bcdef"})", "b", R"({"":"b"})"},
                    FailingRequest{"EndOfText", R"({"a":"bcdef"})", "f", R"({"":"f"})"},
                    FailingRequest{"CharactersOfSeveralBytes", "{\"a\":\"\u6f22\u5b57x\"}",
                                   "\u5b57", "{\"\":\"\u5b57\"}"},
                    FailingRequest{"NestedValue", R"({"a":{"b":[1,[2,3],4]}})", "3",
                                   R"({"":{"":[[3]]}})"},
                    FailingRequest{"RepeatedNames", R"({"a":1,"a":2})", R"("a":1,"a":)",
                                   R"({"a":1,"a":null})"}),
    [](const auto& aRow) { return std::string(aRow.param.name); });

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
