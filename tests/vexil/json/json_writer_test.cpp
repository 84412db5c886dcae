#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

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

TEST(JsonWriter, QuotesAndEscapesStrings) {
    forEachRow("written_strings.txt", 3, [](const Columns& aRow) {
        const JsonTree value(JsonValue::createString(aRow[0]));
        EXPECT_EQ(aRow[1], writeText(*value));
        EXPECT_EQ(aRow[2], writeText(*value, JsonWriter::EscapeNonAscii));
    });
}

// Strings are taken by words: what needs an escape must be seen wherever it lies in them.
TEST(JsonWriter, EscapesAtEveryPlaceOfTextsOfEveryLength) {
    for (const std::string escape : {"", "\\\"", "\\\\", "\\u001f", "\\n", "\x7F", "\xC3\xA9"}) {
        for (std::size_t size = 0; size <= 24; ++size) {
            for (std::size_t before = 0; before <= size; ++before) {
                const std::string text =
                    '"' + std::string(before, ' ') + escape + std::string(size - before, '~') + '"';
                EXPECT_EQ(writeText(*parseText(text)), text);
            }
        }
    }
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

TEST(JsonWriter, WritesEachPieceOnceAndInOrderUpToAFailure) {
    forEachRow("written_pieces.txt", 3, [](const Columns& aRow) {
        PieceStream stream;
        stream.room = std::stoul(aRow[0]);
        JsonWriter writer(stream, 0);
        const auto failure = failureOf([&] { writer.write(*parseText(aRow[1])); });
        EXPECT_EQ(failure, aRow[0] == "100" ? "" : "Exception full");
        EXPECT_EQ(stream.pieces, aRow[2]);
    });
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

} // namespace
