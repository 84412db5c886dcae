// SPDX-License-Identifier: MIT
#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_writer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <string>

using vexil::JsonType;
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
        if (room-- == 0) throw vexil::Exception("full");
        if (!pieces.empty()) pieces += ' ';
        pieces.append(static_cast<const char*>(aSource), static_cast<std::size_t>(aLen));
    }

    std::string pieces;
    std::size_t room = 0; ///< for so many more
};

std::string floatText(double aValue) {
    return writeText(*JsonTree(JsonValue::createFloat(aValue)));
}

class WrittenStrings : public TableTest {};

TEST_P(WrittenStrings, AreQuotedAndEscaped) {
    const Columns& row = GetParam().columns;
    const JsonTree value(JsonValue::createString(row[0]));
    EXPECT_EQ(row[1], writeText(*value));
    EXPECT_EQ(row[2], writeText(*value, JsonWriter::EscapeNonAscii));
}

INSTANTIATE_TABLE(WrittenStrings, "written_strings.txt", 3);

// Strings are taken by words: what needs an escape must be seen wherever it lies in them.
TEST(JsonWriter, EscapesAtEveryPlaceOfTextsOfEveryLength) {
    for (const std::string escape : {"", "\\\"", "\\\\", "\\u001f", "\\n", "\x7F", "\xC3\xA9"}) {
        for (std::size_t size = 0; size <= 36; ++size) {
            for (std::size_t before = 0; before <= size; ++before) {
                const std::string text =
                    '"' + std::string(before, ' ') + escape + std::string(size - before, '~') + '"';
                EXPECT_EQ(writeText(*parseText(text)), text);
            }
        }
    }
}

class WrittenNumbers : public TableTest {};

TEST_P(WrittenNumbers, HaveSixDigitsAndAPointOrAnExponent) {
    const Columns& row = GetParam().columns;
    EXPECT_EQ(row[1], floatText(std::strtod(row[0].c_str(), nullptr)));
}

INSTANTIATE_TABLE(WrittenNumbers, "written_numbers.txt", 2);

class WrittenPieces : public TableTest {};

TEST_P(WrittenPieces, AreInOrderUpToAFailure) {
    const Columns& row = GetParam().columns;
    PieceStream stream;
    stream.room = std::stoul(row[0]);
    JsonWriter writer(stream, 0);
    const auto failure = failureOf([&] { writer.write(*parseText(row[1])); });
    EXPECT_EQ(failure, row[0] == "100" ? "" : "Exception full");
    EXPECT_EQ(stream.pieces, row[2]);
}

INSTANTIATE_TABLE(WrittenPieces, "written_pieces.txt", 3);

/// A number whose accessors throw.
class UnreadableNumber : public vexil::JsonValueDefault {
public:
    explicit UnreadableNumber(JsonType aType) : mType(aType) {}
    JsonType getType() const override { return mType; }
    JsonValue* clone() const override { return nullptr; }

private:
    JsonType mType;
};

const std::map<std::string, JsonType> unreadableTypes{
    {"Boolean", JsonType::Boolean}, {"Integer", JsonType::Integer}, {"Float", JsonType::Float}};

class FailedWrites : public TableTest {};

TEST_P(FailedWrites, LeaveTheStateOfThePiecesWritten) {
    const Columns& row = GetParam().columns;
    PieceStream stream;
    stream.room = 100;
    JsonWriter writer(stream, 0);
    if (!row[0].empty()) writer.write(*parseText(row[0]));
    stream.room = std::stoul(row[2]);
    const auto type = unreadableTypes.find(row[1]);
    const JsonTree value = type == unreadableTypes.end()
                               ? parseText(row[1])
                               : std::make_unique<UnreadableNumber>(type->second);
    EXPECT_NE(failureOf([&] { writer.write(*value); }), "");
    stream.room = 100;
    writer.write(*parseText("null"));
    EXPECT_EQ(stream.pieces, row[3]);
}

INSTANTIATE_TABLE(FailedWrites, "failed_writes.txt", 4);

class WrittenPairs : public TableTest {};

TEST_P(WrittenPairs, AreSeparatedOnlyBetweenBareWords) {
    const Columns& row = GetParam().columns;
    std::string text;
    vexil::StringOutputStream stream(&text);
    JsonWriter writer(stream, 0);
    writer.write(*parseText(row[0]));
    writer.write(*parseText(row[1]));
    EXPECT_EQ(row[2], text);
}

INSTANTIATE_TABLE(WrittenPairs, "written_pairs.txt", 3);

TEST(JsonWriter, KeepsWhatWasWrittenBeforeABrokenStringAndStaysUsable) {
    for (const auto* const failed : {"truncated \xC3", "invalid code \xED\xA0\x80"}) {
        const std::string bytes = failed;
        const auto message =
            "EncodingError UnicodeString32::assignUtf8(): " + bytes.substr(0, bytes.rfind(' '));
        const JsonTree value = parseText("[1]");
        value->appendValue(JsonValue::createString(bytes));
        std::string text;
        vexil::StringOutputStream stream(&text);
        JsonWriter writer(stream, 0);
        EXPECT_EQ(failureOf([&] { writer.write(*value); }), message);
        writer.write(*parseText("[2]"));
        EXPECT_EQ("[1,[2]", text);
    }
}

TEST(JsonWriter, RefusesUnknownFlags) {
    PieceStream stream;
    for (const int flags : {-1, 2, 3}) {
        EXPECT_EQ(failureOf([&] { JsonWriter(stream, flags); }),
                  "InvalidArgument JsonWriter: invalid argument aFlags");
    }
}

/// A number whose accessor breaks the rules for classes outside the library.
class InterferingNumber : public vexil::JsonValueDefault {
public:
    explicit InterferingNumber(std::function<void()> aInterfere) : mInterfere(aInterfere) {}
    JsonType getType() const override { return JsonType::Integer; }
    std::int32_t getInteger() const override {
        mInterfere();
        return 1;
    }
    JsonValue* clone() const override { return nullptr; }

private:
    std::function<void()> mInterfere;
};

struct WriteToString {
    std::string text;
    vexil::StringOutputStream stream{&text};
    JsonWriter writer{stream, 0};
    JsonTree tree = parseText("[]");
};

struct Interference {
    const char* name;
    void (*interfere)(WriteToString&);
};

class WriterDeathTest : public testing::TestWithParam<Interference> {};

TEST_P(WriterDeathTest, AssertsThatAValueDoesNotInterfere) {
#ifndef VEXIL_ASSERTIONS
    GTEST_SKIP() << "built without assertions";
#endif
    WriteToString write;
    write.tree->appendValue(new InterferingNumber([&] { GetParam().interfere(write); }));
    write.tree->appendValue(JsonValue::createNull());
    EXPECT_DEATH(write.writer.write(*write.tree), "assertion failed");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WriterDeathTest,
    testing::Values(
        Interference{"AppendsToTheTarget", [](WriteToString& w) { w.text.append(1000, 'x'); }},
        Interference{"ClearsTheTarget", [](WriteToString& w) { w.text.clear(); }},
        Interference{"WritesToTheStream", [](WriteToString& w) { w.stream.write("x", 1); }},
        Interference{"WritesWithTheWriter",
                     [](WriteToString& w) { w.writer.write(*parseText("1")); }},
        Interference{"AppendsToTheArray",
                     [](WriteToString& w) {
                         for (int i = 0; i < 9; ++i) w.tree->appendValue(JsonValue::createNull());
                     }}),
    [](const auto& aRow) { return std::string(aRow.param.name); });

} // namespace
