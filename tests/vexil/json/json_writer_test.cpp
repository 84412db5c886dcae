#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_writer.h"

#include <gmock/gmock.h>

#include <clocale>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace std::string_literals;
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

struct StringRow {
    std::string bytes;
    std::string text;
    std::string asciiText;
};

class JsonWriterStrings : public testing::TestWithParam<StringRow> {};

TEST_P(JsonWriterStrings, AreQuotedAndEscaped) {
    const JsonTree value(JsonValue::createString(GetParam().bytes));
    EXPECT_EQ(GetParam().text, writeText(*value));
    EXPECT_EQ(GetParam().asciiText, writeText(*value, JsonWriter::EscapeNonAscii));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, JsonWriterStrings,
    testing::Values(StringRow{"", R"("")", R"("")"}, StringRow{"\"\\/", R"("\"\\/")", R"("\"\\/")"},
                    StringRow{"\0\x01\x1F"s, R"("\u0000\u0001\u001f")", R"("\u0000\u0001\u001f")"},
                    StringRow{"\b\t\n\f\r\v", R"("\b\t\n\f\r\u000b")", R"("\b\t\n\f\r\u000b")"},
                    StringRow{"a \x7F~", "\"a \x7F~\"", "\"a \x7F~\""},
                    StringRow{"\u00e9\u0080z", "\"\u00e9\u0080z\"", R"("\u00e9\u0080z")"},
                    StringRow{"\uFFFD", "\"\uFFFD\"", R"("\ufffd")"},
                    StringRow{"\U0001F600\U0010FFFF", "\"\U0001F600\U0010FFFF\"",
                              R"("\ud83d\ude00\udbff\udfff")"}));

TEST(JsonWriterFloats, HaveSixDigitsAndAPointOrAnExponent) {
    const std::pair<double, const char*> rows[] = {
        {1.0, "1.0"},
        {0.5, "0.5"},
        {100000.0, "100000.0"},
        {1e6, "1e+06"},
        {999999.5, "1e+06"},
        {123456789.0, "1.23457e+08"},
        {3.14159265, "3.14159"},
        {-0.0, "-0.0"},
        {1e20, "1e+20"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1e-300, "1e-300"},
        {5e-324, "4.94066e-324"},
        {1234565, "1.23456e+06"},
        {-1.5, "-1.5"},
        {std::numeric_limits<double>::infinity(), "inf.0"}};
    for (const auto& [value, text] : rows) EXPECT_EQ(text, floatText(value));
}

TEST(JsonWriterFloats, AreWhatTheRuntimeFormats) {
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
    const std::pair<const char*, const char*> rows[] = {
        {"1", "2"}, {"null", "true"}, {"\"a\"", "1"}, {"[1]", "2"}, {"false", "1.5"}, {"1", "[2]"}};
    const char* const texts[] = {"1 2", "null true", "\"a\"1", "[1]2", "false 1.5", "1[2]"};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        std::string text;
        vexil::StringOutputStream stream(&text);
        JsonWriter writer(stream, 0);
        writer.write(*parseText(rows[i].first));
        writer.write(*parseText(rows[i].second));
        EXPECT_EQ(texts[i], text);
    }
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

TEST(JsonWriter, DoesNotCareForTheLocale) {
    const bool hasLocale = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    const std::string text = floatText(1234.5) + " " + writeText(*parseText("1.5e3"));
    std::setlocale(LC_ALL, "C");
    if (!hasLocale) GTEST_SKIP() << "no locale with a decimal comma on this machine";
    EXPECT_EQ("1234.5 1500.0", text);
}

} // namespace
