#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Every call to the operating system that the library and the program make. One of windows.cpp and
/// posix.cpp defines them, with the same contract; error numbers are those of the Windows loader.
namespace vexil::platform {

using ModuleHandle = void*; ///< null: no module

inline constexpr long errorOutOfMemory = 8;
inline constexpr long errorModuleNotFound = 126;
inline constexpr long errorSymbolNotFound = 127;
inline constexpr long errorNotALibrary = 193;

/// Loads the library as the system's loader does, by a name in the active code page; an empty name
/// is not found. On failure returns null and sets @p aError.
ModuleHandle openModule(const char* aFileName, long& aError);

/// Writes the module's absolute file name in UTF-16 to @p aDest, cut at @p aSize units and
/// terminated by a zero unit only if it is shorter. Returns the units written; 0 with @p aError set
/// on failure.
std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest, std::uint32_t aSize,
                                long& aError);

/// The address of an exported symbol; null with @p aError set if there is none.
void* findSymbol(ModuleHandle aModule, const char* aName, long& aError);

void closeModule(ModuleHandle aModule);

/// Converts @p aLen bytes (1 or more) from the active code page to UTF-16. With a null @p aDest
/// only counts. Returns the number of units; 0 for bytes that are not valid in the code page, and
/// where @p aUnits units do not suffice. Throws std::bad_alloc.
/// On POSIX the active code page is the character set of the environment's LC_CTYPE; the process's
/// own locale is neither used nor changed.
std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits);

/// The runtime's vsnprintf, whichever of the two truncation behaviours it has.
int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments);

/// The same with the arguments themselves, as snprintf takes them.
inline int formatBounded(char* aDest, std::size_t aSize, const char* aFormat, ...) {
    std::va_list arguments;
    va_start(arguments, aFormat);
    const int result = formatBoundedArguments(aDest, aSize, aFormat, arguments);
    va_end(arguments);
    return result;
}

/// Makes sure that no file opened later takes the place of a closed standard stream: a closed one
/// stays unusable, so reading or writing it goes on failing.
void reserveStandardStreams();

/// Writes @p aText to standard output, after any text that other code has left in the stream's
/// buffer, and returns whether the system has taken all of it. The orientation and the buffering of
/// the stream do not matter. Interrupted writes are retried, and a descriptor that does not block
/// is waited for. A pipe without a reader is a failure, not a signal. After a failure standard
/// output is discarded: nothing that is still buffered, or written later, is written.
[[nodiscard]] bool writeStandardOutput(std::string_view aText);

/// Puts the floating-point unit of this thread into its default state: round to nearest, full
/// precision, subnormal numbers kept, no trap enabled, no exception flag set.
void resetFloatingPoint();

/// During its lifetime, writing to a pipe without a reader or beyond the maximum file size is an
/// error of the call, not a signal that ends the process. The process's signal handlers are not
/// touched: the signals are blocked in this thread, and those raised meanwhile are discarded.
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
