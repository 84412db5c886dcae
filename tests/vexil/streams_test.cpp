#include "vexil/streams.h"

#include "vexil/exceptions.h"

#include <gmock/gmock.h>

using namespace vexil;
using testing::ThrowsMessage;

struct Streams {
    std::string source = "abcde", target = "ab";
    MemoryInputStream in{ByteRange(source)};
    StringOutputStream out{&target};
};

TEST(MemoryInputStream, ReadsWhatThereIs) {
    struct {
        std::int32_t from, length, count;
    } const rows[] = {{2, 0, 0}, {4, 1, 1}, {0, 3, 3}, {3, 10, 2}, {5, 1, 0}};
    for (const auto& [from, length, count] : rows) {
        SCOPED_TRACE(testing::Message() << length << " bytes at " << from);
        Streams streams;
        streams.in.seek(from);
        std::string bytes(10, '.');
        EXPECT_EQ(streams.in.read(bytes.data(), length), count);
        const auto read = streams.source.substr(std::size_t(from), std::size_t(count));
        EXPECT_EQ(bytes, read + std::string(10 - read.size(), '.'));
        EXPECT_EQ(streams.in.tell(), from + count);
        EXPECT_EQ(streams.in.available(), 5 - from - count);
    }
}

TEST(MemoryInputStream, HasNoDataOnceClosed) {
    Streams streams;
    streams.in.close();
    char byte;
    EXPECT_EQ(streams.in.read(&byte, 1), 0);
    EXPECT_EQ(streams.in.available(), 0);
    EXPECT_NO_THROW(streams.in.seek(0));
    EXPECT_THROW(streams.in.seek(1), InvalidArgument);
}

TEST(MemoryInputStream, TellsPositionsBeyond31BitsIn64Only) {
    MemoryInputStream stream("", 0xFFFFFFFF); // never read
    EXPECT_EQ(stream.available(), 0x7FFFFFFF);
    stream.seek64(0x7FFFFFFF);
    EXPECT_EQ(stream.tell(), 0x7FFFFFFF);
    stream.seek64(0x80000000);
    EXPECT_EQ(stream.tell64(), 0x80000000);
    EXPECT_THAT([&] { stream.tell(); },
                ThrowsMessage<Overflow>("MemoryInputStream::tell(): position out of range"));
}

TEST(ByteRange, TakesLessThan4GiB) {
    if (sizeof(std::size_t) == 4) GTEST_SKIP() << "no text is too long here";
    const auto limit = static_cast<std::size_t>(std::uint64_t{1} << 32);
    EXPECT_EQ(ByteRange("", limit - 1).getSize(), 0xFFFFFFFF);
    EXPECT_THAT([&] { ByteRange("", limit); },
                ThrowsMessage<Overflow>("ByteRange: string too long"));
}

TEST(StringOutputStream, AppendsAnyBytes) {
    Streams streams;
    streams.out.write("\0c", 2);
    streams.out.write(nullptr, 0);
    EXPECT_EQ(streams.target, std::string("ab\0c", 4));
}

struct RefusedCall {
    const char* name;
    void (*call)(Streams&);
    testing::Matcher<std::function<void()>> failure;
};
class StreamsRefuse : public testing::TestWithParam<RefusedCall> {};
TEST_P(StreamsRefuse, AndStayAsTheyAre) {
    Streams streams;
    streams.in.seek(2);
    EXPECT_THAT([&] { GetParam().call(streams); }, GetParam().failure);
    EXPECT_EQ(streams.in.tell64(), 2);
    EXPECT_EQ(streams.target, "ab");
}

#define REFUSED(aName, aCall, aClass, aMessage)                                                    \
    RefusedCall {                                                                                  \
        aName, [](Streams& s) { s.aCall; }, ThrowsMessage<aClass>(aMessage)                        \
    }
INSTANTIATE_TEST_SUITE_P(
    Calls, StreamsRefuse,
    testing::Values(REFUSED("NegativeRead", in.read(nullptr, -1), InvalidArgument,
                            "MemoryInputStream::read(): invalid argument aLen"),
                    REFUSED("SeekBeforeStart", in.seek(-1), InvalidArgument,
                            "MemoryInputStream::seek(): invalid argument aPos"),
                    REFUSED("SeekPastEnd", in.seek(6), InvalidArgument,
                            "MemoryInputStream::seek(): invalid argument aPos"),
                    REFUSED("Seek64BeforeStart", in.seek64(-1), InvalidArgument,
                            "MemoryInputStream::seek64(): invalid argument aPos"),
                    REFUSED("Seek64PastEnd", in.seek64(6), InvalidArgument,
                            "MemoryInputStream::seek64(): invalid argument aPos"),
                    REFUSED("Seek64Past32Bits", in.seek64(std::int64_t{1} << 32), InvalidArgument,
                            "MemoryInputStream::seek64(): invalid argument aPos"),
                    REFUSED("NegativeWrite", out.write("", -1), InvalidArgument,
                            "StringOutputStream::write(): invalid argument aLen"),
                    REFUSED("StringSeek", out.seek(0), NotImplemented,
                            "StringOutputStream::seek(): not implemented"),
                    REFUSED("StringTell", out.tell(), NotImplemented,
                            "StringOutputStream::tell(): not implemented"),
                    REFUSED("OutputSeek64", out.seek64(0), NotImplemented,
                            "OutputStream::seek64(): not implemented"),
                    REFUSED("OutputTell64", out.tell64(), NotImplemented,
                            "OutputStream::tell64(): not implemented"),
                    REFUSED("InputSeek64", in.InputStream::seek64(0), NotImplemented,
                            "InputStream::seek64(): not implemented"),
                    REFUSED("InputTell64", in.InputStream::tell64(), NotImplemented,
                            "InputStream::tell64(): not implemented")),
    [](const auto& aRow) { return std::string(aRow.param.name); });
