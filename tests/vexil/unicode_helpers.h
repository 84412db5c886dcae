#pragma once

#include "vexil/exceptions.h"
#include "vexil/unicode_strings.h"

#include <gmock/gmock.h>

#include <string>

using namespace vexil;
using namespace std::string_literals;

inline const std::string truncated = "EncodingError UnicodeString32::assignUtf8(): truncated";
inline const std::string invalidCode = "EncodingError UnicodeString32::assignUtf8(): invalid code";
inline const std::string tooLong = "Overflow UnicodeString32::alloc(): string too long";

/// The class and the message of what @p aAction throws; empty if it does not.
template <class Action>
std::string failureOf(const Action& aAction) {
    try {
        aAction();
    } catch (const EncodingError& error) {
        return std::string("EncodingError ") + error.what();
    } catch (const Overflow& error) {
        return std::string("Overflow ") + error.what();
    } catch (const InvalidArgument& error) {
        return std::string("InvalidArgument ") + error.what();
    }
    return "";
}

/// The content of a string, whose terminator is checked on the way.
template <class String>
std::u32string contentOf(const String& aString) {
    EXPECT_EQ(aString.getData()[aString.getLength()], 0);
    return {aString.getData(), aString.getData() + aString.getLength()};
}

struct OctetRow {
    std::int32_t encoding;
    std::string bytes;
    std::u32string content; ///< of a string that was "old" before
    std::string failure = "";
};

/// @p aClaimed: a length to claim instead of the true one, for what is refused before it is read.
inline void expectRow(const OctetRow& aRow, std::size_t aClaimed = 0) {
    const std::size_t len = aClaimed != 0 ? aClaimed : aRow.bytes.size();
    SCOPED_TRACE(std::to_string(aRow.encoding) + " " + testing::PrintToString(aRow.bytes));
    UnicodeString32 string(Latin1, "old");
    const char* const bytes = aRow.bytes.data();
    EXPECT_EQ(failureOf([&] { string.assignOctets(aRow.encoding, bytes, len); }), aRow.failure);
    EXPECT_EQ(contentOf(string), aRow.content);
    if (aRow.encoding != Utf8) return;
    EXPECT_EQ(failureOf([&] { UnicodeString32::checkUtf8(bytes, len); }), aRow.failure);
}
