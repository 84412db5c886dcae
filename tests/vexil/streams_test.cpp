// SPDX-License-Identifier: MIT
#include "vexil/streams.h"

#include "tests/table.h"
#include "vexil/exceptions.h"

#include <map>

#include <gtest/gtest.h>

using namespace vexil;

struct Streams {
    std::string source = "abcde", target = "ab";
    MemoryInputStream in{ByteRange(source)};
    StringOutputStream out{&target};
};

TEST(MemoryInputStream, ReadsWhatThereIs) {
    const std::tuple<int, int, std::string> rows[] = {
        {2, 0, ""}, {4, 1, "e"}, {0, 3, "abc"}, {3, 10, "de"}, {5, 1, ""}};
    for (const auto& [from, length, bytes] : rows) {
        Streams streams;
        streams.in.seek(from);
        std::string read(10, '.');
        read.resize(std::size_t(streams.in.read(read.data(), length)));
        EXPECT_EQ(read, bytes) << length << " from " << from;
        EXPECT_EQ(streams.in.tell(), from + int(bytes.size()));
        EXPECT_EQ(streams.in.available(), 5 - streams.in.tell());
        streams.in.close();
        EXPECT_EQ(streams.in.read(read.data(), 1) + streams.in.available(), 0);
        EXPECT_THROW(streams.in.seek(1), InvalidArgument);
    }
}

TEST(MemoryInputStream, HasPositionsBeyond31BitsBut32BitsOnly) {
    MemoryInputStream stream(ByteRange("", 0xFFFFFFFF)); // never read
    EXPECT_EQ(stream.available(), 0x7FFFFFFF);
    stream.seek64(0x7FFFFFFF);
    EXPECT_EQ(stream.tell(), 0x7FFFFFFF);
    stream.seek64(0x80000000);
    EXPECT_EQ(stream.tell64(), 0x80000000);
    EXPECT_EQ(failureOf([&] { stream.tell(); }),
              "Overflow MemoryInputStream::tell(): position out of range");
    if (sizeof(std::size_t) == 4) GTEST_SKIP() << "no text is too long here";
    EXPECT_EQ(failureOf([] { ByteRange("", static_cast<std::size_t>(0x100000000)); }),
              "Overflow ByteRange: string too long");
}

using Call = std::pair<const std::string, void (*)(Streams&)>;
#define CALL(aCall) Call(#aCall, [](Streams& s) { s.aCall; })
// clang-format off
const std::map<std::string, void (*)(Streams&)> calls{
    CALL(in.read(nullptr, -1)), CALL(in.seek(-1)), CALL(in.seek(6)), CALL(in.seek64(-1)),
    CALL(in.seek64(6)), CALL(in.seek64(1LL << 32)), CALL(in.InputStream::seek64(0)),
    CALL(in.InputStream::tell64()), CALL(out.write("", -1)), CALL(out.seek(0)), CALL(out.tell()),
    CALL(out.seek64(0)), CALL(out.tell64())};
// clang-format on

class RefusedCalls : public TableTest {};

TEST_P(RefusedCalls, LeaveTheStreamsUnchanged) {
    const Columns& row = GetParam().columns;
    Streams streams;
    streams.out.write("\0c", 2);
    streams.out.flush();
    streams.in.seek(2);
    EXPECT_EQ(failureOf([&] { calls.at(row[0])(streams); }), row[1]);
    EXPECT_EQ(streams.in.tell64(), 2);
    streams.out.close();
    EXPECT_EQ(streams.target, std::string("ab\0c", 4));
}

INSTANTIATE_TABLE(RefusedCalls, "refused_calls.txt", 2);
