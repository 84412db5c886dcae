#pragma once

#include "vexil/dynamic_library.h"
#include "vexil/json/json_value.h"

#include <memory>
#include <span>
#include <string>

/// What a check works on: the library, not loaded yet.
struct Subject {
    const char* libraryName; ///< in the active code page
    const vexil::JsonValue& typicalRequest;
    std::unique_ptr<vexil::DynamicLibrary> library = std::make_unique<vexil::DynamicLibrary>();
};

/// How a check ended.
struct Outcome {
    enum Kind { Passed, Failed, Skipped };

    Kind kind = Passed;
    std::string detail; ///< UTF-8 on one line: what is wrong and what to do; or a note, or empty
};

/// One thing that a plugin must get right. Each starts with a library of its own, but for the last,
/// which watches all others.
struct Check {
    const char* id;          ///< for machines; stays
    const char* description; ///< what holds if it passes
    /// Throws CheckFailure, or returns a note for the report. Null for the last.
    std::string (*run)(Subject& aSubject);
    const char* needs = nullptr;  ///< id of the check before it without which it tells nothing
    const char* advice = nullptr; ///< to follow the failure's text
    bool isAboutTheEnd = false;   ///< it is about how the process ends, and needs one of its own
};

/// All checks, in the order of the report.
std::span<const Check> getChecks();

/// The check of this id; null if there is none.
const Check* findCheck(const std::string& aId);

/// Runs a check that has an operation; whatever it throws, also from within the plugin, becomes a
/// failure. The library may stay loaded in @p aSubject.
Outcome performCheck(const Check& aCheck, Subject& aSubject);
