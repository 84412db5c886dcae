// SPDX-License-Identifier: MIT
#include "tests/table.h"

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <typeinfo>

#include <cxxabi.h>

namespace {

constexpr std::size_t longestName = 40;

std::string trimmed(const std::string& aText) {
    const auto begin = aText.find_first_not_of(' ');
    if (begin == aText.npos) return "";
    return aText.substr(begin, aText.find_last_not_of(' ') - begin + 1);
}

std::string decoded(const std::string& aText);

// Decodes the %{count*text} at @p aPos and moves to its last character.
std::string decodeRepetition(const std::string& aText, std::size_t& aPos) {
    const auto star = aText.find('*', aPos);
    const auto end = aText.find('}', aPos);
    const auto part = decoded(aText.substr(star + 1, end - star - 1));
    std::string result;
    for (int count = std::stoi(aText.substr(aPos + 2)); count > 0; --count) result += part;
    aPos = end;
    return result;
}

std::string decoded(const std::string& aText) {
    std::string result;
    for (std::size_t pos = 0; pos < aText.size(); ++pos) {
        if (aText[pos] != '%') {
            result += aText[pos];
        } else if (aText.at(pos + 1) == '{') {
            result += decodeRepetition(aText, pos);
        } else {
            result += static_cast<char>(std::stoi(aText.substr(pos + 1, 2), nullptr, 16));
            pos += 2;
        }
    }
    return result;
}

Columns columnsOf(const std::string& aLine) {
    Columns columns;
    std::istringstream line(aLine + '|');
    std::string text;
    while (std::getline(line, text, '|')) columns.push_back(decoded(trimmed(text)));
    return columns;
}

bool isAsciiAlphanumeric(char aCharacter) {
    const auto byte = static_cast<unsigned char>(aCharacter);
    return byte < 0x80 && std::isalnum(byte) != 0;
}

} // namespace

std::vector<TableRow> readTable(const std::string& aFile, std::size_t aCount) {
    std::vector<TableRow> rows;
    std::ifstream file(TEST_DATA "/" + aFile);
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
        if (text.empty() || text.starts_with("# ")) continue;
        rows.push_back({line, text, columnsOf(text)});
        if (rows.back().columns.size() != aCount) {
            throw std::runtime_error(aFile + ":" + std::to_string(line) + ": wrong columns");
        }
    }
    if (rows.empty()) throw std::runtime_error(aFile + ": no rows");
    return rows;
}

std::string nameOfRow(const TableRow& aRow) {
    std::string name = "Line" + std::to_string(aRow.line);
    bool wasPart = false;
    for (const char character : aRow.text) {
        if (name.size() >= longestName) break;
        const bool isPart = isAsciiAlphanumeric(character);
        if (isPart && !wasPart) name += '_';
        if (isPart) name += character;
        wasPart = isPart;
    }
    return name;
}

void PrintTo(const TableRow& aRow, std::ostream* aStream) {
    *aStream << "line " << aRow.line << ": " << aRow.text;
}

void forEachRow(const std::string& aFile, std::size_t aCount,
                const std::function<void(const Columns&)>& aCheck) {
    for (const TableRow& row : readTable(aFile, aCount)) {
        SCOPED_TRACE(aFile + ":" + std::to_string(row.line) + ": " + row.text);
        aCheck(row.columns);
    }
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
