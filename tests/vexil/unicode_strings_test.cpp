// SPDX-License-Identifier: MIT
#include "tests/vexil/unicode_helpers.h"
#include "vexil/exceptions.h"

#include <set>

template <class String>
struct Probe : String {
    using String::alloc;
    using String::mCapacity;
};

TEST(UnicodeString32, DecodesAndEncodesEveryCodePoint) {
    UnicodeString32 all;
    std::string bytes;
    for (std::uint32_t code = 0; code <= 0x10FFFF; ++code) {
        if (code == 0xD800) code = 0xE000;
        all.append(code);
        char form[4];
        bytes.append(form, UnicodeString32::encodeUtf8(form, code));
    }
    EXPECT_TRUE(all.asUtf8() == bytes);
    UnicodeString32::checkUtf8(bytes.data(), bytes.size());
    EXPECT_TRUE(contentOf(UnicodeString32(Utf8, bytes)) == contentOf(all));
}

const auto invalidCode = "EncodingError UnicodeString32::assignUtf8(): invalid code"s;

// ASCII is examined in blocks: other bytes must be noticed at every position in them.
TEST(UnicodeString32, NoticesOtherBytesAtEveryPosition) {
    for (std::size_t before = 0; before <= 40; ++before) {
        for (std::size_t after = 0; after <= 40; ++after) {
            const std::string head(before, 'a'), tail(after, 'b');
            expectRow({Utf8, head + "\xC3\xA9" + tail, head + "<E9>" + tail});
            expectRow({Utf8, head + "\x80" + tail, "old", invalidCode});
        }
    }
}

TEST(UnicodeString32, RefusesFormsSplitByAscii) {
    for (const auto& form : {"\xC3\xA9"s, "\xE2\x82\xAC"s, "\xF0\x9F\x98\x80"s}) {
        for (std::size_t split = 1; split < form.size(); ++split) {
            for (std::size_t count = 1; count <= 64; ++count) {
                const std::string ascii(count, 'a');
                const std::string text = form.substr(0, split) + ascii + form.substr(split);
                expectRow({Utf8, text, "old", invalidCode});
                expectRow({Utf8, ascii + text + ascii, "old", invalidCode});
            }
        }
    }
}

TEST(UnicodeString32, EncodesLongFormsAfterAnyNumberOfAsciiCharacters) {
    const std::string forms = [] {
        std::string text;
        for (int i = 0; i < 70; ++i) text += "\xF0\x9F\x98\x80";
        return text;
    }();
    for (std::size_t count = 0; count < 300; ++count) {
        const std::string text = std::string(count, 'a') + forms;
        const std::string encoded = UnicodeString32(Utf8, text).asUtf8();
        ASSERT_EQ(encoded, text);
        ASSERT_EQ(encoded.capacity(), text.size()) << "allocated once, in the right size";
    }
}

static const auto tooLong = "Overflow UnicodeString32::alloc(): string too long"s;

TEST(UnicodeString32, RefusesWhatItCannotHoldOrEncode) {
    UnicodeString32 string(Utf8, "abc");
    EXPECT_EQ(failureOf([&] { string.append(0x110000); }),
              "EncodingError UnicodeStringBase::checkUTF32(): code out of range");
    for (const std::size_t count : {67108862U, 0xFFFFFFFFU}) {
        EXPECT_EQ(failureOf([&] { string.reserve(count); }), tooLong);
    }
    EXPECT_EQ(contentOf(string), "abc");
    for (const std::uint32_t code : {0xD800U, 0xDFFFU}) {
        string.clear();
        string.append(code);
        EXPECT_EQ(failureOf([&] { return string.asUtf8(); }),
                  "EncodingError UnicodeString32::asUtf8(): reserved code");
    }
    char form[4];
    EXPECT_EQ(failureOf([&] { return UnicodeString32::encodeUtf8(form, 0x110000); }),
              "EncodingError UnicodeString32::asUtf8(): code out of range");
}

TEST(UnicodeString32, ReservesATerminatedBlock) {
    // The allocator is likely to return the block of the first string.
    UnicodeString32(Latin1, std::string(100, 'x'));
    UnicodeString32 string;
    string.reserve(100);
    EXPECT_EQ(contentOf(string), "");
}

TEST(UnicodeString32, DoesNotGrowForARefusedCode) {
    Probe<UnicodeString32> string;
    for (int i = 0; i < 3; ++i) string.append('a');
    EXPECT_THROW(string.append(0x110000), EncodingError);
    EXPECT_EQ(string.mCapacity, 4U);
    EXPECT_EQ(contentOf(string), "aaa");
}

TEST(UnicodeString32, GivesUpItsBlockForNoUnits) {
    Probe<UnicodeString32> string;
    string.append('a');
    string.assignUtf16(nullptr, 0);
    EXPECT_EQ(string.mCapacity, 0U);
    EXPECT_EQ(contentOf(string), "");
}

TEST(UnicodeString32, GrowsByHalfUpToItsLimit) {
    Probe<UnicodeString32> string;
    std::set<std::uint32_t> capacities;
    while (string.getLength() < 27) {
        string.append('a');
        capacities.insert(string.mCapacity);
    }
    EXPECT_THAT(capacities, testing::ElementsAre(4, 6, 9, 13, 19, 28));
    string.reserve(44739242);
    string.reserve(44739243);
    EXPECT_EQ(string.mCapacity, 67108863U);
    // This block holds one more than may be asked for where it has to grow.
    string.reserve(67108862);
    EXPECT_EQ(failureOf([&] { string.reserve(67108863); }), tooLong);
    EXPECT_EQ(contentOf(string), std::string(27, 'a'));
}

TEST(UnicodeString16, CopiesUpToTheFirstZeroUnit) {
    const std::uint16_t units[] = {0x41, 0xD800, 0, 0};
    Probe<UnicodeString16> string;
    EXPECT_EQ(contentOf(string), "");
    string.assign(units);
    for (const std::size_t count : {134217726U, 0xFFFFFFFFU}) {
        EXPECT_EQ(failureOf([&] { string.alloc(count); }),
                  "Overflow UnicodeString16::alloc(): string too long");
    }
    string.alloc(134217725);
    EXPECT_EQ(contentOf(string), "A<D800>");
    string.assign(units + 3);
    EXPECT_EQ(contentOf(string), "");
}
