#pragma once

#include <functional>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

using Columns = std::vector<std::string>;

/// Calls @p aCheck with the @p aCount columns of each row of tests/data/@p aFile, decoded. What
/// fails in it tells the row. It is a failure as well if there is no row or one of another length.
///
/// A row is a line; its columns are trimmed and stand between "|". %41 is the byte 0x41, and
/// %{3*ab} is ababab. Empty lines, and those that start with "# ", are no rows.
void forEachRow(const std::string& aFile, std::size_t aCount,
                const std::function<void(const Columns&)>& aCheck);

/// The decimal numbers of a column, or the hexadecimal ones.
template <class Number = int>
std::vector<Number> numbersOf(const std::string& aText, int aBase = 10) {
    std::istringstream text(aText);
    text >> std::setbase(aBase);
    return {std::istream_iterator<Number>(text), {}};
}

/// The class and the message of what @p aAction throws; empty if it does not.
std::string failureOf(const std::function<void()>& aAction);
