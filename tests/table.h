#pragma once

#include <functional>
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
