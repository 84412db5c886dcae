// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"
#include "check/check_list.h"

#include <chrono>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The options that make the program a child that runs one check; the values are the check's id and
// the name of the channel.
inline constexpr const char* runCheckOption = "--run-check=";
inline constexpr const char* channelOption = "--channel=";

/// A wrong command line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line.
struct Options {
    enum Action { CheckPlugins, ShowHelp, ShowVersion, ListChecks };
    enum Format { Text, Json, JUnit, Tap };

    Action action = CheckPlugins;
    Format format = Text;
    std::vector<const char*> libraryNames; ///< in the active code page
    ValueHolder typicalRequest;            ///< an object
    std::chrono::seconds timeLimit{10};    ///< for each check
    std::set<std::string_view> included;   ///< ids of checks; all if empty
    std::set<std::string_view> excluded;   ///< ids of checks
    std::uint32_t repetitions = 1;
    std::uint32_t randomRequests = 0;
    std::uint64_t seed = 0;
    bool lowMemory = false;
    bool onlyFailed = false;
    bool inProcess = false;

    const Check* check = nullptr; ///< in a child: the check to run
    std::string channelName;      ///< in a child

    /// Whether a check takes part. Checks on demand take part if they are asked for by their option
    /// or included by their id.
    [[nodiscard]] bool isSelected(const Check& aCheck) const;
};

/// The text for --help.
[[nodiscard]] std::string makeHelpText();

/// Parses argv, which ends with a null. Throws UsageError, and std::runtime_error if the file of
/// --request contains no JSON object.
[[nodiscard]] Options parseOptions(char** aArguments);
