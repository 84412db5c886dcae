// SPDX-License-Identifier: MIT
#pragma once

#include "check/check_list.h"
#include "check/options.h"

#include <optional>
#include <string>

// The child process that runs one check, and the results that it sends through its channel.

/// Written by a child to standard output after the check. Any other output is the plugin's; if the
/// marker is missing, the plugin has closed or redirected the stream.
inline constexpr const char* outputMarker = "certbridge-check was here\n";

/// The result of a check in a child.
struct ChildResult {
    Outcome outcome;
    std::string outputChange; ///< the change of standard output; empty if there is none

    /// The text sent through the channel.
    [[nodiscard]] std::string serialize() const;
    /// Nothing for a text that is empty or was not made by serialize().
    [[nodiscard]] static std::optional<ChildResult> parse(const std::string& aText);
};

/// In a child: runs the check that the options name, sends its result, and ends the process the way
/// the check requires.
[[noreturn]] void runAsChild(const Options& aOptions);
