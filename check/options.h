#pragma once

#include "certbridge/name_value_list.h"
#include "check/plugin_checks.h"

#include <chrono>
#include <stdexcept>
#include <string>

/// The option that makes the program a child that runs one check; its value is the check's id.
inline constexpr const char* runCheckOption = "--run-check=";

/// A command line that is wrong.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Options {
    char** arguments = nullptr; ///< argv
    const char* libraryName = nullptr;
    ValueHolder typicalRequest;
    std::chrono::seconds timeLimit{10}; ///< for each check
    bool json = false;
    bool inProcess = false;
    bool help = false;
    bool version = false;
    const Check* check = nullptr; ///< in a child: the one to run
    std::string outcomePlace;     ///< in a child: where sendOutcome() sends it
};

/// Takes argv, which ends with a null. Throws UsageError, and std::runtime_error if the file of
/// --request holds no JSON object.
Options parseOptions(char** aArguments);
