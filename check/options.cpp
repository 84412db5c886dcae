// SPDX-License-Identifier: MIT
#include "check/options.h"

#include "check/request_file.h"
#include "check/sample_requests.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <limits>
#include <random>
#include <utility>

namespace {

// An option. The names and texts appear in --help, in this order.
struct OptionRow {
    const char* name;
    const char* valueName; // null for an option without a value
    const char* help;      // lines are separated by \n
    void (*apply)(Options& aOptions, const char* aValue);
};

template <class Number>
Number parseNumber(const char* aOption, std::string_view aText, Number aLeast, Number aMost) {
    Number number = 0;
    const char* const end = aText.data() + aText.size();
    const auto [rest, error] = std::from_chars(aText.data(), end, number);
    if (error == std::errc() && rest == end && number >= aLeast && number <= aMost) return number;
    throw UsageError(std::string(aOption) + " takes a number from " + std::to_string(aLeast) +
                     " to " + std::to_string(aMost));
}

std::uint32_t parseCount(const char* aOption, const char* aText) {
    return parseNumber<std::uint32_t>(aOption, aText, 1, 1000000);
}

// Adds the ids in a list separated by commas.
void addIds(std::set<std::string_view>& aIds, std::string_view aList) {
    while (true) {
        const auto comma = std::min(aList.find(','), aList.size());
        const Check* const check = findCheck(aList.substr(0, comma));
        if (!check) {
            throw UsageError("there is no check \"" + std::string(aList.substr(0, comma)) +
                             "\"; --list shows all");
        }
        aIds.insert(check->id);
        if (comma == aList.size()) return;
        aList.remove_prefix(comma + 1);
    }
}

constexpr OptionRow optionRows[] = {
    {"--request", "FILE", "send the JSON request in FILE wherever a typical request\nis due",
     [](Options& aOptions, const char* aValue) {
         aOptions.typicalRequest = readRequestFile(aValue);
     }},
    {"--include", "IDS", "run only these checks, separated by commas",
     [](Options& aOptions, const char* aValue) { addIds(aOptions.included, aValue); }},
    {"--exclude", "IDS", "do not run these checks",
     [](Options& aOptions, const char* aValue) { addIds(aOptions.excluded, aValue); }},
    {"--repeat", "COUNT", "run each check up to COUNT times, until it fails",
     [](Options& aOptions, const char* aValue) {
         aOptions.repetitions = parseCount("--repeat", aValue);
     }},
    {"--fuzz", "COUNT", "send COUNT random requests as well, and show the\nsmallest that fails",
     [](Options& aOptions, const char* aValue) {
         aOptions.randomRequests = parseCount("--fuzz", aValue);
     }},
    {"--seed", "NUMBER", "make the random requests of an earlier run again",
     [](Options& aOptions, const char* aValue) {
         constexpr auto most = std::numeric_limits<std::uint64_t>::max();
         aOptions.seed = parseNumber<std::uint64_t>("--seed", aValue, 0, most);
     }},
    {"--low-memory", nullptr, "let memory run out during a request as well",
     [](Options& aOptions, const char*) { aOptions.lowMemory = true; }},
    {"--timeout", "SECONDS", "time limit for each check, 10 by default",
     [](Options& aOptions, const char* aValue) {
         aOptions.timeLimit = std::chrono::seconds(parseNumber("--timeout", aValue, 1, 86400));
     }},
    {"--in-process", nullptr, "run all checks in this process, for a debugger",
     [](Options& aOptions, const char*) { aOptions.inProcess = true; }},
    {"--only-failed", nullptr, "leave passed and skipped checks out of the text report",
     [](Options& aOptions, const char*) { aOptions.onlyFailed = true; }},
    {"--json", nullptr, "report as one line of JSON for each plugin",
     [](Options& aOptions, const char*) { aOptions.format = Options::Json; }},
    {"--junit", nullptr, "report as JUnit XML",
     [](Options& aOptions, const char*) { aOptions.format = Options::JUnit; }},
    {"--tap", nullptr, "report in the Test Anything Protocol",
     [](Options& aOptions, const char*) { aOptions.format = Options::Tap; }},
    {"--list", nullptr, "list all checks",
     [](Options& aOptions, const char*) { aOptions.action = Options::ListChecks; }},
    {"--help", nullptr, "show this text; -h does the same",
     [](Options& aOptions, const char*) { aOptions.action = Options::ShowHelp; }},
    {"--version", nullptr, "show the version",
     [](Options& aOptions, const char*) { aOptions.action = Options::ShowVersion; }},
};

class Parser {
public:
    explicit Parser(char** aArguments) : mNext(aArguments + 1) {
        mOptions.seed = std::random_device()();
    }

