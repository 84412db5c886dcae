// SPDX-License-Identifier: MIT

// Makes one allocation after the other fail, through everything that allocates.
#include "certbridge/exchange.h"
#include "certbridge/name_value_list.h"
#include "tests/certbridge/failing_memory.h"
#include "tests/certbridge/recording_port.h"
#include "tests/vexil/json/json_helpers.h"
#include "tests/vexil/unicode_helpers.h"
#include "vexil/dynamic_library.h"
#include "vexil/format_to_memory.h"

using namespace vexil;
using namespace std::string_literals;

namespace {

/// Something to be done, and all that it works on as a text.
struct Work {
    std::function<void()> run;
    std::function<std::string()> state;
    std::string before, after; ///< the state after a failure, and once it is done
};

/// False if the work was done before it came to the allocation that fails.
bool failAndRetry(const Work& aWork, long aCount, bool aOnce) {
    std::string result = "done";
    try {
        const FailingMemory memory(aCount, aOnce);
        aWork.run();
    } catch (const std::exception& failure) {
        result = typeid(failure) == typeid(std::bad_alloc) ? "bad_alloc" : failure.what();
    }
    const bool failed = FailingMemory::hasFailed();
    EXPECT_EQ(result, failed ? "bad_alloc" : "done");
    if (failed) {
        EXPECT_EQ(aWork.state(), aWork.before);
        aWork.run();
    }
    EXPECT_EQ(aWork.state(), aWork.after);
    return failed;
}

/// @p aBegin begins the same work anew, as often as it takes.
void failEachAllocation(const std::string& aLabel, const std::function<Work()>& aBegin) {
    for (const bool once : {true, false}) {
        long count = 0;
        for (bool failed = true; failed && !testing::Test::HasFailure(); ++count) {
            SCOPED_TRACE(aLabel + (once ? ": only " : ": from ") + std::to_string(count));
            const long live = FailingMemory::liveBlocks;
            failed = failAndRetry(aBegin(), count, once);
            EXPECT_EQ(FailingMemory::liveBlocks, live) << "leaked";
        }
        EXPECT_GT(count, 1) << aLabel << " allocates nothing";
    }
}

/// The same of work that makes a text from nothing.
void failToMake(const std::string& aLabel, const std::function<std::string()>& aMake) {
    failEachAllocation(aLabel, [&] {
        const auto text = std::make_shared<std::string>("none");
        return Work{[&aMake, text] { *text = aMake(); }, [text] { return *text; }, "none", aMake()};
    });
}

const std::string longText(300, 'x');

} // namespace

TEST(AllocationFaults, OfJson) {
    const auto text = R"({"a":"b","long":")" + longText + R"(","escapes":"\u00e9\ud83d\ude00\n)" +
                      longText + R"(","":[null,true,{},1.2345678901234567e-300,-1],"deep":)" +
                      nestedArrays(200) + "}";
    const auto parseForeign = [&] {
        ForeignInputStream stream(text);
        JsonTokenizer tokenizer(stream, 0);
        tokenizer.nextToken();
        return JsonTree(JsonParser(tokenizer, 0).parse(true));
    };
    const auto tree = parseText(text);
    failToMake("parse", [&] { return writeText(*parseText(text)); });
    failToMake("parse a stream", [&] { return writeText(*parseForeign()); });
    failToMake("parse a scalar", [] { return writeText(*parseText("1.5")); });
    failToMake("clone", [&] { return writeText(*JsonTree(tree->clone())); });
    failToMake("write", [&] { return writeText(*tree); });
    failToMake("write ASCII", [&] { return writeText(*tree, JsonWriter::EscapeNonAscii); });
}

// Content of a container, an operation on it and the value true, and the content of both
// afterwards. Four entries fill the capacity of a container that has been built by appending.
const std::tuple<std::string, std::function<void(ValueHolder&, ValueHolder&)>, std::string>
    appends[] = {
        {R"({"a":0,"b":1,"c":2,"d":3})",
         [](auto& aObject, auto& aValue) { appendMember(aObject, "a", aValue); },
         R"({"a":0,"b":1,"c":2,"d":3,"a":true} )"},
        {"{}",
         [](auto& aObject, auto&) { appendMember(aObject, "a", JsonValue::createInteger(1)); },
         R"({"a":1} true)"},
        {"[0,1,2,3]",
         [](auto& aArray, auto&) { appendNameValue(aArray, "a", JsonValue::createNull()); },
         R"([0,1,2,3,{"name":"a","value":null}] true)"},
        {"[]", [](auto& aArray, auto&) { appendNameValue(aArray, "a", longText.c_str()); },
         R"([{"name":"a","value":")" + longText + R"("}] true)"},
};

TEST(AllocationFaults, OfAppending) {
    for (const auto& [before, append, after] : appends) {
        const auto parse = [&before = before] { return parseText(before); };
        for (const bool parsed : {true, false}) {
            failEachAllocation((parsed ? "parsed " : "built ") + before, [&] {
                const auto container =
                    std::make_shared<JsonTree>(parsed ? parse() : JsonTree(parse()->clone()));
                const auto value = std::make_shared<JsonTree>(JsonValue::createBoolean(true));
                const auto state = [=] {
                    return writeText(**container) + " " + (*value ? writeText(**value) : "");
                };
                return Work{[=, &append = append] { append(*container, *value); }, state,
                            before + " true", after};
            });
        }
    }
}

void failToAssign(const OctetRow& aRow) {
    if (aRow.bytes.size() <= 12 || !aRow.failure.empty()) return; // may need no memory
    const bool keeps = aRow.encoding <= Utf8 || aRow.encoding == WindowsAnsi;
    const auto begin = [&] {
        const auto string = std::make_shared<UnicodeString32>(Latin1, "old");
        const auto assign = [=, &aRow] {
            string->assignOctets(aRow.encoding, aRow.bytes.data(), aRow.bytes.size());
        };
        return Work{assign, [=] { return contentOf(*string); }, keeps ? "old" : "", aRow.content};
    };
    failEachAllocation("assign", begin);
}

TEST(AllocationFaults, OfUnicodeStrings) {
    for (const TableRow& tableRow : readTable("octet_encodings.txt", 4)) {
        for (const OctetRow& row : octetRowsOf(tableRow.columns)) failToAssign(row);
    }
    failToMake("UTF-8", [] { return UnicodeString32(Utf8, longText).asUtf8(); });
}

TEST(AllocationSizes, OfAnIndexOutOfRangeDoNotDependOnTheContainer) {
    std::string text = "[0";
    for (int i = 0; i < 20000; ++i) text += ",0";
    const auto array = parseText(text + "]");
    FailingMemory::largestRequest = 0;
    EXPECT_THROW(static_cast<void>(array->getValueAt(array->getSize())), std::out_of_range);
    EXPECT_LT(FailingMemory::largestRequest, 1000u);
}

TEST(AllocationFaults, OfFormatting) {
    failToMake("format", [] { return FormatToMemory::format("%s", longText.c_str()); });
}

TEST(AllocationFaults, OfAnExchange) {
    const auto request = parseText(
        R"({"action":"","a":[1,{}],"response":"{\"response\":[{\"name\":\"a\",\"value\":[1.5,\"b\"]}]}"})");
    failToMake("exchange", [&] {
        RecordingPort port;
        performGetCertificate(port, *request, FIXTURE_PLUGIN);
        return port.printed;
    });
    failToMake("no library", [] {
        DynamicLibrary library;
        return library.load("./none") ? "loaded" : std::string(library.getErrorText());
    });
    EXPECT_EQ(FailingMemory::openLibraries, 0);
}
