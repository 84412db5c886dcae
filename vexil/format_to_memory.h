#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"

#include <cstdarg>
#include <cstdint>
#include <string>

namespace vexil {

/// Formats printf-style text into a heap buffer that grows until the text fits.
///
/// Works on runtimes whose bounded formatting returns the length that was needed (standard) and on
/// those that return a negative number and leave the text unterminated (legacy). The first object
/// of the process finds out which; not safe if two threads do that at once.
class VEXIL_API FormatToMemory : private NonCopyable {
public:
    /// @p aLimit is the largest buffer in bytes, the terminating null included; 0 means no limit.
    /// Throws InvalidArgument "FormatToMemory: invalid argument aLimit" if it is negative,
    /// Exception "FormatToMemory: snprintf() broken" on a runtime that behaves in neither way.
    explicit FormatToMemory(std::int32_t aLimit);
    ~FormatToMemory();

    /// Replaces the text. The arguments are left unread, as va_copy would. After a failure the
    /// length is 0. Throws
    /// - FormatLimitExceeded "FormatToMemory::vformat(): maximum buffer size exceeded",
    /// - EncodingError "FormatToMemory::vformat(): vsnprintf() failed",
    /// - Exception "FormatToMemory::vformat(): overflow" for a text of 2147483647 bytes or more,
    /// - Exception "FormatToMemory::vformat(): vsnprintf() is inconsistent",
    ///   "FormatToMemory::vformat(): vsnprintf is broken" or
    ///   "FormatToMemory::vformat(): unknown implemetation" where the runtime breaks its own rules,
    /// - std::bad_alloc.
    void vformat(const char* aFormat, std::va_list aArguments);

    /// The null-terminated text, valid until the next vformat(); null before the first one.
    const char* getBuffer() const { return mBuffer; }
    /// Bytes of the text, its terminating null not counted.
    std::int32_t getLength() const { return mLength; }

    /// The text as a string, without a limit. Throws what the constructor and vformat() throw.
    static std::string format(const char* aFormat, ...);

private:
    void formatStandard(const char* aFormat, std::va_list aArguments);
    void formatLegacy(const char* aFormat, std::va_list aArguments);
    void resize(std::int32_t aCapacity);
    std::int32_t nextLegacyCapacity() const;

    char* mBuffer = nullptr; ///< from realloc, owned
    std::int32_t mLimit;
    std::int32_t mCapacity = 0;
    std::int32_t mLength = 0;
};

} // namespace vexil
