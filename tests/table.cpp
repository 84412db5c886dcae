#include "tests/table.h"

#include <fstream>
#include <memory>
#include <typeinfo>

#include <cxxabi.h>
#include <gtest/gtest.h>

namespace {

std::string trimmed(const std::string& aText) {
    const auto begin = aText.find_first_not_of(' ');
    return begin == aText.npos ? "" : aText.substr(begin, aText.find_last_not_of(' ') - begin + 1);
}

std::string decoded(const std::string& aText) {
    std::string result;
    for (std::size_t i = 0; i < aText.size(); ++i) {
        if (aText[i] != '%') {
            result += aText[i];
        } else if (aText.at(i + 1) == '{') {
            const auto star = aText.find('*', i), end = aText.find('}', i);
            const auto part = decoded(aText.substr(star + 1, end - star - 1));
            for (int count = std::stoi(aText.substr(i + 2)); count > 0; --count) result += part;
            i = end;
        } else {
            result += static_cast<char>(std::stoi(aText.substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
    }
    return result;
}

Columns columnsOf(const std::string& aLine) {
    Columns columns;
    std::istringstream line(aLine + '|');
    for (std::string text; std::getline(line, text, '|');)
        columns.push_back(decoded(trimmed(text)));
    return columns;
}

} // namespace

void forEachRow(const std::string& aFile, std::size_t aCount,
                const std::function<void(const Columns&)>& aCheck) {
    std::ifstream file(TEST_DATA "/" + aFile);
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.starts_with("# ")) continue;
        SCOPED_TRACE(aFile + ", row " + std::to_string(++rows) + ": " + line);
        const auto columns = columnsOf(line);
        ASSERT_EQ(columns.size(), aCount);
        aCheck(columns);
    }
    EXPECT_GT(rows, 0) << "no row in " TEST_DATA "/" << aFile;
}

std::string failureOf(const std::function<void()>& aAction) {
    try {
        aAction();
    } catch (const std::exception& failure) {
        const auto* const symbol = typeid(failure).name();
        const std::unique_ptr<char, decltype(&std::free)> name(
            abi::__cxa_demangle(symbol, nullptr, nullptr, nullptr), std::free);
        const std::string text = name.get();
        return text.substr(text.rfind(':') + 1) + " " + failure.what();
    }
    return "";
}
