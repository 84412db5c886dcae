// SPDX-License-Identifier: MIT
#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_tree_builder.h"
#include "vexil/json/json_value.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

using namespace std::string_literals;
using testing::ElementsAre;
using vexil::JsonType;
using vexil::JsonValue;

namespace {

/// A value of a class outside the library, with one member; records its destruction.
class Witness : public vexil::JsonValueDefault {
public:
    using JsonValueDefault::getNameAt;
    using JsonValueDefault::getValueAt;
    Witness(std::vector<std::string>& aLog, std::string aName, JsonType aType = JsonType::Array)
        : mLog(aLog), mName(std::move(aName)), mType(aType) {}
    ~Witness() override { mLog.push_back(mName); }
    std::uint32_t getSize() const override { return 1; }
    const JsonValue* getNameAt(std::uint32_t) const override { return mText.get(); }
    const JsonValue* getValueAt(std::uint32_t) const override { return mText.get(); }
    JsonType getType() const override { return mType; }
    JsonValue* clone() const override { return new Witness(mLog, mName + "'", mType); }

private:
    std::vector<std::string>& mLog;
    std::string mName;
    JsonType mType;
    JsonTree mText{JsonValue::createString("m")};
};

struct Operation {
    const char* name;
    std::function<void(JsonValue&)> call;
};

const Operation operations[] = {
    {"getSize", [](JsonValue& v) { v.getSize(); }},
    {"getBoolean", [](JsonValue& v) { v.getBoolean(); }},
    {"getInteger", [](JsonValue& v) { v.getInteger(); }},
    {"getFloat", [](JsonValue& v) { v.getFloat(); }},
    {"getString", [](JsonValue& v) { v.getString(); }},
    {"getNameAt", [](JsonValue& v) { v.getNameAt(0); }},
    {"getNameAt", [](JsonValue& v) { std::as_const(v).getNameAt(0); }},
    {"getValueAt", [](JsonValue& v) { v.getValueAt(0); }},
    {"getValueAt", [](JsonValue& v) { std::as_const(v).getValueAt(0); }},
    {"findFirst", [](JsonValue& v) { v.findFirst("a"); }},
    {"findFirst", [](JsonValue& v) { std::as_const(v).findFirst("a"); }},
    {"appendValue", [](JsonValue& v) { v.appendValue(&v); }},
    {"appendNameAndValue", [](JsonValue& v) { v.appendNameAndValue(&v, &v); }},
};

class JsonValueKinds : public TableTest {};

TEST_P(JsonValueKinds, SupportTheirOwnOperationsAndNoOther) {
    const Columns& row = GetParam().columns;
    const JsonTree original = parseText(row[0]);
    for (const JsonTree& value : {JsonTree(original->clone()), parseText(row[0])}) {
        EXPECT_EQ(row[1], std::to_string(static_cast<int>(value->getType())));
        for (const Operation& operation : operations) {
            if ((row[2] + " ").find(operation.name + " "s) != std::string::npos) continue;
            EXPECT_EQ(failureOf([&] { operation.call(*value); }),
                      "UnsupportedFunction "s + operation.name + "() not supported");
        }
        EXPECT_EQ(row[0], writeText(*value));
    }
}

INSTANTIATE_TABLE(JsonValueKinds, "value_kinds.txt", 3);

/// A value from outside the library that cannot be cloned.
class UncloneableValue : public vexil::JsonValueDefault {
public:
    vexil::JsonType getType() const override { return vexil::JsonType::Null; }
    JsonValue* clone() const override { return nullptr; }
};

TEST(JsonValueContainers, ReportANullCloneAsLackOfMemory) {
    const JsonTree array = parseText("[]");
    array->appendValue(new UncloneableValue);
    EXPECT_THROW(JsonTree(array->clone()), std::bad_alloc);
}

TEST(JsonValueContainers, RefuseAnIndexPastTheLastEntry) {
    for (const char* const text : {"[]", "[1,2,3,4,5]", "{}", "{\"a\":1}"}) {
        const JsonTree value = parseText(text);
        EXPECT_THROW(value->getValueAt(value->getSize()), std::out_of_range) << text;
        EXPECT_THROW(value->getValueAt(0xFFFFFFFF), std::out_of_range) << text;
        if (value->getType() == JsonType::Array) continue;
        EXPECT_THROW(value->getNameAt(value->getSize()), std::out_of_range) << text;
    }
}

TEST(JsonValueObject, FindsTheFirstMemberOfExactlyThatName) {
    const JsonTree value = parseText(R"({"a":0,"A":1,"ab":2,"a":3,"n\u0000":4,"":5})");
    EXPECT_EQ(0, value->findFirst("a")->getInteger());
    EXPECT_EQ(1, value->findFirst("A")->getInteger());
    EXPECT_EQ(5, std::as_const(*value).findFirst("")->getInteger());
    EXPECT_EQ(nullptr, value->findFirst("n"));
    EXPECT_EQ(nullptr, value->findFirst("b"));
    EXPECT_EQ(6u, value->getSize());
    value->appendNameAndValue(JsonValue::createNull(), JsonValue::createNull());
    EXPECT_EQ(failureOf([&] { value->findFirst("z"); }),
              "UnsupportedFunction getString() not supported");
}

TEST(JsonValueTree, IsDestroyedInOrderNamesBeforeValues) {
    std::vector<std::string> log;
    const auto witness = [&log](const char* aName, JsonType aType = JsonType::Null) {
        return new Witness(log, aName, aType);
    };
    JsonTree root(JsonValue::createArray());
    JsonValue* const object = JsonValue::createObject();
    JsonValue* const inner = JsonValue::createArray();
    JsonValue* const name = JsonValue::createArray();
    root->appendValue(witness("1", JsonType::Array));
    root->appendValue(object);
    name->appendValue(witness("name1"));
    object->appendNameAndValue(name, inner);
    inner->appendValue(witness("value1", JsonType::Object));
    inner->appendValue(JsonValue::createArray());
    object->appendNameAndValue(witness("name2"), witness("value2"));
    root->appendValue(nullptr);
    root->appendValue(witness("3"));
    root.reset();
    EXPECT_THAT(log, ElementsAre("1", "name1", "name2", "value1", "value2", "3"));
}

TEST(JsonValueTree, IsCopiedWholeWithForeignValuesInIt) {
    std::vector<std::string> log;
    const std::string texts = R"("a text too long for the string object","another one of this kind",
        "and a third one, also too long")";
    JsonTree root = parseText(R"([{"a":[],"a":{"b":[1,"x"]}},2.5,[[null,)" + texts + "]]]");
    const std::string text = writeText(*root);
    JsonTree copy(root->clone());
    JsonTree appended(copy->clone());
    appended->appendValue(JsonValue::createString("a long text from outside the copy"));
    root->appendValue(new Witness(log, "w"));
    root->appendValue(new Witness(log, "o", JsonType::Object));
    JsonTree second(root->clone());
    root.reset();
    const std::string before = text.substr(0, text.size() - 1);
    EXPECT_EQ(before + R"(,["m"],{"m":"m"}])", writeText(*second));
    EXPECT_EQ(before + R"(,"a long text from outside the copy"])", writeText(*appended));
    second.reset();
    EXPECT_THAT(log, ElementsAre("w", "o", "w'", "o'"));
    EXPECT_EQ(text, writeText(*copy));
}

TEST(JsonTreeBuilder, CopiesForeignValuesAndDestroysThemInEveryCase) {
    const std::string text =
        R"({"a name too long for the string object":[1,["a long text in a copy"]]})";
    std::vector<std::string> log;
    const JsonTree mixed = parseText(R"(["a long text beside a foreign value"])");
    mixed->appendValue(new Witness(log, "w"));
    for (const bool isCompleted : {true, false}) {
        vexil::JsonTreeBuilder builder;
        builder.beginArray();
        builder.addCopy(*parseText(text));
        builder.addCopy(*mixed);
        if (!isCompleted) continue;
        builder.addString("the last element");
        builder.end();
        EXPECT_EQ("[" + text +
                      R"(,["a long text beside a foreign value",["m"]],"the last element"])",
                  writeText(*builder.take()));
    }
    EXPECT_THAT(log, ElementsAre("w'", "w'"));
}

} // namespace
