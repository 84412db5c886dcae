// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <iomanip>
#include <iosfwd>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Columns = std::vector<std::string>;

/// A row of a table in tests/data: a line whose columns are separated by "|" and trimmed. In a
/// column, %41 is the byte 0x41, and %{3*ab} is ababab. Empty lines, and lines that begin with "#
/// ", are not rows.
struct TableRow {
    int line;         ///< in the file, from 1
    std::string text; ///< as written in the file
    Columns columns;  ///< decoded
};

/// Returns the rows of tests/data/@p aFile. Throws std::runtime_error if there is none, or if one
/// does not have @p aCount columns.
std::vector<TableRow> readTable(const std::string& aFile, std::size_t aCount);

/// A test suite whose tests run once for each row of a table.
class TableTest : public testing::TestWithParam<TableRow> {};

/// Runs the tests of @p suite, a class derived from TableTest, for each row of tests/data/@p file.
/// Each row is a separate test: Rows/Suite.Test/Line12_text.
#define INSTANTIATE_TABLE(suite, file, count)                                                      \
    INSTANTIATE_TEST_SUITE_P(Rows, suite, testing::ValuesIn(readTable(file, count)),               \
                             [](const auto& aInfo) { return nameOfRow(aInfo.param); })

/// The name of the test of a row: the line, and the letters and digits of the text.
std::string nameOfRow(const TableRow& aRow);

/// Shows a row in the report of a failure.
void PrintTo(const TableRow& aRow, std::ostream* aStream);

/// Calls @p aCheck with the columns of each row of a table, as readTable() returns them. For tests
/// that examine all rows at once.
void forEachRow(const std::string& aFile, std::size_t aCount,
                const std::function<void(const Columns&)>& aCheck);

/// The decimal or, with @p aBase 16, hexadecimal numbers in a column.
template <class Number = int>
std::vector<Number> numbersOf(const std::string& aText, int aBase = 10) {
    std::istringstream text(aText);
    text >> std::setbase(aBase);
    return {std::istream_iterator<Number>(text), {}};
}

/// Class and message of the exception that @p aAction throws; empty if it throws none.
std::string failureOf(const std::function<void()>& aAction);
