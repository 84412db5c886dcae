// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The only code that calls the operating system. The functions are defined in posix_*.cpp and in
/// windows_*.cpp, with the same contract; error numbers are those of the Windows loader.
namespace vexil::platform {

using ModuleHandle = void*; ///< null: no module

inline constexpr long errorTooManyOpenFiles = 4;
inline constexpr long errorAccessDenied = 5;
inline constexpr long errorOutOfMemory = 8;
inline constexpr long errorModuleNotFound = 126;
inline constexpr long errorSymbolNotFound = 127;
inline constexpr long errorNotALibrary = 193;

/// Loads the library with the system's loader, by a name in the active code page. An empty name is
/// not found; a pipe, a terminal or another device is not a library. The working directory at the
/// time of the call determines the recorded path, even if a constructor of the library changes it.
/// On failure returns null and sets @p aError. Throws std::bad_alloc.
[[nodiscard]] ModuleHandle openModule(const char* aFileName, long& aError);

/// Writes the module's absolute file name in UTF-16 to @p aDest, truncated to @p aSize units and
/// terminated by a zero unit only if it is shorter. Returns the number of units written; 0 with
/// @p aError set on failure.
[[nodiscard]] std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest,
                                              std::uint32_t aSize, long& aError);

/// Returns the address of a symbol that the module itself exports, not a module that it needs; null
/// with @p aError set if there is none.
[[nodiscard]] void* findSymbol(ModuleHandle aModule, const char* aName, long& aError);

/// Unloads the module. The handle is invalid afterwards.
void closeModule(ModuleHandle aModule);

/// Converts @p aLen bytes (1 or more) from the active code page to UTF-16. With a null @p aDest it
/// only counts. Returns the number of units; 0 if a byte is invalid in the code page or @p aUnits
/// units do not suffice. Throws std::bad_alloc.
/// On POSIX the active code page is the character set of the environment's LC_CTYPE; the locale of
/// the process is neither used nor changed.
[[nodiscard]] std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen,
                                                 std::uint16_t* aDest, std::int32_t aUnits);

/// The runtime's vsnprintf, with either of the two truncation behaviours.
int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments);

/// formatBoundedArguments() with variable arguments.
inline int formatBounded(char* aDest, std::size_t aSize, const char* aFormat, ...) {
    std::va_list arguments;
    va_start(arguments, aFormat);
    const int result = formatBoundedArguments(aDest, aSize, aFormat, arguments);
    va_end(arguments);
    return result;
}

/// Prevents a file opened later from taking the descriptor of a closed standard stream. Reading or
/// writing a closed stream continues to fail.
void reserveStandardStreams();

/// Writes @p aText to standard output, after any text that other code has left in the stream's
/// buffer, and returns whether the system has accepted all of it. The orientation and the buffering
/// of the stream do not matter. Interrupted writes are retried, and a non-blocking descriptor is
/// polled. A pipe without a reader is a failure, not a signal. After a failure standard output is
/// discarded: neither buffered nor later text is written.
[[nodiscard]] bool writeStandardOutput(std::string_view aText);

/// On Windows, makes a crash or abort() end the process with @p aStatus, without a dialog and
/// without flushing any stream. Has no effect on POSIX, where either remains a signal.
void setCrashStatus(int aStatus);

/// Restores the default state of this thread's floating-point unit: rounding to nearest, full
/// precision, subnormal numbers, no traps, no exception flags.
void resetFloatingPoint();

/// During its lifetime, writing to a pipe without a reader or beyond the maximum file size is an
/// error of the call, not a signal that ends the process. Signal handlers are left alone: the
/// signals are blocked in this thread, and those raised meanwhile are discarded.
class WriteSignalBlocker {
public:
    WriteSignalBlocker();
    ~WriteSignalBlocker();
    WriteSignalBlocker(const WriteSignalBlocker&) = delete;
    WriteSignalBlocker& operator=(const WriteSignalBlocker&) = delete;

private:
    struct Signal {
        bool discard; ///< none was pending before, so a pending one was raised meanwhile
        bool unblock; ///< it was not blocked before
    };
    std::array<Signal, 2> mSignals{};
};

} // namespace vexil::platform
