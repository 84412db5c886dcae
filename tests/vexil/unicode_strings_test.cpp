#include "tests/failing_memory.h"
#include "tests/vexil/unicode_helpers.h"

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
        UnicodeString32::appendUtf8(bytes, code);
    }
    EXPECT_TRUE(all.asUtf8() == bytes);
    UnicodeString32::checkUtf8(bytes.data(), bytes.size());
    EXPECT_TRUE(contentOf(UnicodeString32(Utf8, bytes)) == contentOf(all));
    // Both ends of every range, spelt out
    expectRow({Utf8,
               "\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
               "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"s,
               U"\0\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF\x10000\x10FFFF"s});
}

TEST(UnicodeString32, RefusesBrokenUtf8) {
    // The text ends within a form, whatever the form would be worth
    for (const char* text : {"\xC2", "\xC0", "\xE2", "\xE2\x82", "\xED\xA0", "\xF0", "\xF0\x9F",
                             "\xF0\x9F\x98", "\xF7\xBF\xBF", "0123456789ABCDEF\xE2\x82"}) {
        expectRow({Utf8, text, U"old", truncated});
    }
    for (const char* text :
         {// A byte does not continue the form, before the text ends or where it does
          "\xC2\x7F", "\xC2\xC0", "\xE2\x41", "\xE2\x41\x82", "\xE2\x82\x41", "\xE2\x82\xC0",
          "\xF0\x41", "\xF0\x9F\x41", "\xF0\x41\x98\x80", "\xF0\x9F\x41\x80", "\xF0\x9F\x98\x41",
          "\xF0\x9F\x98\xC0",
          // No lead byte, overlong forms, surrogates, too large
          "\x80", "\xBF\x80", "\xF8", "\xF9\x81\x80\x80", "\xFF", "\x80\xC2", "\xC0\x80",
          "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF",
          "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
          "\xF7\xBF\xBF\xBF"}) {
        expectRow({Utf8, text, U"old", invalidCode});
    }
}

// ASCII is taken by words: whatever follows it must be seen wherever it lies in them.
TEST(UnicodeString32, SeesOtherBytesAtEveryPlace) {
    for (std::size_t before = 0; before <= 40; ++before) {
        for (std::size_t after = 0; after <= 40; ++after) {
            const std::string head(before, 'a'), tail(after, 'b');
            expectRow({Utf8, head + "\xC3\xA9" + tail,
                       std::u32string(before, 'a') + U'\xE9' + std::u32string(after, 'b')});
            expectRow({Utf8, head + "\x80" + tail, U"old", invalidCode});
        }
    }
}

TEST(UnicodeString32, RefusesWhatItCannotHoldOrEncode) {
    UnicodeString32 string(Utf8, "abc");
    EXPECT_EQ(failureOf([&] { string.append(0x110000); }),
              "EncodingError UnicodeStringBase::checkUTF32(): code out of range");
    for (const std::size_t count : {67108862U, 0xFFFFFFFFU}) {
        EXPECT_EQ(failureOf([&] { string.reserve(count); }), tooLong);
    }
    {
        const FailingMemory none(0);
        EXPECT_THROW(string.append('d'), std::bad_alloc);
        EXPECT_THROW(string.assignUtf8("d", 1), std::bad_alloc);
    }
    EXPECT_EQ(contentOf(string), U"abc");
    for (const std::uint32_t code : {0xD800U, 0xDFFFU}) {
        string.clear();
        string.append(code);
        EXPECT_EQ(failureOf([&] { string.asUtf8(); }),
                  "EncodingError UnicodeString32::asUtf8(): reserved code");
    }
    std::string bytes;
    EXPECT_EQ(failureOf([&] { UnicodeString32::appendUtf8(bytes, 0x110000); }),
              "EncodingError UnicodeString32::asUtf8(): code out of range");
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
    EXPECT_EQ(contentOf(string), std::u32string(27, 'a'));
}

TEST(UnicodeString16, CopiesUpToTheFirstZeroUnit) {
    const std::uint16_t units[] = {0x41, 0xD800, 0, 0};
    Probe<UnicodeString16> string;
    EXPECT_EQ(contentOf(string), U"");
    string.assign(units);
    for (const std::size_t count : {134217726U, 0xFFFFFFFFU}) {
        EXPECT_EQ(failureOf([&] { string.alloc(count); }),
                  "Overflow UnicodeString16::alloc(): string too long");
    }
    string.alloc(134217725);
    EXPECT_EQ(contentOf(string), U"A\xD800");
    string.assign(units + 3);
    EXPECT_EQ(contentOf(string), U"");
}