    Options parse() {
        while (*mNext) parseArgument(*mNext++);
        if (mOptions.action != Options::CheckPlugins || mOptions.check) return std::move(mOptions);
        if (mOptions.libraryNames.empty()) throw UsageError("no library is named");
        if (!mOptions.typicalRequest) mOptions.typicalRequest = makeTypicalRequest();
        return std::move(mOptions);
    }

private:
    void parseArgument(const char* aArgument) {
        const std::string_view argument(aArgument);
        if (mIsNamesOnly || !argument.starts_with('-')) {
            mOptions.libraryNames.push_back(aArgument);
        } else if (argument == "--") {
            mIsNamesOnly = true;
        } else if (!parseChildOption(argument)) {
            parseOption(argument == "-h" ? "--help" : argument);
        }
    }

    bool parseChildOption(std::string_view aArgument) {
        if (aArgument.starts_with(runCheckOption)) {
            mOptions.check = findCheck(aArgument.substr(std::string_view(runCheckOption).size()));
            // Without a check, this process would act as a parent and start children like itself.
            if (!mOptions.check) throw UsageError("there is no such check");
            return true;
        }
        if (!aArgument.starts_with(channelOption)) return false;
        mOptions.channelName = aArgument.substr(std::string_view(channelOption).size());
        return true;
    }

    // A value is the next argument, or follows "=" in the same one.
    void parseOption(std::string_view aArgument) {
        const auto equals = aArgument.find('=');
        const auto name = aArgument.substr(0, equals);
        const auto* const row =
            std::find_if(std::begin(optionRows), std::end(optionRows),
                         [=](const OptionRow& aRow) { return aRow.name == name; });
        if (row == std::end(optionRows)) {
            throw UsageError("there is no option " + std::string(name));
        }
        const bool hasValue = equals != aArgument.npos;
        if (!row->valueName && hasValue) throw UsageError(std::string(name) + " takes no value");
        const char* value = hasValue ? aArgument.data() + equals + 1 : nullptr;
        if (row->valueName && !value) {
            if (!*mNext) throw UsageError(std::string(name) + " needs a value");
            value = *mNext++;
        }
        row->apply(mOptions, value);
    }

    char** mNext;
    bool mIsNamesOnly = false; // after "--"
    Options mOptions;
};

} // namespace

bool Options::isSelected(const Check& aCheck) const {
    if (excluded.count(aCheck.id) != 0) return false;
    if (aCheck.kind == Check::RandomRequests && randomRequests > 0) return true;
    if (aCheck.kind == Check::LowMemory && lowMemory) return true;
    if (!included.empty()) return included.count(aCheck.id) != 0;
    return aCheck.kind != Check::RandomRequests && aCheck.kind != Check::LowMemory;
}

std::string makeHelpText() {
    constexpr std::size_t helpColumn = 20;
    std::string text = "Usage: certbridge-check [OPTION...] LIBRARY...\n"
                       "Checks whether each LIBRARY keeps the contract between certbridge and its\n"
                       "plugins.\n\n";
    for (const OptionRow& row : optionRows) {
        std::string line = std::string("  ") + row.name;
        if (row.valueName) line += std::string(" ") + row.valueName;
        line.resize(std::max(line.size() + 1, helpColumn), ' ');
        for (const char* next = row.help; *next != '\0'; ++next) {
            line += *next;
            if (*next == '\n') line.append(helpColumn, ' ');
        }
        text += line + '\n';
    }
    return text + "\nExit status: 0 if no check failed, 1 if one did, 2 if the command line is\n"
                  "wrong or the checks could not be run or reported.\n";
}

Options parseOptions(char** aArguments) {
    return Parser(aArguments).parse();
}
