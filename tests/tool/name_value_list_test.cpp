#include "tests/failing_memory.h"
#include "tests/vexil/json/json_helpers.h"
#include "tool/name_value_list.h"

#include <gmock/gmock.h>

#include <functional>
#include <new>

using vexil::JsonValue;

struct Append {
    const char* before;
    std::function<void(ValueHolder& aContainer, ValueHolder& aValue)> call;
    const char* after;
    bool takesValue;
};

const Append appends[] = {
    {"{}", [](auto& aObject, auto& aValue) { appendMember(aObject, "a", aValue); }, R"({"a":true})",
     true},
    {"{}", [](auto& aObject, auto&) { appendMember(aObject, "a", JsonValue::createInteger(1)); },
     R"({"a":1})", false},
    {"[0]", [](auto& aArray, auto&) { appendNameValue(aArray, "a", JsonValue::createArray()); },
     R"([0,{"name":"a","value":[]}])", false},
    {"[0]", [](auto& aArray, auto&) { appendNameValue(aArray, "a", "text"); },
     R"([0,{"name":"a","value":"text"}])", false},
};

// Each allocation fails in turn; the sanitizers see what would be left behind.
TEST(NameValueList, AppendsEverythingOrNothing) {
    for (const auto& row : appends) {
        auto container = parseText(row.before);
        ValueHolder value(JsonValue::createBoolean(true));
        for (long count = 0; writeText(*container) == row.before; ++count) {
            EXPECT_NE(value, nullptr) << row.after << count;
            const FailingMemory memory(count);
            try {
                row.call(container, value);
            } catch (const std::bad_alloc&) {
            }
        }
        EXPECT_EQ(writeText(*container), row.after);
        EXPECT_EQ(value == nullptr, row.takesValue) << row.after;
    }
}
