#include "vexil/streams.h"

#include "vexil/exceptions.h"

#include <gmock/gmock.h>

using namespace vexil;
using testing::ThrowsMessage;
using Invalid = InvalidArgument;

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
    EXPECT_THAT([&] { stream.tell(); },
                ThrowsMessage<Overflow>("MemoryInputStream::tell(): position out of range"));
    if (sizeof(std::size_t) == 4) GTEST_SKIP() << "no text is too long here";
    EXPECT_THAT([] { ByteRange("", static_cast<std::size_t>(0x100000000)); },
                ThrowsMessage<Overflow>("ByteRange: string too long"));
}

struct Refusal {
    const char* call;
    void (*run)(Streams&);
    testing::Matcher<std::function<void()>> failure;
};
#define ROW(aCall, aClass, aMessage)                                                               \
    Refusal {                                                                                      \
#aCall, [](Streams & s) { s.aCall; }, ThrowsMessage < aClass>(aMessage)                    \
    }
TEST(Streams, StayAsTheyAreAfterARefusedCall) {
    const Refusal rows[] = {
        ROW(in.read(nullptr, -1), Invalid, "MemoryInputStream::read(): invalid argument aLen"),
        ROW(in.seek(-1), Invalid, "MemoryInputStream::seek(): invalid argument aPos"),
        ROW(in.seek(6), Invalid, "MemoryInputStream::seek(): invalid argument aPos"),
        ROW(in.seek64(-1), Invalid, "MemoryInputStream::seek64(): invalid argument aPos"),
        ROW(in.seek64(6), Invalid, "MemoryInputStream::seek64(): invalid argument aPos"),
        ROW(in.seek64(1LL << 32), Invalid, "MemoryInputStream::seek64(): invalid argument aPos"),
        ROW(out.write("", -1), Invalid, "StringOutputStream::write(): invalid argument aLen"),
        ROW(out.seek(0), NotImplemented, "StringOutputStream::seek(): not implemented"),
        ROW(out.tell(), NotImplemented, "StringOutputStream::tell(): not implemented"),
        ROW(out.seek64(0), NotImplemented, "OutputStream::seek64(): not implemented"),
        ROW(out.tell64(), NotImplemented, "OutputStream::tell64(): not implemented"),
        ROW(in.InputStream::seek64(0), NotImplemented, "InputStream::seek64(): not implemented"),
        ROW(in.InputStream::tell64(), NotImplemented, "InputStream::tell64(): not implemented"),
    };
    for (const auto& row : rows) {
        Streams streams;
        streams.out.write("\0c", 2);
        streams.in.seek(2);
        EXPECT_THAT([&] { row.run(streams); }, row.failure) << row.call;
        EXPECT_EQ(streams.in.tell64(), 2) << row.call;
        EXPECT_EQ(streams.target, std::string("ab\0c", 4)) << row.call;
    }
}
