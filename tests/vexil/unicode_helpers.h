// SPDX-License-Identifier: MIT
#pragma once

#include "tests/table.h"
#include "vexil/unicode_strings.h"

#include <gmock/gmock.h>

#include <span>
#include <string>

using namespace vexil;
using namespace std::string_literals;

/// Units of any width as the tables show them.
template <class Unit>
std::string shown(const Unit* aUnits, std::size_t aCount) {
    std::ostringstream text;
    text << std::hex << std::uppercase;
    for (const std::uint32_t unit : std::span(aUnits, aCount)) {
        unit > 0x20 && unit < 0x7F ? text << char(unit) : text << '<' << unit << '>';
    }
    return text.str();
}

/// The content of a string, whose terminator is checked on the way.
template <class String>
std::string contentOf(const String& aString) {
    EXPECT_EQ(aString.getData()[aString.getLength()], 0);
    return shown(aString.getData(), aString.getLength());
}

/// What becomes of a string that was "old".
struct OctetRow {
    std::int32_t encoding;
    std::string bytes, content, failure = "";
};

/// A row of octet_encodings.txt for each of its encodings.
inline std::vector<OctetRow> octetRowsOf(const Columns& aRow) {
    std::vector<OctetRow> rows;
    for (const int encoding : numbersOf(aRow[0])) {
        rows.push_back({encoding, aRow[1], aRow[2], aRow[3]});
    }
    return rows;
}

/// @p aClaimed: a length to claim instead of the true one, for text that is refused unread.
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
