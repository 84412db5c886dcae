#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_writer.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::ThrowsMessage;
using vexil::JsonValue;
using vexil::JsonWriter;

namespace {

/// A stream that the library does not know: keeps the pieces apart and fails at one of them.
class PieceStream : public vexil::OutputStream {
public:
    void flush() override {}
    void close() override {}
    void seek(std::int32_t) override {}
    std::int32_t tell() override { return 0; }
    void write(const void* aSource, std::int32_t aLen) override {
        if (pieces.size() == failAt) throw vexil::Exception("full");
        pieces.emplace_back(static_cast<const char*>(aSource), static_cast<std::size_t>(aLen));
    }

    std::vector<std::string> pieces;
    std::size_t failAt = std::numeric_limits<std::size_t>::max();
};

/// A container of a class that the library does not know: two members that are each other's mirror.
class ForeignObject : public vexil::JsonValueDefault {
public:
    using JsonValueDefault::getNameAt;
    using JsonValueDefault::getValueAt;
    vexil::JsonType getType() const override { return vexil::JsonType::Object; }
    std::uint32_t getSize() const override { return 2; }
    const JsonValue* getNameAt(std::uint32_t aIndex) const override { return mTexts[aIndex].get(); }
    const JsonValue* getValueAt(std::uint32_t aIndex) const override {
        return mTexts[1 - aIndex].get();
    }
    JsonValue* clone() const override { return new ForeignObject; }

private:
    const JsonTree mTexts[2] = {JsonTree(JsonValue::createString("a")),
                                JsonTree(JsonValue::createString("b"))};
};

std::string floatText(double aValue) {
    return writeText(*JsonTree(JsonValue::createFloat(aValue)));
}

TEST(JsonWriter, QuotesAndEscapesStrings) {
    forEachRow("written_strings.txt", 3, [](const Columns& aRow) {
        const JsonTree value(JsonValue::createString(aRow[0]));
        EXPECT_EQ(aRow[1], writeText(*value));
        EXPECT_EQ(aRow[2], writeText(*value, JsonWriter::EscapeNonAscii));
    });
}

TEST(JsonWriter, GivesFloatsSixDigitsAndAPointOrAnExponent) {
    forEachRow("written_numbers.txt", 2, [](const Columns& aRow) {
        EXPECT_EQ(aRow[1], floatText(std::strtod(aRow[0].c_str(), nullptr)));
    });
}

TEST(JsonWriter, GivesFloatsAsTheRuntimeFormatsThem) {
    std::mt19937_64 random(20260131);
    for (int i = 0; i < 300000; ++i) {
        const double value =
            i % 3 == 0 ? std::bit_cast<double>(random() & 0xFFEFFFFFFFFFFFFF)
                       : static_cast<double>(random() % 20000001) / (i % 3 == 1 ? 16 : 1000);
        char expected[128];
        std::snprintf(expected, sizeof expected, "%g", value);
        const std::string text = floatText(value);
        ASSERT_EQ(std::string(expected) +
                      (std::string(expected).find_first_of(".e") == std::string::npos ? ".0" : ""),
                  text);
    }
}

TEST(JsonWriter, WritesEachPieceOnceAndInOrder) {
    PieceStream stream;
    JsonWriter writer(stream, 0);
    writer.write(*parseText(R"({"a":[1,2,"x"],"b":null,"c":{}})"));
    EXPECT_THAT(stream.pieces,
                ElementsAre("{", "\"a\"", ":", "[", "1", ",", "2", ",", "\"x\"", "]", ",", "\"b\"",
                            ":", "null", ",", "\"c\"", ":", "{", "}", "}"));
    stream.pieces.clear();
    writer.write(*parseText("3e0"));
    writer.write(*parseText("1.5"));
    EXPECT_THAT(stream.pieces, ElementsAre("3", ".0", " ", "1.5"));
}

TEST(JsonWriter, PartsOnlyBareWordsByABlank) {
    forEachRow("written_pairs.txt", 3, [](const Columns& aRow) {
        std::string text;
        vexil::StringOutputStream stream(&text);
        JsonWriter writer(stream, 0);
        writer.write(*parseText(aRow[0]));
        writer.write(*parseText(aRow[1]));
        EXPECT_EQ(aRow[2], text);
    });
}

TEST(JsonWriter, KeepsWhatWasWrittenBeforeAFailureAndStaysUsable) {
    const std::pair<const char*, const char*> rows[] = {
        {"ab\xED\xA0\x80", "UnicodeString32::assignUtf8(): invalid code"},
        {"ab\xC3", "UnicodeString32::assignUtf8(): truncated"}};
    for (const auto& [bytes, message] : rows) {
        const JsonTree value = parseText("[1]");
        value->appendValue(JsonValue::createString(bytes));
        std::string text;
        vexil::StringOutputStream stream(&text);
        JsonWriter writer(stream, 0);
        EXPECT_THAT([&] { writer.write(*value); }, ThrowsMessage<vexil::EncodingError>(message));
        writer.write(*parseText("[2]"));
        EXPECT_EQ("[1,[2]", text);
    }
    PieceStream full;
    full.failAt = 2;
    JsonWriter writer(full, 0);
    EXPECT_THAT([&] { writer.write(*parseText("[1,2]")); },
                ThrowsMessage<vexil::Exception>("full"));
    EXPECT_THAT(full.pieces, ElementsAre("[", "1"));
}

TEST(JsonWriter, AsksAForeignContainerForItsMembers) {
    const JsonTree value = parseText("[1]");
    value->appendValue(new ForeignObject);
    EXPECT_EQ(R"([1,{"a":"b","b":"a"}])", writeText(*value));
}

TEST(JsonWriter, RefusesUnknownFlags) {
    PieceStream stream;
    for (const int flags : {-1, 2, 3}) {
        EXPECT_THAT([&] { JsonWriter(stream, flags); },
                    ThrowsMessage<vexil::InvalidArgument>("JsonWriter: invalid argument aFlags"));
    }
}

} // namespace
