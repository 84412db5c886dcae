// Makes one allocation after the other fail, through everything that allocates.
#include "tests/failing_memory.h"
#include "tests/vexil/format_rows.h"
#include "tests/vexil/json/json_helpers.h"
#include "tool/certificate_exchange.h"
#include "tool/name_value_list.h"
#include "tool/output.h"
#include "vexil/dynamic_library.h"
#include "vexil/unicode_strings.h"

#include <optional>

using namespace vexil;
using namespace std::string_literals;

namespace {

/// Something to be done, with all that it works on.
struct Work {
    std::function<void()> run;
    std::function<std::string()> state;
    std::string after;                      ///< the state once it is done
    std::optional<std::string> failed = {}; ///< the state after a failure; as before if not given
};

/// A label and what begins the same work anew, as often as it takes.
using Row = std::pair<std::string, std::function<Work()>>;

/// False if the work was done before it came to the allocation that fails.
bool failAndRetry(const Work& aWork, long aCount, bool aOnce) {
    const auto before = aWork.state();
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
        EXPECT_EQ(aWork.state(), aWork.failed.value_or(before));
        aWork.run();
    }
    EXPECT_EQ(aWork.state(), aWork.after);
    return failed;
}

void failEachAllocation(const std::vector<Row>& aRows) {
    for (const auto& [label, begin] : aRows) {
        for (const bool once : {true, false}) {
            long count = 0;
            for (bool failed = true; failed && !testing::Test::HasFailure(); ++count) {
                SCOPED_TRACE(label + (once ? ": only " : ": from ") + std::to_string(count));
                const long live = FailingMemory::liveBlocks;
                failed = failAndRetry(begin(), count, once);
                EXPECT_EQ(FailingMemory::liveBlocks, live) << "leaked";
            }
            EXPECT_GT(count, 1) << label << " allocates nothing";
        }
    }
}

/// Work that makes a text from nothing.
Row making(const std::string& aLabel, const std::function<std::string()>& aMake) {
    return {aLabel, [=] {
                const auto text = std::make_shared<std::string>("none");
                return Work{[=] { *text = aMake(); }, [=] { return *text; }, aMake()};
            }};
}

const std::string longText(40, 'x');

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
    failEachAllocation({
        making("parse", [&] { return writeText(*parseText(text)); }),
        making("parse a stream", [&] { return writeText(*parseForeign()); }),
        making("parse a scalar", [&] { return writeText(*parseText("1.5")); }),
        making("clone", [&] { return writeText(*JsonTree(tree->clone())); }),
        making("write", [&] { return writeText(*tree); }),
        making("write ASCII", [&] { return writeText(*tree, JsonWriter::EscapeNonAscii); }),
    });
}

// What is done to a container and a value, and both after it. Four entries fill a container that
// has grown by itself.
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
    for (const auto& row : appends) {
        const auto begin = [&row](JsonTree aContainer) {
            const auto container = std::make_shared<JsonTree>(std::move(aContainer));
            const auto value = std::make_shared<JsonTree>(JsonValue::createBoolean(true));
            const auto state = [=] {
                return writeText(**container) + " " + (*value ? writeText(**value) : "");
            };
            return Work{[=, &row] { get<1>(row)(*container, *value); }, state, get<2>(row)};
        };
        const auto parse = [&row] { return parseText(get<0>(row)); };
        failEachAllocation(
            {{"parsed " + get<0>(row), [&] { return begin(parse()); }},
             {"built " + get<0>(row), [&] { return begin(JsonTree(parse()->clone())); }}});
    }
}

TEST(AllocationFaults, OfUnicodeStrings) {
    const auto utf16 = "\xFE\xFF\0a\0\033de\0\033\0b\0c\0d\0e\0f\0g"s;
    const auto utf8 = "\xEF\xBB\xBF\033de\033" + longText;
    const std::tuple<std::int32_t, std::string, std::string, std::string> rows[] = {
        {Latin1, longText + "\xE9", longText + "\xC3\xA9", "old"},
        {Utf8, longText + "\xC3\xA9", longText + "\xC3\xA9", "old"},
        {PdfTextString, utf16, "abcdefg", ""},
        {5, utf8, longText, ""},
        {PdfTextString, longText + "\xA0", longText + "\xE2\x82\xAC", ""},
        {PdfTextStringWithLanguage, utf16, "a\033de\033bcdefg", ""},
        {7, utf8, utf8.substr(3), ""},
        {Windows1252, longText + "\x80", longText + "\xE2\x82\xAC", ""},
        {WindowsAnsi, longText, longText, "old"},
    };
    for (const auto& row : rows) {
        const auto begin = [&row] {
            const auto& [encoding, bytes, after, failed] = row;
            const auto string = std::make_shared<UnicodeString32>(Latin1, "old");
            const auto assign = [=, encoding = encoding, &bytes = bytes] {
                string->assignOctets(encoding, bytes.data(), bytes.size());
            };
            return Work{assign, [=] { return string->asUtf8(); }, after, failed};
        };
        failEachAllocation({{testing::PrintToString(row), begin}});
    }
    const auto encode = [] { return UnicodeString32(Utf8, longText).asUtf8(); };
    failEachAllocation({making("UTF-8", encode)});
}

TEST(AllocationFaults, OfFormatting) {
    const std::string text(300, 'x');
    const auto begin = [&] {
        const auto target = std::make_shared<FormatToMemory>(0);
        const auto state = [=] { return target->getLength() ? target->getBuffer() : ""s; };
        return Work{[=, &text] { formatInto(*target, "%s", text.c_str()); }, state, text};
    };
    failEachAllocation({{"format", begin}});
}

// The program's output, but that nothing ends the process.
std::string* printed = nullptr;
void printJson(const JsonValue& aDocument) {
    *printed = writeText(aDocument);
}
void fatalError(std::int32_t, const char* aMessage) {
    throw std::logic_error(aMessage);
}
void fatalErrorFormat(std::int32_t, const char* aFormat, ...) {
    throw std::logic_error(aFormat);
}
void endAfterFailure() {
    throw;
}

TEST(AllocationFaults, OfAnExchange) {
    const auto request = parseText(
        R"({"action":"","a":[1,{}],"response":"{'response':[{'name':'a','value':[1.5,'b']}]}"})");
    const auto exchange = [&] {
        std::string output;
        printed = &output;
        performGetCertificate(*request, FIXTURE_PLUGIN);
        return output;
    };
    const auto load = [] {
        DynamicLibrary library;
        return library.load("./none") ? "loaded" : std::string(library.getErrorText());
    };
    failEachAllocation({making("exchange", exchange), making("no library", load)});
}
