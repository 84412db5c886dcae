#pragma once

#include <cstdint>
#include <string>

/// What takes the place of the program's output: the text is kept, and nothing ends the process.
struct RecordedOutput {
    std::string text;       ///< of the documents printed
    std::int32_t error = 0; ///< the code of a fatal error
    std::string message;    ///< its message
    bool hasEnded = false;

    static RecordedOutput& inUse();
};

/// Thrown where the program would end.
struct ProgramEnd {};
