// SPDX-License-Identifier: MIT
#include "vexil/utf8_validation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

bool isValid(const std::string& aText) {
    const auto* const text = reinterpret_cast<const std::uint8_t*>(aText.data());
    return vexil::isValidUtf8(text, text + aText.size());
}

// The limits of all ranges that the rules distinguish.
constexpr char bytes[] = "a\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0"
                         "\xF1\xF3\xF4\xF5\xF7\xF8\xFF";

/// Calls @p aCheck with every sequence of four of the bytes.
template <class Check>
void forEachSequence(const Check& aCheck) {
    constexpr std::size_t count = sizeof bytes - 1;
    for (std::size_t i = 0; i < count * count * count * count; ++i) {
        const std::string sequence{bytes[i % count], bytes[i / count % count],
                                   bytes[i / count / count % count],
                                   bytes[i / count / count / count]};
        ASSERT_NO_FATAL_FAILURE(aCheck(sequence)) << testing::PrintToString(sequence);
    }
}

// Texts of a few bytes are validated by the automaton, longer ones in blocks.
TEST(Utf8Validation, OfLongTextsIsThatOfShortOnes) {
    const std::string ascii(30, 'a');
    forEachSequence([&](const std::string& aSequence) {
        const bool isValidForm = isValid(aSequence);
        ASSERT_EQ(isValid(aSequence + ascii), isValidForm);
        ASSERT_EQ(isValid(ascii + aSequence), isValidForm);
        ASSERT_EQ(isValid(ascii + aSequence + ascii), isValidForm);
    });
}

} // namespace
